// The syntax of H.264 parameter sets and slice headers (7.3.2.1, 7.3.2.2, 7.3.3), written once and walked by coders:
// one reads the fields, one writes them, one counts and changes them. A changed field changes what follows it, so that
// what is written stays well-formed.
#ifndef VEKVC_FUZZ_H264_SYNTAX_H
#define VEKVC_FUZZ_H264_SYNTAX_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vekvc_fuzz {

using Field = std::int64_t;

struct ScalingList {
    Field present = 0;
    std::array<Field, 64> delta{};
};
struct Hrd {
    Field count = 0, scales = 0, lengths = 0;
    std::array<std::array<Field, 3>, 32> entry{};
};
struct Vui {
    Field aspect = 0, aspectIdc = 0, extended = 0, overscan = 0, overscanUse = 0, video = 0, videoFormat = 0,
          colour = 0, colours = 0, chroma = 0, chromaTop = 0, chromaBottom = 0, timing = 0, unitsInTick = 0,
          timeScale = 0, fixedRate = 0, nalHrd = 0, vclHrd = 0, lowDelay = 0, picStruct = 0, restriction = 0,
          vectorsOver = 0, maxBytes = 0, maxBits = 0, lengthX = 0, lengthY = 0, reorder = 0, buffering = 0;
    Hrd hrd[2];
};
struct Sps {
    Field profile = 66, constraints = 0, level = 30, id = 0, chromaFormat = 1, separate = 0, depthLuma = 0,
          depthChroma = 0, bypass = 0, scaling = 0;
    std::array<ScalingList, 12> lists;
    Field log2FrameNum = 0, pocType = 0, log2PocLsb = 0, deltaZero = 0, offsetNonRef = 0, offsetBottom = 0, cycle = 0;
    std::array<Field, 256> offsets{};
    Field refs = 1, gaps = 0, width = 0, height = 0, frameMbsOnly = 1, mbaff = 0, direct8x8 = 1, crop = 0, cropLeft = 0,
          cropRight = 0, cropTop = 0, cropBottom = 0, vui = 0;
    Vui vuiFields;

    bool high() const {
        constexpr Field kProfiles[] = {100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135};
        return std::find(std::begin(kProfiles), std::end(kProfiles), profile) != std::end(kProfiles);
    }
    Field chromaFormatIdc() const { return high() ? chromaFormat : 1; }
    Field mapUnits() const { return (width + 1) * (height + 1); }
};
struct Pps {
    Field id = 0, spsId = 0, cabac = 0, pocPresent = 0, groups = 0, mapType = 0;
    std::array<Field, 8> run{}, topLeft{}, bottomRight{};
    Field direction = 0, rate = 0, mapUnits = 0;
    std::vector<Field> group;
    Field refs0 = 0, refs1 = 0, weighted = 0, bipred = 0, qp = 0, qs = 0, chromaQp = 0, deblocking = 0, constrained = 0,
          redundant = 0, more = 0, transform8x8 = 0, scaling = 0, chromaQp2 = 0;
    std::array<ScalingList, 12> lists;
};
struct SliceHead {
    Field firstMb = 0, type = 7, ppsId = 0, colourPlane = 0, frameNum = 0, fieldPic = 0, bottom = 0, idrPicId = 0,
          pocLsb = 0, deltaBottom = 0, delta0 = 0, delta1 = 0, redundant = 0, spatial = 0, overrideRefs = 0, refs0 = 0,
          refs1 = 0;
    struct Modification {
        Field present = 0;
        std::array<Field, 40> idc{}, value{};
    } modification[2];
    Field lumaDenom = 0, chromaDenom = 0;
    struct Weight {
        Field luma = 0, lumaWeight = 0, lumaOffset = 0, chroma = 0;
        std::array<Field, 4> chromas{};
    };
    std::array<std::array<Weight, 32>, 2> weights;
    Field noOutput = 0, longTerm = 0, adaptive = 0;
    std::array<Field, 40> operation{}, operand{}, operand2{};
    Field cabacInitIdc = 0, qpDelta = 0, qsFlag = 0, qsDelta = 0, deblocking = 0, alpha = 0, beta = 0, changeCycle = 0;
};

// ---- coders: u(field, bits), ue(field), se(field), more(field), align()

