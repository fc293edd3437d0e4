#include "h264/picture_buffer.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace vekdec::h264 {
namespace {

// MaxDpbMbs, Table A-1.
int maxDpbMbs(const SequenceParameterSet& sps) {
    struct Level {
        int idc, mbs;
    };
    constexpr Level kLevels[] = {{9, 396},    {10, 396},   {11, 900},    {12, 2376},   {13, 2376},  {20, 2376},
                                 {21, 4752},  {22, 8100},  {30, 8100},   {31, 18000},  {32, 20480}, {40, 32768},
                                 {41, 32768}, {42, 34816}, {50, 110400}, {51, 184320}, {52, 184320}};
    const bool level1b = sps.levelIdc == 11 && (sps.constraintFlags & 0x10) != 0 && sps.profileIdc <= 88;
    if (level1b) return 396;
    for (const Level& level : kLevels)
        if (sps.levelIdc <= level.idc) return level.mbs;
    return 696320;
}

bool sameFormat(const SequenceParameterSet& a, const SequenceParameterSet& b) {
    return a.widthInMbs == b.widthInMbs && a.heightInMbs() == b.heightInMbs() &&
           a.chromaFormatIdc == b.chromaFormatIdc && a.bitDepthLuma == b.bitDepthLuma &&
           a.bitDepthChroma == b.bitDepthChroma;
}

bool isReference(const Picture& p) { return (p.shortTerm | p.longTerm) != 0; }
int structureOf(const SliceHeader& slice) {
    return !slice.fieldPic ? kFrame : slice.bottomField ? kBottomField : kTopField;
}
int outputPoc(const Picture& p) { return p.decoded == kFrame ? p.pocOf(kFrame) : p.pocOf(p.decoded); }

// A field that never came shows the lines of the other one; direct prediction finds no motion in it.
void completeFields(Picture& p) {
    if (p.decoded == kFrame || p.decoded == 0) return;
    p.progress->await(p.decoded, RowProgress::kAll);
    for (auto& plane : p.plane)
        for (int y = p.decoded == kTopField ? 0 : 1; y < plane.height; y += 2) {
            const int other = p.decoded == kTopField ? y + 1 : y - 1;
            std::memcpy(plane.data + plane.stride * other, plane.data + plane.stride * y,
                        static_cast<std::size_t>(plane.width * p.bytesPerSample));
        }
    const std::size_t half = p.mbs.size() / 2, first = p.decoded == kTopField ? half : 0;
    for (std::size_t i = first; i < first + half; ++i) p.mbs[i].type = MbType::Missing;
    p.progress->publish(kFrame, RowProgress::kAll);
}

}  // namespace

void PictureBuffer::activate(std::shared_ptr<const SequenceParameterSet> newSps) {
    if (active_ != nullptr && !sameFormat(*active_, *newSps)) {
        flush();
        pictures_.clear();
        spare_.clear();
        current_ = previous_ = nullptr;
    }
    active_ = std::move(newSps);
    const SequenceParameterSet& sps = *active_;
    // What the level allows bounds the memory, whatever the stream asks for. Many streams name too low a level; those
    // of small frames get what they ask for all the same, up to the buffer of level 4.
    constexpr int kTrustedMbs = 32768;
    const int frameMbs = sps.widthInMbs * sps.heightInMbs();
    const int most = std::clamp(std::max(maxDpbMbs(sps), kTrustedMbs) / frameMbs, 1, 16);
    dpbSize_ = sps.bitstreamRestriction ? sps.maxDecFrameBuffering : std::min(maxDpbMbs(sps) / frameMbs, 16);
    dpbSize_ = std::min(std::max({dpbSize_, sps.maxNumRefFrames, 1}), most);
    mostReferences_ = std::clamp(sps.maxNumRefFrames, 1, dpbSize_);
    reorderDepth_ = sps.bitstreamRestriction ? sps.maxNumReorderFrames : dpbSize_;
}

Picture& PictureBuffer::store(std::shared_ptr<Picture> picture) {
    for (picture->id = 0;; ++picture->id)
        if (std::none_of(pictures_.begin(), pictures_.end(), [&](const auto& p) { return p->id == picture->id; }))
            break;
    pictures_.push_back(std::move(picture));
    return *pictures_.back();
}

void PictureBuffer::give(const Picture& picture) {
    output_(*std::find_if(pictures_.begin(), pictures_.end(), [&](const auto& p) { return p.get() == &picture; }),
            active_);
}

