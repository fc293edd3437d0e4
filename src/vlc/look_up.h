// Looking up a code in a multi-level decode table; the layout is described in include/vekvc/vlc.h.
#ifndef VEKVC_VLC_LOOK_UP_H
#define VEKVC_VLC_LOOK_UP_H

#include "core/bits.h"

namespace vekvc {

inline constexpr Vek32s kVlcEmptySlot = 0x00F0F101;  // fills every slot that belongs to no code
inline constexpr Vek32s kVlcNoCode = kVlcEmptySlot >> 8;
inline constexpr Vek32s kVlcPointerFlag = 0x80;  // in a slot that leads to a sub-table

// What a lookup found. The reader stands behind all bits looked up; giveBack() of them do not belong to the code.
struct VlcSlot {
    Vek32s slot;

    Vek32s value() const { return slot >> 8; }
    bool noCode() const { return value() == kVlcNoCode; }
    int giveBack() const { return slot & 0xFF; }
    int run() const { return slot >> 8 & 0xFF; }
    Vek32s level() const { return slot >> 16; }
    // The 8-bit readings of the block decoders.
    int byteValue() const { return static_cast<std::int8_t>(slot >> 8); }
    int byteLevel() const { return static_cast<std::int8_t>(slot >> 16); }
};

inline VlcSlot lookUp(WordReader& reader, const Vek32s* table) {
    std::ptrdiff_t sub = 0;
    while (true) {
        const int width = load<Vek32s>(table + sub);
        const Vek32s slot = load<Vek32s>(table + sub + 1 + reader.read(width));
        if ((slot & kVlcPointerFlag) == 0) return {slot};
        sub = slot >> 8;
    }
}

// The same on a window, which is left standing before the bits of the last (sub-)table, `width` of them looked up.
struct VlcLook : VlcSlot {
    int width;

    int lengthHere() const { return width - giveBack(); }
};

inline VlcLook look(WordWindow& window, const Vek32s* table) {
    int width = load<Vek32s>(table);
    window.need(width);
    Vek32s slot = load<Vek32s>(table + 1 + window.top(width));
    while ((slot & kVlcPointerFlag) != 0) [[unlikely]] {
            window.drop(width);
            const Vek32s* sub = table + (slot >> 8);
            width = load<Vek32s>(sub);
            window.need(width);
            slot = load<Vek32s>(sub + 1 + window.top(width));
        }
    return {{slot}, width};
}

}  // namespace vekvc

#endif
