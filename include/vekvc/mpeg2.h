#ifndef VEKVC_MPEG2_H
#define VEKVC_MPEG2_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