Picture& PictureBuffer::allocate() {
    const SequenceParameterSet& sps = *active_;
    std::shared_ptr<Picture> picture;
    const auto free = std::find_if(spare_.begin(), spare_.end(),
                                   [](const auto& p) { return p.use_count() == 1 && p->memory.use_count() == 1; });
    if (free != spare_.end()) {
        picture = std::move(*free);
        spare_.erase(free);
    } else {
        picture = std::make_shared<Picture>();
        picture->progress = std::make_shared<RowProgress>();
        picture->bytesPerSample = sps.bitDepth() > 8 ? 2 : 1;
        picture->widthInMbs = sps.widthInMbs;
        picture->heightInMbs = sps.heightInMbs();
        picture->memory = std::make_shared<vekapp::PictureMemory>(
            vekapp::PictureFormat{16 * sps.widthInMbs, 16 * sps.heightInMbs(), sps.chroma(), sps.bitDepth()});
        std::copy_n(picture->memory->plane, 3, picture->plane);
        picture->mbs.resize(static_cast<std::size_t>(sps.widthInMbs * sps.heightInMbs()));
    }
    for (auto& slices : picture->slices) slices.clear();
    picture->progress->restart();
    picture->decoded = picture->shortTerm = picture->longTerm = 0;
    picture->nonExisting = picture->neededForOutput = picture->codedAsFields = picture->mbaff = picture->idr = false;
    picture->poc[0] = picture->poc[1] = INT_MAX;
    return store(std::move(picture));
}

Picture& PictureBuffer::begin(const SliceHeader& slice) {
    const int structure = structureOf(slice);
    lost_ = 0;
    if (current_ != nullptr) {
        // Both fields follow one SPS: its format is the frame's.
        const bool secondField = slice.fieldPic && current_->codedAsFields && current_->decoded == kFrame - structure &&
                                 current_->frameNum == slice.frameNum && !slice.idr && slice.pps->sps == active_;
        if (secondField) {
            const OrderCounts counts = decodePicOrderCount(slice);
            current_->poc[slice.bottomField] = slice.bottomField ? counts.bottom : counts.top;
            return *current_;
        }
        storeCurrent();  // an unpaired field
    }
    if (slice.idr || active_ == nullptr) {
        if (active_ != nullptr) {
            unmarkAll();
            flush();
        }
        activate(slice.pps->sps);
        prevRefFrameNum_ = prevFrameNum_ = 0;
    } else if (slice.pps->sps != active_) {  // only a broken stream changes it here
        activate(slice.pps->sps);
    } else if (slice.frameNum != prevRefFrameNum_) {
        fillFrameNumGap(slice);
    }
    const OrderCounts counts = decodePicOrderCount(slice);
    Picture& picture = allocate();
    current_ = &picture;
    if (structure & kTopField) picture.poc[0] = counts.top;
    if (structure & kBottomField) picture.poc[1] = counts.bottom;
    picture.frameNum = slice.frameNum;
    picture.idr = slice.idr;
    picture.codedAsFields = slice.fieldPic;
    picture.mbaff = slice.mbaff();
    return picture;
}

// 8.2.5.2: frames for the missing values of frame_num, which take part in the sliding window but are never shown. None
// is referred to but by a stream with losses, which sees the frame before in their place: they need no memory of their
// own.
void PictureBuffer::fillFrameNumGap(const SliceHeader& slice) {
    const int maxFrameNum = 1 << slice.sps->log2MaxFrameNum;
    int missing = (prevRefFrameNum_ + 1) % maxFrameNum;
    if (slice.frameNum == missing || previous_ == nullptr) return;
    // More than the buffer holds push one another out: only the last ones count.
    const int count = (slice.frameNum - missing + maxFrameNum) % maxFrameNum;
    if (!slice.sps->gapsInFrameNumAllowed) lost_ = count;
    const int kept = std::min(count, mostReferences_);
    if (count > kept) missing = (slice.frameNum - kept + maxFrameNum) % maxFrameNum;
    for (; missing != slice.frameNum; missing = (missing + 1) % maxFrameNum) {
        SliceHeader gap;
        gap.sps = slice.sps;
        gap.pps = slice.pps;
        gap.nalRefIdc = 1;
        gap.frameNum = missing;
        deriveFrameNumWrap(pictures_, gap);
        slidingWindow();
        const OrderCounts counts = slice.sps->pocType != 0 ? decodePicOrderCount(gap) : OrderCounts{0, 0};
        auto empty = std::make_shared<Picture>();
        std::copy_n(previous_->plane, 3, empty->plane);
        empty->memory = previous_->memory;
        empty->progress = previous_->progress;
        empty->bytesPerSample = previous_->bytesPerSample;
        empty->widthInMbs = previous_->widthInMbs;
        empty->heightInMbs = previous_->heightInMbs;
        Picture& picture = store(std::move(empty));
        picture.frameNum = missing;
        picture.nonExisting = true;
        picture.decoded = kFrame;
        picture.poc[0] = counts.top;
        picture.poc[1] = counts.bottom;
        picture.shortTerm = kFrame;
        prevRefFrameNum_ = prevFrameNum_ = missing;
        current_ = &picture;
        makeRoom();
        current_ = nullptr;
    }
}

