#include "h264/slice_decoder.h"

namespace vekdec::h264 {

// Macroblocks from the first broken one on are missing.
std::optional<SliceDamage> SliceDecoder::reconstructParsed() {
    std::optional<SliceDamage> damage;
    const bool wide = context_->sps->bitDepth() > 8;
    for (const ParsedMacroblock& p : parsed_.macroblocks) {
        if (!damage) try {
                if (wide)
                    reconstruct<Vek16u>(*context_, p, scales_, parsed_.coeffs32.data());
                else
                    reconstruct<Vek8u>(*context_, p, scales_, parsed_.coeffs16.data());
            } catch (const BadSyntax& e) {
                damage = SliceDamage{p.address, e.what()};
            }
        if (damage) p.mb->type = MbType::Missing;
    }
    parsed_.clear();
    return damage;
}

template <typename Syntax>
std::optional<SliceDamage> SliceDecoder::decodeWith(MacroblockParser<Syntax>& parser, BitReader& bits,
                                                    const std::function<void(int)>& reached) {
    std::optional<SliceDamage> damage;
    try {
        parser.parse(bits, *context_, parsed_, [&](int next) {
            damage = reconstructParsed();
            if (!damage && next >= 0) reached(next);
            return !damage;
        });
    } catch (const BadSyntax& e) {
        const int address = parser.abandon();
        damage = reconstructParsed();
        if (!damage) damage = SliceDamage{address, e.what()};
    }
    return damage;
}

std::optional<SliceDamage> SliceDecoder::decode(BitReader& bits, const SliceContext& context,
                                                const std::function<void(int)>& reached) {
    context_ = &context;
    scales_.update(context.pps->scaling);
    return context.pps->entropyCodingMode ? decodeWith(cabacParser_, bits, reached)
                                          : decodeWith(cavlcParser_, bits, reached);
}

}  // namespace vekdec::h264
