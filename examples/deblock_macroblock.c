/* Smooths the vertical edges of a luma macroblock (H.264 8.7.2): the values come from the quantizers of the blocks on
 * both sides (Tables 8-16 and 8-17), the strengths from their types and vectors. */
#include <stdio.h>

#include "vekvc.h"

int main(void) {
    enum { STEP = 32 };
    Vek8u picture[16][STEP];
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < STEP; ++x) picture[y][x] = x < 16 ? 100 : 108; /* a step where the macroblock begins */

    const Vek8u alpha[2] = {40, 40}, beta[2] = {10, 10}; /* of the outer edge, and of the inner ones */
    Vek8u tc0[16], bS[16];
    for (int i = 0; i < 16; ++i) { /* edge by edge, four lines each */
        tc0[i] = 2;
        bS[i] = i < 4 ? 4 : 1; /* an intra macroblock at its left border */
    }
    const VekStatus status = vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(&picture[0][16], STEP, alpha, beta, tc0, bS);
    for (int x = 12; x < 20; ++x) printf("%d%s", picture[0][x], x == 19 ? "\n" : " ");
    return status == vekStsOk && picture[0][15] > 100 && picture[0][16] < 108 && picture[0][12] == 100 ? 0 : 1;
}
