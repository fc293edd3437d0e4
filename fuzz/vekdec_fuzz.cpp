// Whole streams through a decoder: any bytes must end without a crash, a hang or memory without bound.
#include "decode_anything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const vekdec::Format& format = vekvc_fuzz::formatNamed(VEKDEC_FORMAT);
    vekvc_fuzz::decodeAnything(format, {data, size});
    return 0;
}
