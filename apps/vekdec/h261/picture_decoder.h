// A picture of H.261: groups of blocks and macroblocks (4.2), from bits to samples.
#pragma once

#include <functional>
#include <string>

#include "bits/byte_reader.h"
#include "h261/picture.h"
#include "vekvc/types.h"

namespace vekdec::h261 {

inline constexpr int kPictureStartBits = 20;
inline constexpr unsigned kPictureStart = 0x10;

// The picture header behind its start code (4.2.1); is it 352x288, or else 176x144?
bool parsePictureHeader(ByteReader& bits);

class PictureDecoder {
  public:
    using Report = std::function<void(const std::string&)>;

    // Decodes the picture behind its header into `picture`, predicted from `reference`; null: there is none. Damage is
    // reported; what did not come stays MbKind::Lost.
    void decode(Picture& picture, const Picture* reference, ByteReader& bits, const Report& report);
    long groups() const { return groups_; }  // of all pictures

  private:
    bool beginNextGroup(const Report& report);
    void decodeGroup();
    void moveTo(int number);
    void decodeMacroblock(bool follows);
    void parseVector(bool follows);
    void predict(bool filtered);
    void decodeBlock(int k, bool intra);

    Picture* picture_ = nullptr;
    const Picture* reference_ = nullptr;
    ByteReader* bits_ = nullptr;
    long groups_ = 0;

    int group_ = 0;      // number of the group of blocks, 1 to 12
    int number_ = 0;     // of the macroblock in it, 1 to 33
    int x_ = 0, y_ = 0;  // in macroblocks
    int quantizer_ = 1;
    int mvX_ = 0, mvY_ = 0;  // of the macroblock before; 0 where it had none
    Macroblock* mb_ = nullptr;
};

}  // namespace vekdec::h261