// 8.2.1. Everything is within 64 bits: sums of a few numbers of 32 bits, and at most 2^31 times one.
PictureBuffer::OrderCounts PictureBuffer::decodePicOrderCount(const SliceHeader& slice) {
    const SequenceParameterSet& sps = *slice.sps;
    const int maxFrameNum = 1 << sps.log2MaxFrameNum;
    std::int64_t top = 0, bottom = 0;
    const auto check = [&] {
        for (const std::int64_t count : {top, bottom})
            if (count < INT_MIN || count >= INT_MAX) throw BadSyntax("picture order counts leave their range");
    };
    if (sps.pocType == 0) {
        if (slice.idr) prevPocMsb_ = prevPocLsb_ = 0;
        const int maxLsb = 1 << sps.log2MaxPocLsb;
        std::int64_t msb = prevPocMsb_;
        if (slice.pocLsb < prevPocLsb_ && prevPocLsb_ - slice.pocLsb >= maxLsb / 2)
            msb += maxLsb;
        else if (slice.pocLsb > prevPocLsb_ && slice.pocLsb - prevPocLsb_ > maxLsb / 2)
            msb -= maxLsb;
        top = msb + slice.pocLsb;
        bottom = slice.fieldPic ? top : top + slice.deltaPocBottom;
        check();
        if (slice.nalRefIdc != 0) {
            prevPocMsb_ = msb;
            prevPocLsb_ = slice.pocLsb;
        }
    } else {
        std::int64_t frameNumOffset = slice.idr ? 0 : prevFrameNumOffset_;
        if (!slice.idr && prevFrameNum_ > slice.frameNum) frameNumOffset += maxFrameNum;
        if (sps.pocType == 1) {
            const int cycle = static_cast<int>(sps.offsetForRefFrame.size());
            std::int64_t absFrameNum = cycle != 0 ? frameNumOffset + slice.frameNum : 0;
            if (slice.nalRefIdc == 0 && absFrameNum > 0) --absFrameNum;
            std::int64_t expected = 0;
            if (absFrameNum > 0) {
                std::int64_t perCycle = 0;
                for (const int offset : sps.offsetForRefFrame) perCycle += offset;
                expected = (absFrameNum - 1) / cycle * perCycle;
                for (int i = 0; i <= (absFrameNum - 1) % cycle; ++i)
                    expected += sps.offsetForRefFrame[static_cast<std::size_t>(i)];
            }
            if (slice.nalRefIdc == 0) expected += sps.offsetForNonRefPic;
            top = expected + slice.deltaPoc[0];
            bottom = top + sps.offsetForTopToBottomField + (slice.fieldPic ? 0 : slice.deltaPoc[1]);
        } else {
            top = bottom = 2 * (frameNumOffset + slice.frameNum) - (slice.nalRefIdc == 0 ? 1 : 0);
            if (slice.idr) top = bottom = 0;
        }
        check();
        if (frameNumOffset > INT_MAX - maxFrameNum) throw BadSyntax("frame numbers leave their range");
        prevFrameNumOffset_ = static_cast<int>(frameNumOffset);
        prevFrameNum_ = slice.frameNum;
    }
    return {static_cast<int>(top), static_cast<int>(bottom)};
}

void deriveFrameNumWrap(const std::vector<std::shared_ptr<Picture>>& pictures, const SliceHeader& slice) {
    const int maxFrameNum = 1 << slice.sps->log2MaxFrameNum;
    for (const auto& p : pictures)
        if (p->shortTerm != 0) p->frameNumWrap = p->frameNum > slice.frameNum ? p->frameNum - maxFrameNum : p->frameNum;
}

