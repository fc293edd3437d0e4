#ifndef VEKVC_H264_TRANSFORM_H
#define VEKVC_H264_TRANSFORM_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
