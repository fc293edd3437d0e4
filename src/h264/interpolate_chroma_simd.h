#pragma once
namespace vekvc::simd {
using plain::interpolateChroma;
using plain::interpolateChromaPairs;
}  // namespace vekvc::simd
