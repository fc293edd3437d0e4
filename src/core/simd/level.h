// Which vectors the compiled-for processor has: 128 bits always, 256 with AVX2, 512 with x86-64-v4.
#ifndef VEKVC_CORE_SIMD_LEVEL_H
#define VEKVC_CORE_SIMD_LEVEL_H

#if defined(__AVX2__)
#define VEKVC_VECTOR256 1
#else
#define VEKVC_VECTOR256 0
#endif
#if defined(__AVX512F__) && defined(__AVX512BW__) && defined(__AVX512DQ__) && defined(__AVX512VL__)
#define VEKVC_VECTOR512 1
#else
#define VEKVC_VECTOR512 0
#endif

#endif
