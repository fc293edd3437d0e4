#ifndef VEKVC_VC1_H
#define VEKVC_VC1_H

#include "vekvc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
