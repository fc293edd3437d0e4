// Whole streams through the decoder: any bytes must end without a crash, a hang or memory without bound.
#include "decode_anything.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vekvc_fuzz::decodeAnything({data, size});
    return 0;
}
