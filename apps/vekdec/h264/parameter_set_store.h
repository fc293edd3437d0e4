// The parameter sets that came, by id, and which sequence parameter set a picture parameter set belongs to.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "h264/parameter_sets.h"

namespace vekdec::h264 {

// A set that is sent again unchanged stays the same object; one that changed becomes another object, and the old one
// lives on with those who use it. So equal pointers mean equal parameters.
class ParameterSetStore {
  public:
    // Take a unit's payload, emulation prevention and the zeros behind it still in. They throw BadSyntax and keep what
    // they had then.
    void takeSequence(std::span<const std::uint8_t> unit);
    void takePicture(std::span<const std::uint8_t> unit);

    // The picture parameter set of that id, read with the sequence parameter set that holds now: it may have come
    // before that one (7.4.1.2.1). Throws BadSyntax where one of the two did not come, or they do not fit together.
    std::shared_ptr<const PictureParameterSet> picture(int id);

  private:
    struct Stored {
        std::vector<std::uint8_t> unit;  // empty: none came
        std::shared_ptr<const PictureParameterSet> parsed;
        std::size_t spsId = 0;
    };
    std::shared_ptr<const PictureParameterSet> parse(std::span<const std::uint8_t> unit);

    WordPayload payload_;
    SequenceParameterSets sps_;
    std::array<std::vector<std::uint8_t>, 32> spsUnits_;
    std::array<Stored, 256> pps_;
};

}  // namespace vekdec::h264
