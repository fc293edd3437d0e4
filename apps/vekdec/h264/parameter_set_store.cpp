#include "h264/parameter_set_store.h"

#include <algorithm>

namespace vekdec::h264 {
namespace {

using Unit = std::span<const std::uint8_t>;

// Zeros behind a unit belong to the byte stream (Annex B).
Unit withoutZeros(Unit unit) {
    while (!unit.empty() && unit.back() == 0) unit = unit.first(unit.size() - 1);
    return unit;
}

}  // namespace

void ParameterSetStore::takeSequence(Unit unit) {
    unit = withoutZeros(unit);
    payload_.assignUnescaped(unit);
    BitReader bits(payload_);
    auto sps = std::make_shared<const SequenceParameterSet>(parseSequenceParameterSet(bits));
    const auto id = static_cast<std::size_t>(sps->id);
    if (sps_[id] != nullptr && std::ranges::equal(spsUnits_[id], unit)) return;
    spsUnits_[id].assign(unit.begin(), unit.end());
    sps_[id] = std::move(sps);
}

std::shared_ptr<const PictureParameterSet> ParameterSetStore::parse(Unit unit) {
    payload_.assignUnescaped(unit);
    BitReader bits(payload_);
    return std::make_shared<const PictureParameterSet>(parsePictureParameterSet(bits, sps_));
}

void ParameterSetStore::takePicture(Unit unit) {
    unit = withoutZeros(unit);
    payload_.assignUnescaped(unit);
    BitReader bits(payload_);
    Stored& stored = pps_[static_cast<std::size_t>(bits.ue("pic_parameter_set_id", 255))];
    if (std::ranges::equal(stored.unit, unit)) return;
    const auto spsId = static_cast<std::size_t>(bits.ue("seq_parameter_set_id", 31));
    auto parsed = sps_[spsId] != nullptr ? parse(unit) : nullptr;
    stored.unit.assign(unit.begin(), unit.end());
    stored.parsed = std::move(parsed);
    stored.spsId = spsId;
}

std::shared_ptr<const PictureParameterSet> ParameterSetStore::picture(int id) {
    Stored& stored = pps_[static_cast<std::size_t>(id)];
    if (stored.unit.empty())
        throw BadSyntax("the slice names picture parameter set " + std::to_string(id) + ", which did not come");
    if (stored.parsed == nullptr || stored.parsed->sps != sps_[stored.spsId]) stored.parsed = parse(stored.unit);
    return stored.parsed;
}

}  // namespace vekdec::h264