void PictureBuffer::unmarkAll() {
    for (const auto& p : pictures_)
        if (p.get() != current_) p->shortTerm = p->longTerm = 0;
}

// 8.2.5.3. Frames and pairs count once; the current picture, of which a field may already be marked, does not.
void PictureBuffer::slidingWindow() {
    int references = 0;
    Picture* oldest = nullptr;
    for (const auto& p : pictures_) {
        if (p.get() == current_ || !isReference(*p)) continue;
        ++references;
        if (p->shortTerm != 0 && (oldest == nullptr || p->frameNumWrap < oldest->frameNumWrap)) oldest = p.get();
    }
    if (references >= mostReferences_ && oldest != nullptr) oldest->shortTerm = 0;
}

// 8.2.5.4.
void PictureBuffer::adaptiveMarking(const SliceHeader& slice) {
    const int structure = structureOf(slice);
    const int currPicNum = slice.fieldPic ? 2 * slice.frameNum + 1 : slice.frameNum;
    // Calls use(picture, structure) for the frame or field with this number among those marked in `marks`.
    const auto withNumber = [&](int number, int Picture::*marks, const auto& numberOf, const auto& use) {
        for (const auto& p : pictures_) {
            if (!slice.fieldPic) {
                if ((*p).*marks == kFrame && numberOf(*p) == number && p.get() != current_)
                    return use(*p, static_cast<int>(kFrame));
            } else {
                for (const int field : {static_cast<int>(kTopField), static_cast<int>(kBottomField)})
                    if (((*p).*marks & field) && 2 * numberOf(*p) + (field == structure) == number)
                        return use(*p, field);
            }
        }
    };
    const auto wrapOf = [](const Picture& p) { return p.frameNumWrap; };
    const auto longIdxOf = [](const Picture& p) { return p.longTermFrameIdx; };
    const auto freeLongTermIdx = [&](int idx, const Picture* except) {
        for (const auto& p : pictures_)
            if (p->longTerm != 0 && p->longTermFrameIdx == idx && p.get() != except) p->longTerm = 0;
    };
    for (const MemoryManagement& m : slice.memoryManagement) {
        switch (m.operation) {
            case 1:
                withNumber(currPicNum - m.differenceOfPicNums, &Picture::shortTerm, wrapOf,
                           [](Picture& p, int s) { p.shortTerm &= ~s; });
                break;
            case 2:
                withNumber(m.longTermPicNum, &Picture::longTerm, longIdxOf,
                           [](Picture& p, int s) { p.longTerm &= ~s; });
                break;
            case 3:
                withNumber(currPicNum - m.differenceOfPicNums, &Picture::shortTerm, wrapOf, [&](Picture& p, int s) {
                    // The index stays with this picture only if its other field has it already.
                    freeLongTermIdx(m.longTermFrameIdx, &p);
                    if (p.longTerm != 0 && p.longTermFrameIdx != m.longTermFrameIdx) p.longTerm = 0;
                    p.shortTerm &= ~s;
                    p.longTerm |= s;
                    p.longTermFrameIdx = m.longTermFrameIdx;
                });
                break;
            case 4:
                maxLongTermFrameIdx_ = m.maxLongTermFrameIdxPlus1 - 1;
                for (const auto& p : pictures_)
                    if (p->longTerm != 0 && p->longTermFrameIdx > maxLongTermFrameIdx_) p->longTerm = 0;
                break;
            case 5:
                for (const auto& p : pictures_) p->shortTerm = p->longTerm = 0;
                maxLongTermFrameIdx_ = -1;
                lastHadMmco5_ = true;
                break;
            case 6:
                freeLongTermIdx(m.longTermFrameIdx, current_);
                if (current_->longTerm != 0 && current_->longTermFrameIdx != m.longTermFrameIdx) current_->longTerm = 0;
                current_->longTerm |= structure;
                current_->longTermFrameIdx = m.longTermFrameIdx;
                break;
        }
    }
}

