/** @file h264_deblock.h
 *  H.264/AVC deblocking filter (H.264 8.7): the edges of one macroblock, in place. The caller derives bS (8.7.2.1)
 *  and the values of Tables 8-16 and 8-17; the sample decisions and the filtering (8.7.2.2 to 8.7.2.4) are done here.
 *
 *  An operand list for all edges of one direction:
 *
 *  `pBs` has 16 boundary strengths, four per luma edge: entry 4 * e + s belongs to luma edge e (at luma column or row
 *  4 * e) and to its segment s, four luma samples long. 0 leaves a segment alone, 1 to 3 select the normal filter, 4
 *  the strong one (a value above 4 counts as 4); they may mix within an edge.
 *
 *  `pAlpha[0]`, `pBeta[0]` belong to edge 0, the macroblock's outer edge; `pAlpha[1]`, `pBeta[1]` to the inner edges.
 *  They and the thresholds are values, not indices: alpha and beta of Table 8-16 at indexA and indexB, tc0 of Table
 *  8-17. Where Cb and Cr have different QP, call for each plane with its own values.
 *
 *  | Forms                | Edge in the block       | pBs      | pThresholds | alpha, beta | One strength covers     |
 *  |----------------------|-------------------------|----------|-------------|-------------|-------------------------|
 *  | luma                 | 0, 4, 8, 12             | 4e + s   | 4e + s      | [0], [1] x3 | 4 lines                 |
 *  | chroma 4:2:0         | 0                       | 0 + s    | 0 + s       | [0]         | 2 lines                 |
 *  |                      | 4 (luma edge 2)         | 8 + s    | 4 + s       | [1]         | 2 lines                 |
 *  | chroma 4:2:2 VerEdge | 0                       | 0 + s    | 0 + s       | [0]         | 4 lines                 |
 *  |                      | 4 (luma edge 2)         | 8 + s    | 4 + s       | [1]         | 4 lines                 |
 *  | chroma 4:2:2 HorEdge | row 4e: 0, 4, 8, 12     | 4e + s   | 4e + s      | [0], [1] x3 | 2 columns               |
 *  | MBAFF left edge      | 0 (eight luma lines,    | k        | k           | one value   | 2 luma lines            |
 *  |                      | four chroma lines)      | (4)      | (4)         |             | 1 chroma line           |
 *
 *  A line of an interleaved chroma form is one pair of samples, both filtered with the same values.
 *
 *  Chroma 4:2:2, horizontal edges. The chroma block is 8 wide and 16 high, coded in 4x4 blocks whatever
 *  transform_size_8x8_flag says, so 8.7 filters all four of its horizontal edges, at chroma rows 0, 4, 8 and 12 (the
 *  flag switches off inner chroma edges only when ChromaArrayType is 3). 8.7.2 gives a chroma sample the bS of the
 *  luma sample at (SubWidthC * x, SubHeightC * y), and SubHeightC is 1: chroma row 4e takes the bS of luma row 4e,
 *  which is edge e, and two chroma columns share the bS of a luma segment. So a caller passes its luma strengths as
 *  they are, with one addition. With transform_size_8x8_flag equal to 1 luma edges 1 and 3 are not filtered and their
 *  bS may not have been derived; chroma rows 4 and 12 need it all the same. Both sides of such an edge lie in one 8x8
 *  block, so 8.7.2.1 leaves: 3 in an intra macroblock, else 2 if that 8x8 block has non-zero coefficients, else what
 *  the motion says (0 where the 8x8 block has one motion, which a transform of 8x8 implies). The luma form must then
 *  be given zeros for edges 1 and 3. Vertical edges need nothing of the kind: chroma column 4 is luma column 8.
 *
 *  Macroblocks of frames with MBAFF: everything but a mixed left edge is a matter of pointer and step. A field
 *  macroblock of a frame starts at its field's first row in the pair with twice the frame's step. A frame macroblock
 *  below a field pair has its top edge filtered twice, in fields: call the HorEdge form with twice the step at the
 *  macroblock's row 0 and again at its row 1, with strengths for edge 0 alone, then once with the frame's step for the
 *  inner edges. A left edge between a frame and a field macroblock pair takes the MBAFF forms, several calls per edge,
 *  each with the lines that share one left macroblock (and so one QP):
 *  - Current frame macroblock, left field pair: rows 0, 2, 4 ... lie beside the left top field macroblock, rows 1, 3,
 *    5 ... beside the bottom field one. Two calls with twice the frame's step, at row 0 and at row 1.
 *  - Current field macroblock, left frame pair: field rows 0 to 7 lie beside the left upper frame macroblock, rows 8
 *    to 15 beside the lower one. Two calls with twice the frame's step (the field's own), at field row 0 and field row
 *    8.
 *
 *  In both cases bS is constant over two luma lines of a call: with four strengths k = 0..3, lines 2k and 2k + 1 of
 *  luma. Chroma 4:2:0 calls have four lines, line k with strength k. Chroma 4:2:2 has eight lines to a call of its
 *  luma, two to a strength: that is what the 4:2:0 form of vertical edges does on its outer edge. Call it with the four
 *  strengths for that edge and zeros for the inner one.
 *
 *  What is read and written: of a line whose strength is not 0, up to four luma (two chroma) samples on either side of
 *  the edge; of these only samples p2..q2 (chroma p0, q0) change, the others may be stored back as they were. Nothing
 *  of a line is touched that no strength covers.
 *
 *  Arguments are trusted beyond null pointers: no ranges are checked. Steps may be negative.
 */
