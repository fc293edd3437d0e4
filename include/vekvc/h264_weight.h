#ifndef VEKVC_H264_WEIGHT_H
#define VEKVC_H264_WEIGHT_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
