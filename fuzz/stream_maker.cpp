#include "stream_maker.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace vekvc_fuzz {
namespace {

constexpr std::size_t kMostUnits = 40, kMostUnitBytes = 1 << 14;
constexpr Field kMostMapUnits = 1200;  // larger pictures are as wrong, but slower

bool isSlice(int type) { return type == 1 || type == 5; }

// Walks the fields of a unit with a coder.
template <class C, class U, class S>
void codeUnit(C& c, U& unit, const S& sent) {
    if (unit.type == 7) return code(c, unit.sps);
    static const Sps kNoSps;
    static const Pps kNoPps;
    const auto spsOf = [&](const Pps& pps) -> const Sps& {
        const auto found = sent.sps.find(pps.spsId);
        return found == sent.sps.end() ? kNoSps : found->second;
    };
    if (unit.type == 8) return code(c, unit.pps, spsOf(unit.pps));
    const auto found = sent.pps.find(unit.head.ppsId);
    const Pps& pps = found == sent.pps.end() ? kNoPps : found->second;
    code(c, unit.head, unit.type == 5, unit.refIdc, spsOf(pps), pps);
}

}  // namespace

StreamMaker::StreamMaker(const std::vector<std::string>& good, const std::vector<std::string>& others) {
    for (const auto& folder : good) take(folder, true);
    for (const auto& folder : others) take(folder, false);
    FUZZ_REQUIRE(!pool_.empty());
}

void StreamMaker::take(const std::string& folder, bool good) {
    std::vector<std::filesystem::path> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".264") names.push_back(entry.path());
    std::sort(names.begin(), names.end());
    for (const auto& name : names) {
        std::ifstream file(name, std::ios::binary);
        const std::vector<char> chars{std::istreambuf_iterator<char>(file), {}};
        Stream stream = parse({chars.begin(), chars.end()}, good);
        if (!stream.empty()) pool_.push_back(std::move(stream));
    }
}

StreamMaker::Stream StreamMaker::parse(const std::vector<std::uint8_t>& bytes, bool good) {
    Stream stream;
    Sent sent;
    const auto startCode = [&](std::size_t from) {
        for (; from + 3 <= bytes.size(); ++from)
            if (bytes[from] == 0 && bytes[from + 1] == 0 && bytes[from + 2] == 1) return from;
        return bytes.size();
    };
    for (std::size_t at = startCode(0); at + 4 <= bytes.size() && stream.size() < kMostUnits;) {
        const std::size_t end = startCode(at + 3);
        Unit unit;
        unit.refIdc = bytes[at + 3] >> 5 & 3;
        unit.type = bytes[at + 3] & 31;
        int zeros = 0;
        for (std::size_t i = at + 4; i < end; ++i) {
            if (zeros >= 2 && bytes[i] == 3) {
                zeros = 0;
                continue;
            }
            zeros = bytes[i] == 0 ? zeros + 1 : 0;
            unit.rbsp.push_back(bytes[i]);
        }
        at = end;
        while (!unit.rbsp.empty() && unit.rbsp.back() == 0) unit.rbsp.pop_back();
        if (unit.rbsp.empty() || unit.rbsp.size() > kMostUnitBytes || unit.type == 6) continue;
        unit.bits = 8 * unit.rbsp.size() - 1;
        for (int b = unit.rbsp.back(); b % 2 == 0; b /= 2) --unit.bits;
        if (unit.type == 7 || unit.type == 8 || isSlice(unit.type)) {
            // The header's first fields say which parameter sets the others need: they are read twice.
            for (int pass = 0; pass < 2; ++pass) {
                FieldReader reader(unit.rbsp, unit.bits);
                codeUnit(reader, unit, sent);
                unit.parsed = !reader.failed();
                unit.rest = reader.position();
            }
            // Reader and writer hold each other to the syntax: what they read of a good stream, they write the same.
            if (unit.parsed) {
                const std::vector<bool> again = write(unit, sent);
                for (std::size_t i = 0; i < again.size() && unit.parsed; ++i)
                    unit.parsed = i < unit.bits && again[i] == ((unit.rbsp[i / 8] >> (7 - i % 8) & 1) != 0);
                unit.parsed = unit.parsed && again.size() == unit.bits;
            }
            FUZZ_REQUIRE(unit.parsed || !good);
            if (unit.parsed && unit.type == 7) sent.sps[unit.sps.id] = unit.sps;
            if (unit.parsed && unit.type == 8) sent.pps[unit.pps.id] = unit.pps;
        }
        stream.push_back(std::move(unit));
    }
    return stream;
}