#ifndef VEKVC_H264_DEBLOCK_H
#define VEKVC_H264_DEBLOCK_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The operands of the 8-bit 4:2:2 chroma forms. */
typedef struct {
    Vek8u* pSrcDstPlane;      /**< the block's top-left sample */
    Vek32s srcDstStep;        /**< row step, in bytes */
    const Vek8u* pAlpha;      /**< 2: outer edge, inner edges */
    const Vek8u* pBeta;       /**< 2: outer edge, inner edges */
    const Vek8u* pThresholds; /**< 16: tc0, see the file's table */
    const Vek8u* pBs;         /**< 16: luma strengths, see the file's table */
} VekDeblockingParams8u;

/** The operands of the 16-bit forms. */
typedef struct {
    Vek16u* pSrcDstPlane;      /**< the block's top-left sample */
    Vek32s srcDstStep;         /**< row step, counted in samples, unlike all other steps */
    const Vek16u* pAlpha;      /**< 2: outer edge, inner edges; scaled: the table's value * 2^(bitDepth - 8) */
    const Vek16u* pBeta;       /**< 2: outer edge, inner edges; scaled likewise */
    const Vek16u* pThresholds; /**< 16 (MBAFF: 4): tc0, scaled likewise */
    const Vek8u* pBs;          /**< 16 (MBAFF: 4): strengths */
    Vek32s bitDepth;           /**< 8 to 14; results are clipped to 0 .. 2^bitDepth - 1 */
} VekDeblockingParams16u;

