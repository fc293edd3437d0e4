#ifndef VEKVC_H264_CAVLC_H
#define VEKVC_H264_CAVLC_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
