/* Adds the residual of an 8x8 block to its prediction: the last step of an MPEG decoder for every inter block. */
#include <stdio.h>
#include <string.h>

#include "vekvc.h"

int main(void) {
    Vek8u picture[8][16]; /* rows of 16 samples; the block is the right half */
    memset(picture, 100, sizeof picture);

    Vek16s coefficients[64] = {0};
    coefficients[0] = 80; /* the mean rises by 80 / 8 = 10 */
    coefficients[1] = 40; /* and falls from left to right */
    const VekStatus status = vekiDCT8x8InvAdd_16s8u_C1IR(coefficients, &picture[0][8], 16);

    for (int x = 0; x < 16; ++x) printf("%d%s", picture[0][x], x == 15 ? "\n" : " ");
    const int rises = picture[0][8] > picture[0][15] && (picture[0][8] + picture[0][15] + 1) / 2 == 110;
    return status == vekStsOk && picture[0][7] == 100 && rises ? 0 : 1;
}
