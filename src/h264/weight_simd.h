#pragma once
namespace vekvc::simd {
using plain::averageBlocks;
using plain::weightOne;
using plain::weightTwo;
}  // namespace vekvc::simd
