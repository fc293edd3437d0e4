/* Decodes one 4x4 block of H.264 CAVLC (clause 9.2). Code tables are made once from the standard's code lists; this
 * block needs only one of them, a decoder makes them all. */
#include <stdio.h>

#include "vekcore.h"
#include "vekvc.h"

/* Table 9-7, TotalCoeff 1: look-ups of 5 and 4 bits; for each code length the number of codes, then code and value. */
static const Vek32s totalZeros1[] = {9, 2, 5,  4,            /* longest code, two look-ups */
                                     1, 1, 0,                /* 1 */
                                     0,                      /* no code of 2 bits */
                                     2, 3, 1,  2, 2,         /* 011, 010 */
                                     2, 3, 3,  2, 4,         /* 0011, 0010 */
                                     2, 3, 5,  2, 6,         /* 00011, 00010 */
                                     2, 3, 7,  2, 8,         /* 000011, 000010 */
                                     2, 3, 9,  2, 10,        /* 0000011, 0000010 */
                                     2, 3, 11, 2, 12,        /* 00000011, 00000010 */
                                     3, 3, 13, 2, 14, 1, 15, /* 000000011, 000000010, 000000001 */
                                     -1};

int main(void) {
    static const Vek32s zigzag[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
    VekVlcTable_32s* table = NULL;
    if (vekiHuffmanTableInitAlloc_32s(totalZeros1, &table) != vekStsOk) return 1;
    const Vek32s* coeffToken[3] = {table, table, table}; /* not read: nC 8 has codes of 6 bits without a table */
    const Vek32s *totalZeros[16] = {NULL, table}, *runBefore[15] = {NULL};

    /* 000001: one coefficient, a trailing one; 1: it is negative; 011: one zero before it. Words are native, read from the
     * most significant bit down. */
    Vek32u stream[2] = {(Vek32u)1 << 26 | (Vek32u)1 << 25 | (Vek32u)3 << 22, 0};
    Vek32u* word = stream;
    Vek32s bit = 31;
    Vek16s totalCoeff = 0, coeffs[16] = {0}, *next = coeffs;
    const VekStatus status = vekiDecodeCAVLCCoeffs_H264_1u16s(&word, &bit, &totalCoeff, &next, 8, 16, coeffToken,
                                                              totalZeros, runBefore, zigzag);
    printf("status %d, %d coefficient, %d at place 1, %d bits read\n", (int)status, totalCoeff, coeffs[1],
           31 - (int)bit);
    vekiHuffmanTableFree_32s(table);
    return status == vekStsOk && totalCoeff == 1 && coeffs[1] == -1 && next == coeffs + 16 && bit == 31 - 10 ? 0 : 1;
}
