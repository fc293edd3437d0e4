#ifndef VEKVC_VC1_HADAMARD_SIMD_H
#define VEKVC_VC1_HADAMARD_SIMD_H
#include "vc1/hadamard_plain.h"
namespace vekvc::simd {
using plain::hadamardSum;
}
#endif
