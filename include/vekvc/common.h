#ifndef VEKVC_COMMON_H
#define VEKVC_COMMON_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