class FieldReader {
  public:
    FieldReader(const std::vector<std::uint8_t>& rbsp, std::size_t bits) : rbsp_(rbsp), end_(bits) {}
    void u(Field& x, int n) {
        x = 0;
        for (int i = 0; i < n; ++i) x = 2 * x + bit();
    }
    void ue(Field& x) {
        int zeros = 0;
        while (zeros < 32 && !failed_ && bit() == 0) ++zeros;
        u(x, zeros);
        x += (Field{1} << zeros) - 1;
    }
    void se(Field& x) {
        ue(x);
        x = x % 2 != 0 ? (x + 1) / 2 : -(x / 2);
    }
    void more(Field& x) const { x = at_ < end_; }
    void align() {  // cabac_alignment_one_bit
        while (at_ % 8 != 0 && !failed_)
            if (bit() == 0) failed_ = true;
    }
    bool failed() const { return failed_; }
    std::size_t position() const { return at_; }

  private:
    int bit() {
        if (at_ >= end_) failed_ = true;
        if (failed_) return 0;
        const int b = rbsp_[at_ / 8] >> (7 - at_ % 8) & 1;
        ++at_;
        return b;
    }
    const std::vector<std::uint8_t>& rbsp_;
    std::size_t end_, at_ = 0;
    bool failed_ = false;
};

class FieldWriter {
  public:
    void u(const Field& x, int n) {
        for (int i = n; i-- > 0;) bits_.push_back((x >> i & 1) != 0);
    }
    void ue(const Field& x) {
        const Field code = std::clamp<Field>(x, 0, (Field{1} << 32) - 2) + 1;
        int length = 0;
        while (code >> length > 1) ++length;
        u(0, length);
        u(code, length + 1);
    }
    void se(const Field& x) { ue(x > 0 ? 2 * x - 1 : -2 * x); }
    void more(const Field&) const {}
    void align() {
        while (bits_.size() % 8 != 0) bits_.push_back(true);
    }
    std::vector<bool>& bits() { return bits_; }

  private:
    std::vector<bool> bits_;
};

// Calls change(field, least, most) with the number of each field visited: counts them, or changes some.
template <class Change>
class FieldVisitor {
  public:
    explicit FieldVisitor(Change change) : change_(change) {}
    void u(Field& x, int n) { change_(x, Field{0}, (Field{1} << n) - 1); }
    void ue(Field& x) { change_(x, Field{0}, (Field{1} << 32) - 2); }
    void se(Field& x) { change_(x, -(Field{1} << 31) + 1, (Field{1} << 31) - 1); }
    void more(Field& x) { change_(x, Field{0}, Field{1}); }
    void align() {}

  private:
    Change change_;
};

// ---- the syntax

template <class C>
void codeScalingList(C& c, ScalingList& list, int size) {
    c.u(list.present, 1);
    if (list.present == 0) return;
    Field last = 8, next = 8;
    for (std::size_t j = 0; j < static_cast<std::size_t>(size); ++j) {
        if (next != 0) {
            c.se(list.delta[j]);
            next = ((last + list.delta[j]) % 256 + 256) % 256;
        }
        if (next != 0) last = next;
    }
}

template <class C>
void codeHrd(C& c, Hrd& h) {
    c.ue(h.count);
    c.u(h.scales, 8);
    for (std::size_t i = 0; i <= static_cast<std::size_t>(std::clamp<Field>(h.count, 0, 31)); ++i) {
        c.ue(h.entry[i][0]);
        c.ue(h.entry[i][1]);
        c.u(h.entry[i][2], 1);
    }
    c.u(h.lengths, 20);
}

template <class C>
void codeVui(C& c, Vui& v) {
    c.u(v.aspect, 1);
    if (v.aspect != 0) {
        c.u(v.aspectIdc, 8);
        if (v.aspectIdc == 255) c.u(v.extended, 32);
    }
    c.u(v.overscan, 1);
    if (v.overscan != 0) c.u(v.overscanUse, 1);
    c.u(v.video, 1);
    if (v.video != 0) {
        c.u(v.videoFormat, 4);
        c.u(v.colour, 1);
        if (v.colour != 0) c.u(v.colours, 24);
    }
    c.u(v.chroma, 1);
    if (v.chroma != 0) {
        c.ue(v.chromaTop);
        c.ue(v.chromaBottom);
    }
    c.u(v.timing, 1);
    if (v.timing != 0) {
        c.u(v.unitsInTick, 32);
        c.u(v.timeScale, 32);
        c.u(v.fixedRate, 1);
    }
    c.u(v.nalHrd, 1);
    if (v.nalHrd != 0) codeHrd(c, v.hrd[0]);
    c.u(v.vclHrd, 1);
    if (v.vclHrd != 0) codeHrd(c, v.hrd[1]);
    if (v.nalHrd != 0 || v.vclHrd != 0) c.u(v.lowDelay, 1);
    c.u(v.picStruct, 1);
    c.u(v.restriction, 1);
    if (v.restriction == 0) return;
    c.u(v.vectorsOver, 1);
    for (Field* x : {&v.maxBytes, &v.maxBits, &v.lengthX, &v.lengthY, &v.reorder, &v.buffering}) c.ue(*x);
}

