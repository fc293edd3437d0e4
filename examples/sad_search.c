/* Finds where a 16x16 block of one picture went in the next one: the full search of an encoder. */
#include <stdio.h>

#include "vekvc.h"

enum { WIDTH = 64, HEIGHT = 64, RANGE = 8 };

static Vek8u before[HEIGHT][WIDTH], after[HEIGHT][WIDTH];

int main(void) {
    /* A texture, and the same moved by 3 columns and -2 rows. */
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x) {
            before[y][x] = (Vek8u)(x * x * 5 + y * y * 3 + x * y * 7);
            after[(y + HEIGHT - 2) % HEIGHT][(x + 3) % WIDTH] = before[y][x];
        }

    const int blockX = 24, blockY = 24;
    Vek32s best = INT32_MAX;
    int bestX = 0, bestY = 0;
    for (int dy = -RANGE; dy <= RANGE; ++dy)
        for (int dx = -RANGE; dx <= RANGE; ++dx) {
            Vek32s sad;
            vekiSAD16x16_8u32s(&after[blockY][blockX], WIDTH, &before[blockY + dy][blockX + dx], WIDTH, &sad, 0);
            if (sad < best) {
                best = sad;
                bestX = dx;
                bestY = dy;
            }
        }
    printf("the block comes from (%d, %d), SAD %d\n", bestX, bestY, (int)best);
    return bestX == -3 && bestY == 2 && best == 0 ? 0 : 1;
}
