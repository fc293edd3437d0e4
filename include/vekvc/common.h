/** @file common.h
 *  Block primitives of all standards. 8-bit samples are Vek8u, residuals and coefficients Vek16s.
 *
 *  Block sizes are columns by rows, as in the names. Steps are signed counts of bytes for all element types and are
 *  used as they are: negative steps, zero source steps and odd addresses work. Operands must not overlap unless the
 *  function works in place.
 */
#ifndef VEKVC_COMMON_H
#define VEKVC_COMMON_H

#include "vekvc/common_difference.h"
#include "vekvc/common_metrics.h"
#include "vekvc/common_predict.h"
#include "vekvc/common_scan.h"
#include "vekvc/common_smooth.h"
#include "vekvc/common_statistics.h"

#endif
