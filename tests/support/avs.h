// AVS coefficient blocks as an encoder writes them. The code tables stand here in the other direction: what the
// positive codes mean, in order of the codes.
#ifndef VEKVC_TESTS_AVS_H
#define VEKVC_TESTS_AVS_H

#include <cstdlib>
#include <random>
#include <vector>

#include "bit_writer.h"

namespace vekvc_test {

// Run and level of the positive codes in order; a table's codes go up in pairs around the end of the block.
struct AvsTable {
    int order, endOfBlock;
    const char* pairs;  // two characters a pair: run and level, from 'A' on, 'A' being run 0 and level 1
};

// clang-format off
inline constexpr AvsTable kAvsLumaIntraTables[] = {
    {2, -1, "AABACADAEAFAGAHAIAJAKAABLAMANAOABBPAQAACRASACBTAUADBVAEBWA"},
    {2, 8, "AABAABCADAEAFAACBBGAHAIACBADJAKADBBCLAEBAEMAFBNAGBHBCCAFOA"},
    {2, 8, "AAABBAACCABBADDAAEEABCCBFAAFDBGABDAGCCEBHAFBAHIABEDCGBAIJA"},
    {2, 8, "AAABACBAADAEBBCAAFBCAGDAAHCBBDEAAIBEDBAJCCFAAKBFGAEBDCALCD"},
    {2, 6, "AAABACADAEAFBAAGAHBBAIAJCABCAKBDALAMBEDACBANBFAOAPCCEABGAQ"},
    {2, 0, "AAABACADAEAFAGAHAIAJBAAKALAMBBANAOBCAPCAAQBDARBEASATBFAUCB"},
    {2, 0, "AAABACADAEAFAGAHAIAJAKALAMANAOAPBAAQARASATAUBBAVAWAXAYBCAZ"},
};
inline constexpr AvsTable kAvsLumaInterTables[] = {
    {3, -1, "AABACADAEAFAGAHAIAJAKALAMAABNAOAPAQARASAACTAUABBVAWAXAYAZA"},
    {2, 2, "AABACADAEAFAABGAHAIAJABBKALAACMANACBOADBPAEBQAADFBRASAGBBC"},
    {2, 2, "AABAABCADAACBBEAFAGACBADHABCDBIAJAAEEBKAFBLACCAFBDMAGBDCNA"},
    {2, 2, "AAABBAACCABBADDAAEEABCCBFAAFDBGABDAGCCHAEBAHIADCFBBEJAAICD"},
    {2, 2, "AAABACBAADAEBBCAAFBCAGDAAHCBBDEAAIBEDBFAAJCCAKGABFDCEBALCD"},
    {2, 0, "AAABACADAEBAAFAGAHBBAICAAJBCAKBDALDACBAMBEANBFEAAOCCAPDBBG"},
    {2, 0, "AAABACADAEAFAGBAAHAIAJAKALBBAMCAANAOBCAPAQARBDASATCBDABEAU"},
};
inline constexpr AvsTable kAvsChromaTables[] = {
    {2, -1, "AABACADAEAFAGAABHAIAJAKALAMANAOAACPAQARASATAUAVABBWAXAYAAD"},
    {0, 0, "AABAABCADAEAFAACGAHABBIAJAKAADLAMANACBOADBAEBCPAQARAEBSATA"},
    {1, 2, "AAABBAACCAADBBDAAEEABCCBFAAFGADBAGHABDIACCEBFBAHJAKAAIBEDC"},
    {1, 0, "AAABACADBAAEBBAFCAAGBCAHDACBAIBDEAAJCCBEDBAKFAALGABFAMEBHA"},
    {0, 0, "AAABACADAEAFAGAHBAAIAJAKBBALAMBCANCAAOBDAPAQBEDACBARBFASEA"},
};
// clang-format on

struct AvsGroup {
    const AvsTable* tables;
    int count, escapeOrder;
    int climbs[6];  // the level above which the table is left
};
inline constexpr AvsGroup kAvsLumaIntra = {kAvsLumaIntraTables, 7, 1, {0, 1, 2, 4, 7, 10}},
                          kAvsLumaInter = {kAvsLumaInterTables, 7, 0, {0, 1, 2, 3, 6, 9}},
                          kAvsChroma = {kAvsChromaTables, 5, 0, {0, 1, 2, 4, 0, 0}};

struct AvsPair {
    int run, level;
};

class AvsBlockWriter {
  public:
    AvsBlockWriter(const AvsGroup& group, BitWriter& bits) : group_(group), bits_(bits) {}

    int table() const { return t_; }
    void put(AvsPair pair) {
        const AvsTable& table = group_.tables[t_];
        const int magnitude = std::abs(pair.level);
        int code = 0, listed = 0;
        bool found = false;
        for (const char* p = table.pairs; *p != 0; p += 2, code += 2) {
            if (code == table.endOfBlock) ++code;
            if (p[0] - 'A' != pair.run) continue;
            ++listed;
            found = p[1] - 'A' + 1 == magnitude;
            if (found) break;
        }
        if (found) {
            number(code + (pair.level < 0), table.order);
        } else {
            number(59 + 2 * pair.run + (pair.level > 0), table.order);
            number(magnitude - 1 - listed, group_.escapeOrder);
        }
        while (t_ < group_.count - 1 && magnitude > group_.climbs[t_]) ++t_;
    }
    void end() { number(group_.tables[t_].endOfBlock, group_.tables[t_].order); }
    // Any number in the k-th order Exp-Golomb code.
    void number(int value, int k) {
        int size = 0;
        while (((value + (1 << k)) >> size) > 1) ++size;
        bits_.put(0, size - k);
        bits_.put(static_cast<std::uint64_t>(value + (1 << k)), size + 1);
    }

  private:
    const AvsGroup& group_;
    BitWriter& bits_;
    int t_ = 0;
};

// A random block's pairs, in the order in which they are coded.
template <class Random>
std::vector<AvsPair> randomAvsPairs(Random& random) {
    std::vector<AvsPair> pairs;
    const unsigned density = static_cast<unsigned>(random() % 4), size = static_cast<unsigned>(random() % 4);
    for (int positions = 0;;) {
        AvsPair pair = {};
        if (density > 0)
            while (random() % (5 - density) == 0) ++pair.run;
        positions += pair.run + 1;
        if (positions > 64) break;
        const auto most = random() % 40 == 0 ? 32767u : size == 0 ? 1u : size == 1 ? 3u : size == 2 ? 12u : 40u;
        pair.level = static_cast<int>(1 + random() % most) * (random() % 2 == 0 ? 1 : -1);
        pairs.push_back(pair);
        if (random() % (density == 0 ? 90 : 8) == 0) break;
    }
    return pairs.empty() ? std::vector<AvsPair>{{63, 1}} : pairs;
}

}  // namespace vekvc_test

#endif
