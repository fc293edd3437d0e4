#pragma once
namespace vekvc::simd {
using namespace plain;
}
