// The formats that vekdec decodes. A new one is a line here and a folder beside this file.
#include "avs/format.h"
#include "decoder.h"
#include "dv/format.h"
#include "h261/format.h"
#include "h263/format.h"
#include "h264/format.h"
#include "mpeg12/format.h"
#include "mpeg4/format.h"
#include "vc1/format.h"

namespace vekdec {

std::span<const Format> formats() {
    static const Format kFormats[] = {h264::format(), mpeg12::format(), mpeg4::format(), h263::format(),
                                      h261::format(), vc1::format(),    avs::format(),   dv::format()};
    return kFormats;
}

}  // namespace vekdec