void PictureBuffer::end(const SliceHeader& slice) {
    Picture& picture = *current_;
    const int structure = structureOf(slice);
    lastHadMmco5_ = false;
    if (slice.nalRefIdc != 0) {
        deriveFrameNumWrap(pictures_, slice);
        if (slice.idr) {
            unmarkAll();
            maxLongTermFrameIdx_ = slice.longTermReference ? 0 : -1;
            if (slice.longTermReference) {
                picture.longTerm |= structure;
                picture.longTermFrameIdx = 0;
            }
        } else if (slice.adaptiveRefPicMarking) {
            adaptiveMarking(slice);
        } else if (!(picture.decoded != 0 &&
                     picture.shortTerm != 0)) {  // not for the second field of a short-term pair
            slidingWindow();
        }
        if (!(picture.longTerm & structure)) picture.shortTerm |= structure;
        prevRefFrameNum_ = slice.frameNum;
    }
    picture.decoded |= structure;
    if (lastHadMmco5_) {  // 8.2.1: the picture counts from 0 from here on
        // The difference of the fields' counts may need more than 32 bits in a broken stream.
        const std::int64_t base = !slice.fieldPic ? picture.pocOf(kFrame) : picture.pocOf(structure);
        const auto fromBase = [&](int poc) {
            return static_cast<int>(std::min<std::int64_t>(poc - base, INT_MAX - 1));
        };
        if (structure & kTopField) picture.poc[0] = fromBase(picture.poc[0]);
        if (structure & kBottomField) picture.poc[1] = fromBase(picture.poc[1]);
        picture.frameNum = 0;
        prevRefFrameNum_ = prevFrameNum_ = prevFrameNumOffset_ = 0;
        prevPocMsb_ = 0;
        prevPocLsb_ = structure == kBottomField ? 0 : picture.poc[0];
    }
    if (picture.decoded == kFrame) storeCurrent();
}

void PictureBuffer::storeCurrent() {
    Picture& picture = *current_;
    completeFields(picture);
    picture.neededForOutput = true;
    makeRoom();
    previous_ = current_;
    current_ = nullptr;
}

// C.4.5.3: output until the current picture finds a free place, and no more pictures wait than the stream reorders.
void PictureBuffer::makeRoom() {
    if (lastHadMmco5_ || (current_->idr && current_->neededForOutput)) {
        const bool wanted = current_->neededForOutput;
        current_->neededForOutput = false;
        while (bump()) {
        }
        current_->neededForOutput = wanted;
        lastHadMmco5_ = false;
    }
    const auto drop = [&] {
        for (auto it = pictures_.begin(); it != pictures_.end();) {
            Picture& p = **it;
            if (&p != current_ && &p != previous_ && !p.neededForOutput && !isReference(p)) {
                if (!p.nonExisting) spare_.push_back(std::move(*it));
                it = pictures_.erase(it);
            } else {
                ++it;
            }
        }
    };
    // Places taken by pictures other than the current one; one kept only for concealment takes none.
    const auto taken = [&] {
        return std::count_if(pictures_.begin(), pictures_.end(), [&](const auto& p) {
            return p.get() != current_ && (p->neededForOutput || isReference(*p));
        });
    };
    const auto waiting = [&] {
        return std::count_if(pictures_.begin(), pictures_.end(), [](const auto& p) { return p->neededForOutput; });
    };
    while (taken() >= dpbSize_) {
        const bool wasWaiting = current_->neededForOutput;
        if (wasWaiting && !isReference(*current_)) {  // C.4.5.2: shown at once if it is the next one
            const bool next = std::none_of(pictures_.begin(), pictures_.end(), [&](const auto& p) {
                return p.get() != current_ && p->neededForOutput && outputPoc(*p) < outputPoc(*current_);
            });
            if (next) {
                give(*current_);
                current_->neededForOutput = false;
                break;
            }
        }
        current_->neededForOutput = false;
        const bool bumped = bump();
        current_->neededForOutput = wasWaiting;
        if (!bumped) {  // only a broken stream marks more references than there are places
            Picture* oldest = nullptr;
            for (const auto& p : pictures_)
                if (p.get() != current_ && isReference(*p)) {
                    oldest = p.get();
                    break;
                }
            if (oldest == nullptr) break;
            oldest->shortTerm = oldest->longTerm = 0;
        }
    }
    while (waiting() > reorderDepth_ && bump()) {
    }
    drop();
}

bool PictureBuffer::bump() {
    Picture* first = nullptr;
    for (const auto& p : pictures_)
        if (p->neededForOutput && (first == nullptr || outputPoc(*p) < outputPoc(*first))) first = p.get();
    if (first == nullptr) return false;
    give(*first);
    first->neededForOutput = false;
    return true;
}

void PictureBuffer::flush() {
    if (current_ != nullptr && current_->decoded != 0) storeCurrent();
    while (bump()) {
    }
}

}  // namespace vekdec::h264
