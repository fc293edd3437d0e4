/** @file mpeg4.h
 *  MPEG-4 Part 2 (ISO/IEC 14496-2, Simple and Advanced Simple), H.263 and H.261. One header per step of the decoding
 *  process.
 */
#ifndef VEKVC_MPEG4_H
#define VEKVC_MPEG4_H

#include "vekvc/mpeg4_coefficients.h"
#include "vekvc/mpeg4_filter.h"
#include "vekvc/mpeg4_predict.h"
#include "vekvc/mpeg4_quantize.h"

#endif