template <class C>
void code(C& c, Sps& s) {
    c.u(s.profile, 8);
    c.u(s.constraints, 8);
    c.u(s.level, 8);
    c.ue(s.id);
    if (s.high()) {
        c.ue(s.chromaFormat);
        if (s.chromaFormat == 3) c.u(s.separate, 1);
        c.ue(s.depthLuma);
        c.ue(s.depthChroma);
        c.u(s.bypass, 1);
        c.u(s.scaling, 1);
        if (s.scaling != 0)
            for (std::size_t i = 0; i < (s.chromaFormat == 3 ? 12u : 8u); ++i)
                codeScalingList(c, s.lists[i], i < 6 ? 16 : 64);
    }
    c.ue(s.log2FrameNum);
    c.ue(s.pocType);
    if (s.pocType == 0) {
        c.ue(s.log2PocLsb);
    } else if (s.pocType == 1) {
        c.u(s.deltaZero, 1);
        c.se(s.offsetNonRef);
        c.se(s.offsetBottom);
        c.ue(s.cycle);
        for (std::size_t i = 0; i < static_cast<std::size_t>(std::clamp<Field>(s.cycle, 0, 255)); ++i)
            c.se(s.offsets[i]);
    }
    c.ue(s.refs);
    c.u(s.gaps, 1);
    c.ue(s.width);
    c.ue(s.height);
    c.u(s.frameMbsOnly, 1);
    if (s.frameMbsOnly == 0) c.u(s.mbaff, 1);
    c.u(s.direct8x8, 1);
    c.u(s.crop, 1);
    if (s.crop != 0)
        for (Field* x : {&s.cropLeft, &s.cropRight, &s.cropTop, &s.cropBottom}) c.ue(*x);
    c.u(s.vui, 1);
    if (s.vui != 0) codeVui(c, s.vuiFields);
}

template <class C>
void code(C& c, Pps& p, const Sps& sps) {
    c.ue(p.id);
    c.ue(p.spsId);
    c.u(p.cabac, 1);
    c.u(p.pocPresent, 1);
    c.ue(p.groups);
    if (p.groups > 0) {
        const auto groups = static_cast<std::size_t>(std::clamp<Field>(p.groups, 0, 7)) + 1;
        c.ue(p.mapType);
        if (p.mapType == 0) {
            for (std::size_t i = 0; i < groups; ++i) c.ue(p.run[i]);
        } else if (p.mapType == 2) {
            for (std::size_t i = 0; i + 1 < groups; ++i) {
                c.ue(p.topLeft[i]);
                c.ue(p.bottomRight[i]);
            }
        } else if (p.mapType >= 3 && p.mapType <= 5) {
            c.u(p.direction, 1);
            c.ue(p.rate);
        } else if (p.mapType == 6) {
            c.ue(p.mapUnits);
            p.group.resize(static_cast<std::size_t>(std::clamp<Field>(p.mapUnits, 0, 4095)) + 1);
            for (Field& group : p.group) c.u(group, groups > 4 ? 3 : groups > 2 ? 2 : 1);
        }
    }
    c.ue(p.refs0);
    c.ue(p.refs1);
    c.u(p.weighted, 1);
    c.u(p.bipred, 2);
    c.se(p.qp);
    c.se(p.qs);
    c.se(p.chromaQp);
    c.u(p.deblocking, 1);
    c.u(p.constrained, 1);
    c.u(p.redundant, 1);
    c.more(p.more);
    if (p.more == 0) return;
    c.u(p.transform8x8, 1);
    c.u(p.scaling, 1);
    if (p.scaling != 0)
        for (std::size_t i = 0; i < 6 + (p.transform8x8 != 0 ? (sps.chromaFormatIdc() == 3 ? 6u : 2u) : 0u); ++i)
            codeScalingList(c, p.lists[i], i < 6 ? 16 : 64);
    c.se(p.chromaQp2);
}

