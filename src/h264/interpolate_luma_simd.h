#pragma once
namespace vekvc::simd {
using plain::interpolateLuma;
}
