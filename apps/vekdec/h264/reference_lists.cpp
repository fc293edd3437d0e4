#include "h264/reference_lists.h"

#include <algorithm>

#include "h264/picture_buffer.h"

namespace vekdec::h264 {
namespace {

using List = std::vector<Reference>;

// A frame is in a list only with both fields marked.
bool wholeFrame(int marks) { return marks == kFrame; }

// 8.2.4.2.5: fields of a list of frames, alternating in parity from the current one on; when one parity runs out, the
// rest of the other follows in order.
void alternateFields(const std::vector<Picture*>& frames, int Picture::*marks, int structure, List& list) {
    int parity = structure;
    std::size_t next[3] = {0, 0, 0};  // by Structure: the first frame not yet looked at
    const auto take = [&](int field) {
        for (auto& i = next[field]; i < frames.size(); ++i)
            if (frames[i]->*marks & field) {
                list.push_back({frames[i++], field});
                return true;
            }
        return false;
    };
    while (take(parity)) parity = kFrame - parity;
    parity = kFrame - parity;
    while (take(parity)) {
    }
}

std::vector<Picture*> sorted(const std::vector<std::shared_ptr<Picture>>& pictures, auto wanted, auto before) {
    std::vector<Picture*> frames;
    for (const auto& p : pictures)
        if (wanted(*p))
            frames.insert(std::upper_bound(frames.begin(), frames.end(), p.get(),
                                           [&](const Picture* a, const Picture* b) { return before(*a, *b); }),
                          p.get());
    return frames;
}

// PicOrderCnt of a frame or pair of which only the marked fields that are decoded count (8.2.4.2.4).
int entryPoc(const Picture& p, int marks) { return p.pocOf(marks == kFrame ? kFrame : marks); }

void initialise(const std::vector<std::shared_ptr<Picture>>& pictures, Slice& slice, std::array<List, 2>& lists) {
    const SliceHeader& header = slice.header;
    const Picture* current = slice.picture;
    const auto longIdx = [](const Picture& a, const Picture& b) { return a.longTermFrameIdx < b.longTermFrameIdx; };
    if (!header.fieldPic) {
        const auto isShort = [&](const Picture& p) { return &p != current && wholeFrame(p.shortTerm); };
        const auto longs = sorted(
            pictures, [&](const Picture& p) { return &p != current && wholeFrame(p.longTerm); }, longIdx);
        const auto append = [](List& list, const std::vector<Picture*>& frames) {
            for (Picture* p : frames) list.push_back({p, kFrame});
        };
        if (header.type == SliceType::P) {
            append(lists[0], sorted(pictures, isShort, [](const Picture& a, const Picture& b) {
                       return a.frameNumWrap > b.frameNumWrap;
                   }));
            append(lists[0], longs);
        } else {
            const int poc = current->pocOf(kFrame);
            const auto past = sorted(
                pictures, [&](const Picture& p) { return isShort(p) && !p.nonExisting && p.pocOf(kFrame) <= poc; },
                [](const Picture& a, const Picture& b) { return a.pocOf(kFrame) > b.pocOf(kFrame); });
            const auto future = sorted(
                pictures, [&](const Picture& p) { return isShort(p) && !p.nonExisting && p.pocOf(kFrame) > poc; },
                [](const Picture& a, const Picture& b) { return a.pocOf(kFrame) < b.pocOf(kFrame); });
            append(lists[0], past);
            append(lists[0], future);
            append(lists[0], longs);
            append(lists[1], future);
            append(lists[1], past);
            append(lists[1], longs);
        }
    } else {
        // Frames and pairs with any field marked, the first field of the current frame among them.
        const auto isShort = [](const Picture& p) { return p.shortTerm != 0; };
        const auto longs = sorted(
            pictures, [](const Picture& p) { return p.longTerm != 0; }, longIdx);
        if (header.type == SliceType::P) {
            const auto shorts = sorted(
                pictures, isShort, [](const Picture& a, const Picture& b) { return a.frameNumWrap > b.frameNumWrap; });
            alternateFields(shorts, &Picture::shortTerm, slice.structure, lists[0]);
            alternateFields(longs, &Picture::longTerm, slice.structure, lists[0]);
        } else {
            // Where the current field is the second one of a frame, the first counts with its own order count; of other
            // frames all decoded fields count, marked or not.
            const int poc = current->pocOf(slice.structure);
            const auto pocOf = [](const Picture& p) { return entryPoc(p, p.decoded == 0 ? p.shortTerm : p.decoded); };
            const auto past = sorted(
                pictures, [&](const Picture& p) { return isShort(p) && !p.nonExisting && pocOf(p) <= poc; },
                [&](const Picture& a, const Picture& b) { return pocOf(a) > pocOf(b); });
            const auto future = sorted(
                pictures, [&](const Picture& p) { return isShort(p) && !p.nonExisting && pocOf(p) > poc; },
                [&](const Picture& a, const Picture& b) { return pocOf(a) < pocOf(b); });
            auto frames = past;
            frames.insert(frames.end(), future.begin(), future.end());
            alternateFields(frames, &Picture::shortTerm, slice.structure, lists[0]);
            frames = future;
            frames.insert(frames.end(), past.begin(), past.end());
            alternateFields(frames, &Picture::shortTerm, slice.structure, lists[1]);
            for (List& list : lists) alternateFields(longs, &Picture::longTerm, slice.structure, list);
        }
    }
    // 8.2.4.2.3: a list 1 of several entries that equals list 0 gets its first two swapped.
    const auto same = [](const Reference& a, const Reference& b) {
        return a.picture == b.picture && a.structure == b.structure;
    };
    if (lists[1].size() > 1 && std::equal(lists[0].begin(), lists[0].end(), lists[1].begin(), lists[1].end(), same))
        std::swap(lists[1][0], lists[1][1]);
}

// 8.2.4.3.
void modify(const std::vector<std::shared_ptr<Picture>>& pictures, const Slice& slice, std::size_t which, List& list) {
    const SliceHeader& header = slice.header;
    const int maxPicNum = (1 << header.sps->log2MaxFrameNum) * (header.fieldPic ? 2 : 1);
    const int currPicNum = header.fieldPic ? 2 * header.frameNum + 1 : header.frameNum;
    const auto find = [&](int number, bool longTerm) -> Reference {
        const auto marks = longTerm ? &Picture::longTerm : &Picture::shortTerm;
        for (const auto& p : pictures) {
            const int base = longTerm ? p->longTermFrameIdx : p->frameNumWrap;
            if (!header.fieldPic) {
                if (p.get() != slice.picture && wholeFrame((*p).*marks) && base == number) return {p.get(), kFrame};
            } else {
                for (const int field : {static_cast<int>(kTopField), static_cast<int>(kBottomField)})
                    if (((*p).*marks & field) && 2 * base + (field == slice.structure) == number)
                        return {p.get(), field};
            }
        }
        return {};
    };
    int predicted = currPicNum;
    std::size_t index = 0;
    for (const RefListModification& m : header.refListModification[which]) {
        Reference wanted;
        if (m.idc == 2) {
            wanted = find(static_cast<int>(m.value), true);
        } else {
            predicted += m.idc == 0 ? -static_cast<int>(m.value) : static_cast<int>(m.value);
            if (predicted < 0)
                predicted += maxPicNum;
            else if (predicted >= maxPicNum)
                predicted -= maxPicNum;
            wanted = find(predicted > currPicNum ? predicted - maxPicNum : predicted, false);
        }
        if (wanted.picture == nullptr)
            throw BadSyntax("a reference list modification names a picture that is not there");
        if (index >= list.size()) throw BadSyntax("more reference list modifications than references");
        // Insert here; what stood further on moves back, and the second occurrence falls out.
        List moved(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(index));
        moved.push_back(wanted);
        for (std::size_t i = index; i < list.size(); ++i)
            if (list[i].picture != wanted.picture || list[i].structure != wanted.structure) moved.push_back(list[i]);
        moved.resize(list.size());
        list = std::move(moved);
        ++index;
    }
}

}  // namespace

void makeReferenceLists(const std::vector<std::shared_ptr<Picture>>& pictures, Slice& slice) {
    std::array<List, 2> lists;
    if (slice.header.type != SliceType::I) {
        deriveFrameNumWrap(pictures, slice.header);
        initialise(pictures, slice, lists);
    }
    for (std::size_t which = 0; which < 2; ++which) {
        lists[which].resize(static_cast<std::size_t>(slice.header.numRefIdxActive[which]));
        modify(pictures, slice, which, lists[which]);
        slice.refPicList[which] = std::move(lists[which]);
    }
}

}  // namespace vekdec::h264
