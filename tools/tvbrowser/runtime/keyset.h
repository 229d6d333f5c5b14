// The keyset of an application: which keys of the remote control its page gets (OIPF DAE, clause 7.2.5).
// Threads: one.
// Blocks:  never.
#pragma once

#include <cstdint>
#include <vector>

namespace tvbrowser {

using KeyMask = std::uint32_t;

namespace keyset {
constexpr KeyMask kRed = 0x1;
constexpr KeyMask kGreen = 0x2;
constexpr KeyMask kYellow = 0x4;
constexpr KeyMask kBlue = 0x8;
constexpr KeyMask kNavigation = 0x10;
constexpr KeyMask kVcr = 0x20;
constexpr KeyMask kScroll = 0x40;
constexpr KeyMask kInfo = 0x80;
constexpr KeyMask kNumeric = 0x100;
constexpr KeyMask kAlpha = 0x200;
constexpr KeyMask kOther = 0x400;
}  // namespace keyset

struct RemoteKey;

class Keyset {
public:
    /// The keyset of an application that has not asked for one: no key if it is broadcast-related, otherwise all keys
    /// that a bit but OTHER stands for.
    static Keyset initial(bool isBroadcastRelated);
    /// Returns the bits that are set: those for which the remote has keys, OTHER if it has one of the other keys.
    KeyMask set(KeyMask wanted, const std::vector<unsigned int>& otherKeys);
    KeyMask mask() const { return bits; }
    bool has(const RemoteKey& key) const;

private:
    KeyMask bits = 0;
    std::vector<unsigned int> others;
};

}  // namespace tvbrowser
