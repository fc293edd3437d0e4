#ifndef VEKVC_VC1_QUANTIZE_SIMD_H
#define VEKVC_VC1_QUANTIZE_SIMD_H
#include "vc1/quantize_plain.h"
namespace vekvc::simd {
using plain::dequantizeVc1;
using plain::quantizeVc1;
}
#endif
