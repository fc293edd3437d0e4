// Makes hostile H.264 streams out of good ones, told by a fuzzer's bytes: takes NAL units apart, changes fields of
// their parameter sets and slice headers, and joins units of different streams.
#ifndef VEKVC_FUZZ_STREAM_MAKER_H
#define VEKVC_FUZZ_STREAM_MAKER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "h264_syntax.h"

namespace vekvc_fuzz {

class StreamMaker {
  public:
    // All *.264 below the folders.
    StreamMaker(const std::vector<std::string>& good, const std::vector<std::string>& others);
    std::vector<std::uint8_t> make(Input input) const;
    std::size_t streams() const { return pool_.size(); }

  private:
    void take(const std::string& folder, bool good);

    struct Unit {
        int type = 0, refIdc = 0;
        std::vector<std::uint8_t> rbsp;  // without emulation prevention
        std::size_t bits = 0;            // before rbsp_stop_one_bit
        // What it says, as far as its syntax is known here, and where the bits after that begin.
        Sps sps;
        Pps pps;
        SliceHead head;
        bool parsed = false;
        std::size_t rest = 0;
    };
    // The parameter sets that the stream being made has sent.
    struct Sent {
        std::map<Field, Sps> sps;
        std::map<Field, Pps> pps;
    };
    using Stream = std::vector<Unit>;

    static Stream parse(const std::vector<std::uint8_t>& bytes, bool good);
    static std::vector<bool> write(Unit& unit, const Sent& sent);
    static void send(Unit unit, bool verbatim, Sent& sent, std::vector<std::uint8_t>& out);
    static void changeFields(Unit& unit, const Sent& sent, Input& input);
    static void changeFormat(Sps& sps, Input& input);
    static void changeSliceGroups(Pps& pps, const Sps& sps, Input& input);
    static void limit(Sps& sps);

    std::vector<Stream> pool_;
};

}  // namespace vekvc_fuzz

#endif