/** The four vertical edges of a luma macroblock, x = 0, 4, 8, 12, left to right (H.264 8.7.2).
 *  @param pSrcDst     the macroblock's top-left sample; the columns to its left belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, edges 1 to 3
 *  @param pBeta       2 values likewise
 *  @param pThresholds 16 values of tc0
 *  @param pBs         16 strengths
 *  @return vekStsOk, vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                  const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                  const Vek8u* pThresholds, const Vek8u* pBs);

/** The four horizontal edges of a luma macroblock, y = 0, 4, 8, 12, top to bottom. Arguments and status as
 *  vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR; the rows above belong to edge 0.
 *  @param pSrcDst     the macroblock's top-left sample; the rows above belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, edges 1 to 3
 *  @param pBeta       2 values likewise
 *  @param pThresholds 16 values of tc0
 *  @param pBs         16 strengths
 *  @return as vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                  const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                  const Vek8u* pThresholds, const Vek8u* pBs);

/** Eight luma lines of a left edge between a frame and a field macroblock pair (see the head of this file).
 *  @param pSrcDst     the first line's sample right of the edge
 *  @param srcDstStep  step from one line of the call to the next, in bytes
 *  @param alpha,beta  values for this edge; an alpha of 0 does nothing
 *  @param pThresholds 4 values of tc0, one per two lines
 *  @param pBs         4 strengths, one per two lines; all 0 does nothing
 *  @return vekStsOk, vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep, Vek32u alpha,
                                                                        Vek32u beta, const Vek8u* pThresholds,
                                                                        const Vek8u* pBs);

/** The two vertical edges of one 8x8 chroma block of a 4:2:0 picture, x = 0 and 4. Arguments and status as
 *  vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR; strengths 0..3 and 8..11 and thresholds 0..7 are read.
 *  @param pSrcDst     the block's top-left sample; the columns to its left belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, the other edge
 *  @param pBeta       2 values likewise
 *  @param pThresholds 8 values of tc0
 *  @param pBs         12 strengths, of which 0..3 and 8..11 count
 *  @return as vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                    const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                    const Vek8u* pThresholds, const Vek8u* pBs);

/** The two horizontal edges of one 8x8 chroma block of a 4:2:0 picture, y = 0 and 4; operands as the VerEdge form.
 *  @param pSrcDst     the block's top-left sample; the rows above belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, the other edge
 *  @param pBeta       2 values likewise
 *  @param pThresholds 8 values of tc0
 *  @param pBs         12 strengths, of which 0..3 and 8..11 count
 *  @return as vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                    const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                    const Vek8u* pThresholds, const Vek8u* pBs);

/** The two vertical edges of both 8x8 chroma blocks, interleaved (Cb, Cr, Cb, Cr, ...), at pairs 0 and 4; operands as
 *  vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR, the same for both components.
 *  @param pSrcDst     the blocks' top-left pair; the pairs to its left belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, the other edge
 *  @param pBeta       2 values likewise
 *  @param pThresholds 8 values of tc0
 *  @param pBs         12 strengths, of which 0..3 and 8..11 count
 *  @return as vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_H264_8u_C2IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                    const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                    const Vek8u* pThresholds, const Vek8u* pBs);

/** The two horizontal edges of both 8x8 chroma blocks, interleaved, at rows 0 and 4; operands as
 *  vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR, the same for both components.
 *  @param pSrcDst     the blocks' top-left pair; the rows above belong to edge 0
 *  @param srcDstStep  row step, in bytes
 *  @param pAlpha      2 values: edge 0, the other edge
 *  @param pBeta       2 values likewise
 *  @param pThresholds 8 values of tc0
 *  @param pBs         12 strengths, of which 0..3 and 8..11 count
 *  @return as vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_HorEdge_H264_8u_C2IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                    const Vek8u* pAlpha, const Vek8u* pBeta,
                                                                    const Vek8u* pThresholds, const Vek8u* pBs);

/** Four chroma lines of a left edge between a frame and a field macroblock pair (see the head of this file).
 *  @param pSrcDst     the first line's sample right of the edge
 *  @param srcDstStep  step from one line of the call to the next, in bytes
 *  @param alpha,beta  values for this edge; an alpha of 0 does nothing
 *  @param pThresholds 4 values of tc0, one per line
 *  @param pBs         4 strengths, one per line; all 0 does nothing
 *  @return vekStsOk, vekStsErrNullPtr
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR(Vek8u* pSrcDst, Vek32s srcDstStep,
                                                                          Vek32u alpha, Vek32u beta,
                                                                          const Vek8u* pThresholds, const Vek8u* pBs);

/** The two vertical edges of one 8 wide, 16 high chroma block of a 4:2:2 picture, x = 0 and 4. Strengths 0..3 and 8..11
 *  and thresholds 0..7 are read.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR(const VekDeblockingParams8u* pParams);

/** The four horizontal edges of one 8 wide, 16 high chroma block of a 4:2:2 picture, y = 0, 4, 8, 12, with all 16
 *  strengths and thresholds; see the head of this file for what to pass with 8x8 transforms.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR(const VekDeblockingParams8u* pParams);

/** Not provided: see the head of this file for the calls that do it.
 *  @param pParams not looked at
 *  @return vekStsErrUnsupported, always
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_8u_C1IR(const VekDeblockingParams8u* pParams);

/** vekiFilterDeblockingLuma_VerEdge_H264_8u_C1IR for 16-bit samples.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingLuma_HorEdge_H264_8u_C1IR for 16-bit samples; as the VerEdge form.
 *  @param pParams the edges, their thresholds and strengths (see VekDeblockingParams16u)
 *  @return as vekiFilterDeblockingLumaVerEdge_H264_16u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingLumaHorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingLuma_VerEdge_MBAFF_H264_8u_C1IR for 16-bit samples: `pAlpha[0]` and `pBeta[0]`, four strengths
 *  and four thresholds are read.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingLumaVerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingChroma_VerEdge_H264_8u_C1IR for 16-bit samples.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingChroma_HorEdge_H264_8u_C1IR for 16-bit samples; as the VerEdge form.
 *  @param pParams the edges, their thresholds and strengths (see VekDeblockingParams16u)
 *  @return as vekiFilterDeblockingChromaVerEdge_H264_16u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChromaHorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingChroma_VerEdge_MBAFF_H264_8u_C1IR for 16-bit samples: `pAlpha[0]` and `pBeta[0]`, four strengths
 *  and four thresholds are read.
 *  @param pParams the operands
 *  @return vekStsOk, vekStsErrNullPtr (the record or one of its pointers)
 */
VEKVC_API VekStatus vekiFilterDeblockingChromaVerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR for 16-bit samples; status likewise.
 *  @param pParams the edges, their thresholds and strengths (see VekDeblockingParams16u)
 *  @return as vekiFilterDeblockingChroma422VerEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422VerEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR for 16-bit samples; status likewise.
 *  @param pParams the edges, their thresholds and strengths (see VekDeblockingParams16u)
 *  @return as vekiFilterDeblockingChroma422HorEdge_H264_8u_C1IR
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422HorEdge_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

/** Not provided: see the head of this file for the calls that do it.
 *  @param pParams not looked at
 *  @return vekStsErrUnsupported, always
 */
VEKVC_API VekStatus vekiFilterDeblockingChroma422VerEdgeMBAFF_H264_16u_C1IR(const VekDeblockingParams16u* pParams);

#ifdef __cplusplus
}
#endif

#endif
