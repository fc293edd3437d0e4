/* A program of a library user: C99 and C++ alike. Prints the variant that runs and averages two blocks. */
#include <stdio.h>
#include <string.h>
#include <vekvc.h>

int main(void) {
    Vek8u a[64], b[64], mean[64];
    void* memory = vekMalloc(100);
    if (memory == NULL) return 1;
    vekFree(memory);
    memset(a, 10, sizeof a);
    memset(b, 13, sizeof b);
    if (vekiAverage8x8_8u_C1R(a, 8, b, 8, mean, 8) != vekStsOk || mean[0] != 12 || mean[63] != 12) return 1;
    printf("%s\n", vekvcGetLibVersion()->libraryName);
    return 0;
}