// The unit's bits before rbsp_stop_one_bit, its fields as they stand now.
std::vector<bool> StreamMaker::write(Unit& unit, const Sent& sent) {
    FieldWriter writer;
    codeUnit(writer, unit, sent);
    auto& bits = writer.bits();
    if (isSlice(unit.type))
        for (std::size_t i = unit.rest; i < unit.bits; ++i) bits.push_back((unit.rbsp[i / 8] >> (7 - i % 8) & 1) != 0);
    return bits;
}

// Appends the unit to a byte stream, as it came or with its fields as they stand now.
void StreamMaker::send(Unit unit, bool verbatim, Sent& sent, std::vector<std::uint8_t>& out) {
    std::vector<std::uint8_t> rbsp = unit.rbsp;
    if (unit.parsed && !verbatim) {
        if (unit.type == 7) limit(unit.sps);
        std::vector<bool> bits = write(unit, sent);
        bits.push_back(true);
        rbsp.assign((bits.size() + 7) / 8, 0);
        for (std::size_t i = 0; i < bits.size(); ++i)
            if (bits[i]) rbsp[i / 8] = static_cast<std::uint8_t>(rbsp[i / 8] | 128 >> i % 8);
    }
    if (unit.parsed && unit.type == 7) sent.sps[unit.sps.id] = unit.sps;
    if (unit.parsed && unit.type == 8) sent.pps[unit.pps.id] = unit.pps;
    for (const int byte : {0, 0, 1, (unit.refIdc << 5 | unit.type) & 127})
        out.push_back(static_cast<std::uint8_t>(byte));
    int zeros = 0;
    for (const std::uint8_t byte : rbsp) {
        if (zeros >= 2 && byte <= 3) {
            out.push_back(3);
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out.push_back(byte);
    }
}

void StreamMaker::limit(Sps& sps) {
    // What both sides allow is left as it is: the decoder refuses it.
    while (sps.width < 4096 && sps.height < 4096 && sps.mapUnits() > kMostMapUnits)
        (sps.width > sps.height ? sps.width : sps.height) /= 2;
}

// Changes one to four fields to neighbours, limits or anything.
void StreamMaker::changeFields(Unit& unit, const Sent& sent, Input& input) {
    if (!unit.parsed) return;
    for (int count = input.number(1, 4); count > 0; --count) {
        std::size_t fields = 0;
        FieldVisitor counter([&](Field&, Field, Field) { ++fields; });
        codeUnit(counter, unit, sent);
        const std::size_t chosen = (256 * input.byte() + input.byte()) % fields;
        const unsigned how = input.byte();
        std::size_t at = 0;
        FieldVisitor changer([&](Field& x, Field least, Field most) {
            if (at++ != chosen) return;
            switch (how % 8) {
                case 0:
                    x = 0;
                    break;
                case 1:
                    ++x;
                    break;
                case 2:
                    --x;
                    break;
                case 3:
                    x = how & 8 ? most : least;
                    break;
                case 4:
                    x = input.word();
                    break;
                case 5:
                    x ^= 1;
                    break;
                default:
                    x = input.byte() % 16;
            }
            x = std::clamp(x, least, most);
        });
        codeUnit(changer, unit, sent);
    }
}

// Another picture format that is legal as such.
void StreamMaker::changeFormat(Sps& sps, Input& input) {
    const unsigned what = input.byte();
    if (what & 1) {
        sps.width = input.byte() % 24;
        sps.height = input.byte() % 24;
    }
    if (what & 2) {
        sps.profile = 122;
        sps.chromaFormat = input.byte() % 3;
    }
    if (what & 4) {
        sps.profile = 122;
        sps.depthLuma = input.byte() % 7;
        sps.depthChroma = what & 64 ? sps.depthLuma : input.byte() % 7;
    }
    if (what & 8) {
        sps.frameMbsOnly = input.byte() % 2;
        sps.mbaff = input.byte() % 2;
        sps.direct8x8 = 1;
    }
    if (what & 16) {
        sps.refs = input.byte() % 17;
        sps.gaps = input.byte() % 2;
        sps.log2FrameNum = input.byte() % 13;
    }
    if (what & 32) {
        sps.pocType = input.byte() % 3;
        sps.log2PocLsb = input.byte() % 13;
        sps.cycle = input.byte() % 4;
        for (Field& offset : sps.offsets) offset = offset == 0 ? 2 : offset;
    }
    if (what & 128) sps.crop = sps.vui = 0;
}

void StreamMaker::changeSliceGroups(Pps& pps, const Sps& sps, Input& input) {
    const auto units = static_cast<unsigned>(std::min<Field>(sps.mapUnits(), 4096));
    pps.groups = input.byte() % 8;
    pps.mapType = input.byte() % 7;
    if (pps.mapType >= 3 && pps.mapType <= 5 && pps.groups > 0) pps.groups = 1;
    const auto unit = [&] { return static_cast<Field>((256 * input.byte() + input.byte()) % units); };
    for (std::size_t i = 0; i < 8; ++i) {
        pps.run[i] = input.byte() % 32 % units;
        pps.topLeft[i] = unit();
        pps.bottomRight[i] = unit();
        if (pps.topLeft[i] > pps.bottomRight[i]) std::swap(pps.topLeft[i], pps.bottomRight[i]);
    }
    pps.direction = input.byte() % 2;
    pps.rate = unit();
    pps.mapUnits = Field{units} - 1;
    pps.group.resize(units);
    for (Field& group : pps.group) group = static_cast<Field>(input.byte()) % (pps.groups + 1);
}

std::vector<std::uint8_t> StreamMaker::make(Input input) const {
    std::vector<std::uint8_t> out;
    Sent sent;
    const auto anyStream = [&]() -> const Stream& { return pool_[(256 * input.byte() + input.byte()) % pool_.size()]; };
    const auto anyOf = [&](const auto& sets) {
        return std::next(sets.begin(), static_cast<std::ptrdiff_t>(input.byte() % sets.size()))->second;
    };
    const Stream* stream = &anyStream();
    std::size_t at = 0;
    Unit last;
    const int units = 4 + static_cast<int>(input.byte() % 48);
    for (int n = 0; n < units; ++n) {
        const unsigned what = input.byte();
        if (at >= stream->size()) {  // on with the next one
            stream = &anyStream();
            at = 0;
        }
        const auto copy = [&] {
            last = (*stream)[at++];
            send(last, false, sent, out);
        };
        if (what < 110) {
            copy();
        } else if (what < 160) {
            last = (*stream)[at++];
            changeFields(last, sent, input);
            send(last, false, sent, out);
        } else if (what < 175) {  // another stream, from its beginning or its middle
            stream = &anyStream();
            at = what < 168 ? 0 : input.byte() % stream->size();
        } else if (what < 195) {  // parameter sets of another stream under the pictures of this one
            const Stream& other = anyStream();
            for (const Unit& unit : other)
                if (unit.type == (what % 2 == 0 ? 7 : 8) || (what % 5 == 0 && (unit.type == 7 || unit.type == 8)))
                    send(unit, false, sent, out);
        } else if (what < 215 && !sent.sps.empty()) {  // another format under the same id
            Unit unit;
            unit.type = 7;
            unit.refIdc = 3;
            unit.parsed = true;
            unit.sps = anyOf(sent.sps);
            changeFormat(unit.sps, input);
            send(unit, false, sent, out);
        } else if (what < 227 && !sent.pps.empty() && !sent.sps.empty()) {
            Unit unit;
            unit.type = 8;
            unit.refIdc = 3;
            unit.parsed = true;
            unit.pps = anyOf(sent.pps);
            const auto sps = sent.sps.find(unit.pps.spsId);
            changeSliceGroups(unit.pps, sps == sent.sps.end() ? sent.sps.begin()->second : sps->second, input);
            send(unit, false, sent, out);
        } else if (what < 231) {  // a unit is lost
            ++at;
        } else if (what < 235) {
            send(last, false, sent, out);
        } else if (what < 239) {  // forwards or back
            at = input.byte() % stream->size();
        } else if (what < 245) {  // bits of it are wrong, or its end is missing
            last = (*stream)[at++];
            for (int i = input.number(1, 3); i > 0; --i)
                last.rbsp[(256 * input.byte() + input.byte()) % last.rbsp.size()] ^=
                    static_cast<std::uint8_t>(1 << input.byte() % 8);
            if (what % 2 != 0) last.bits -= (256 * input.byte() + input.byte()) % (last.bits - last.rest + 1);
            send(last, what % 3 == 0, sent, out);
        } else if (what < 250) {
            last = (*stream)[at++];
            send(last, true, sent, out);  // its header as the old parameter sets say
        } else {
            last = (*stream)[at++];
            (what % 2 == 0 ? last.type : last.refIdc) = static_cast<int>(input.byte() % (what % 2 == 0 ? 32 : 4));
            send(last, true, sent, out);
        }
    }
    return out;
}

}  // namespace vekvc_fuzz
