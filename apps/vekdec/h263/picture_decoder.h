// A picture of H.263: GOBs or slices and their macroblocks (5.2 to 5.4), from bits to samples.
#pragma once

#include <functional>

#include "h263/block_prediction.h"
#include "h263/codes.h"
#include "h263/intra_values.h"
#include "h263/picture.h"

namespace vekdec::h263 {

class PictureDecoder {
  public:
    using Report = std::function<void(const std::string&)>;

    // Decodes the picture behind its header into `picture`, predicted from `reference`. Damage is reported; what did
    // not come stays MbKind::Lost.
    void decode(Picture& picture, const Picture* reference, ByteReader& bits, const Report& report);
    long segments() const { return segments_; }  // GOBs with a header and slices, of all pictures

  private:
    // A macroblock between parsing and reconstruction.
    struct Parsed {
        int address = -1;
        unsigned pattern = 0;  // coded blocks, the first one bit 5
        int last[6] = {};      // index of the last coefficient of each in the scan; 63 where it tells nothing
        alignas(32) Vek16s block[6][64];
    };

    void decodeSegment();
    bool beginNextSegment();
    void moveTo(int address);
    void parseMacroblock(int address, Parsed& parsed);
    void parseQuantizer();
    void parseBlocks(bool intra, int intraMode, Parsed& parsed);
    void parseAdvancedIntraBlock(int k, bool coded, int intraMode, int quantizer, Vek16s (&block)[64]);
    MotionVector parseVector(int k);
    MotionVector predictedVector(int k) const;
    const Macroblock* beside(int dx, int dy) const;  // null: outside the picture, GOB or slice
    void finish(Parsed& parsed);
    void predict(const Macroblock& mb);
    void predictOverlapped(const Macroblock& mb);
    void reconstruct(const Macroblock& mb, const Parsed& parsed);

    Picture* picture_ = nullptr;
    const Picture* reference_ = nullptr;
    const PictureHeader* header_ = nullptr;
    ByteReader* bits_ = nullptr;
    const Report* report_ = nullptr;
    Macroblock* mbs_ = nullptr;
    int widthInMbs_ = 0, mbCount_ = 0;
    long segments_ = 0;
    IntraStore intra_;

    int segmentStart_ = 0, next_ = 0;  // addresses
    int quantizer_ = 1;
    int address_ = 0, x_ = 0, y_ = 0;
    // Overlapped prediction waits for the macroblock to the right: the one before is finished after it is parsed.
    Parsed parsed_[2];
    int current_ = 0;
};

}  // namespace vekdec::h263