template <class C>
void code(C& c, SliceHead& s, bool idr, int refIdc, const Sps& sps, const Pps& pps) {
    c.ue(s.firstMb);
    c.ue(s.type);
    c.ue(s.ppsId);
    const Field type = s.type % 5;  // P, B, I, SP, SI
    const bool isP = type == 0 || type == 3, isB = type == 1;
    if (sps.chromaFormatIdc() == 3 && sps.separate != 0) c.u(s.colourPlane, 2);
    c.u(s.frameNum, 4 + static_cast<int>(std::clamp<Field>(sps.log2FrameNum, 0, 12)));
    if (sps.frameMbsOnly == 0) {
        c.u(s.fieldPic, 1);
        if (s.fieldPic != 0) c.u(s.bottom, 1);
    }
    const bool field = sps.frameMbsOnly == 0 && s.fieldPic != 0;
    if (idr) c.ue(s.idrPicId);
    if (sps.pocType == 0) {
        c.u(s.pocLsb, 4 + static_cast<int>(std::clamp<Field>(sps.log2PocLsb, 0, 12)));
        if (pps.pocPresent != 0 && !field) c.se(s.deltaBottom);
    } else if (sps.pocType == 1 && sps.deltaZero == 0) {
        c.se(s.delta0);
        if (pps.pocPresent != 0 && !field) c.se(s.delta1);
    }
    if (pps.redundant != 0) c.ue(s.redundant);
    if (isB) c.u(s.spatial, 1);
    Field active[2] = {pps.refs0, pps.refs1};
    if (isP || isB) {
        c.u(s.overrideRefs, 1);
        if (s.overrideRefs != 0) {
            c.ue(s.refs0);
            if (isB) c.ue(s.refs1);
            active[0] = s.refs0;
            active[1] = s.refs1;
        }
    }
    for (std::size_t list = 0; list < (isB ? 2u : isP ? 1u : 0u); ++list) {
        auto& m = s.modification[list];
        c.u(m.present, 1);
        if (m.present == 0) continue;
        for (std::size_t i = 0; i < m.idc.size(); ++i) {
            if (i + 1 == m.idc.size()) m.idc[i] = 3;
            c.ue(m.idc[i]);
            if (m.idc[i] == 3) break;
            c.ue(m.value[i]);
        }
    }
    if ((pps.weighted != 0 && isP) || (pps.bipred == 1 && isB)) {
        c.ue(s.lumaDenom);
        if (sps.chromaFormatIdc() != 0) c.ue(s.chromaDenom);
        for (std::size_t list = 0; list < (isB ? 2u : 1u); ++list)
            for (std::size_t i = 0; i <= static_cast<std::size_t>(std::clamp<Field>(active[list], 0, 31)); ++i) {
                auto& w = s.weights[list][i];
                c.u(w.luma, 1);
                if (w.luma != 0) {
                    c.se(w.lumaWeight);
                    c.se(w.lumaOffset);
                }
                if (sps.chromaFormatIdc() == 0) continue;
                c.u(w.chroma, 1);
                if (w.chroma != 0)
                    for (Field& x : w.chromas) c.se(x);
            }
    }
    if (refIdc != 0 && idr) {
        c.u(s.noOutput, 1);
        c.u(s.longTerm, 1);
    } else if (refIdc != 0) {
        c.u(s.adaptive, 1);
        for (std::size_t i = 0; s.adaptive != 0 && i < s.operation.size(); ++i) {
            if (i + 1 == s.operation.size()) s.operation[i] = 0;
            c.ue(s.operation[i]);
            if (s.operation[i] == 0) break;
            if (s.operation[i] != 5) c.ue(s.operand[i]);
            if (s.operation[i] == 3) c.ue(s.operand2[i]);
        }
    }
    if (pps.cabac != 0 && (isP || isB)) c.ue(s.cabacInitIdc);
    c.se(s.qpDelta);
    if (type >= 3) {
        if (type == 3) c.u(s.qsFlag, 1);
        c.se(s.qsDelta);
    }
    if (pps.deblocking != 0) {
        c.ue(s.deblocking);
        if (s.deblocking != 1) {
            c.se(s.alpha);
            c.se(s.beta);
        }
    }
    if (pps.groups > 0 && pps.mapType >= 3 && pps.mapType <= 5) {
        const Field rate = std::max<Field>(pps.rate, 0) + 1, most = (sps.mapUnits() + rate - 1) / rate + 1;
        int n = 0;
        while (Field{1} << n < most) ++n;
        c.u(s.changeCycle, n);
    }
    if (pps.cabac != 0) c.align();
}

}  // namespace vekvc_fuzz

#endif
