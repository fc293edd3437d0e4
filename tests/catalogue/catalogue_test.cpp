// Every row of the catalogue against the promises that hold for all exports. VEKVC_SEED sets the seed (it is printed),
// VEKVC_ROUNDS the number of calls per row and test.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "engine.h"

namespace catalogue {

void PrintTo(const Row& row, std::ostream* os) { *os << row.name; }

namespace {

std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

}  // namespace

std::uint64_t seed() { return fromEnvironment("VEKVC_SEED", 1); }

namespace {

class EveryExport : public testing::TestWithParam<Row> {
  protected:
    // The same calls whether all rows run or one.
    Random random{seed() * 1000003 + std::hash<std::string>{}(GetParam().name)};
    const int rounds = static_cast<int>(GetParam().rounds > 0 ? static_cast<std::uint64_t>(GetParam().rounds)
                                                              : fromEnvironment("VEKVC_ROUNDS", 2000));

    // The outcome in the plain variant is the law for all others; garbage around the operands differs between the runs.
    void compareVariants(Instance& instance) {
        const Outcome law = instance.run(variants().front().find(GetParam().name));
        ASSERT_EQ(law.fault, "") << "px: " << instance.describe();
        ASSERT_EQ(law.strayWrite, "") << "px: " << instance.describe();
        for (std::size_t v = 1; v < variants().size(); ++v) {
            instance.scramble(random);
            const Outcome fast = instance.run(variants()[v].find(GetParam().name));
            const std::string what = variants()[v].code + ": " + instance.describe();
            ASSERT_EQ(fast.fault, "") << what;
            ASSERT_EQ(fast.strayWrite, "") << what;
            ASSERT_EQ(fast.status, law.status) << what;
            ASSERT_EQ(fast.movedOn, law.movedOn) << what;
            ASSERT_TRUE(fast.written == law.written) << what << ": results differ from px";
        }
    }
};

TEST_P(EveryExport, AgreesInAllVariants) {
    for (int i = 0; i < rounds && !HasFatalFailure(); ++i) {
        Instance instance(GetParam(), Layout::Free, random);
        compareVariants(instance);
    }
}

TEST_P(EveryExport, StaysInsideItsOperands) {
    for (int i = 0; i < rounds / 2 && !HasFatalFailure(); ++i) {
        Instance instance(GetParam(), i % 2 == 0 ? Layout::TopLeft : Layout::BottomRight, random);
        compareVariants(instance);
    }
}

// Each failing check decides the status although all later ones fail too; nothing is written and nothing is read.
TEST_P(EveryExport, ChecksItsArgumentsInOrder) {
    const std::size_t groups = Instance(GetParam(), Layout::TopLeft, random).failures().size();
    for (std::size_t g = 0; g < groups; ++g)
        for (std::size_t f = 0;; ++f) {
            Instance instance(GetParam(), f % 2 == 0 ? Layout::TopLeft : Layout::BottomRight, random);
            const auto failures = instance.failures();
            if (f == failures[g].size()) break;
            for (std::size_t later = g + 1; later < failures.size() && random() % 2 == 0; ++later)
                instance.apply(failures[later][random() % failures[later].size()]);
            instance.apply(failures[g][f]);
            for (const auto& variant : variants()) {
                const Outcome outcome = instance.run(variant.find(GetParam().name));
                const std::string what = variant.code + ": " + failures[g][f].what + ": " + instance.describe();
                EXPECT_EQ(outcome.fault, "") << what;
                EXPECT_EQ(outcome.status, failures[g][f].status) << what;
                EXPECT_TRUE(outcome.wroteNothing) << what;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryExport, testing::ValuesIn(rows()),
                         [](const testing::TestParamInfo<Row>& row) { return row.param.name; });

// Exports that no row can describe, with the test that covers them.
const std::set<std::string> kElsewhere = {
    "vekvcGetLibVersion",  // tests/version_test.cpp
    // tests/vlc/: they give and take allocated memory
    "vekiCreateRLEncodeTable",
    "vekiHuffmanRunLevelTableInitAlloc_32s",
    "vekiHuffmanTableFree_32s",
    "vekiHuffmanTableInitAlloc_32s",
    // tests/dv/segment_test.cpp: so do these
    "vekiHuffmanTableFree_DV_32s",
    "vekiHuffmanTableInitAlloc_DV_32s",
    // tests/processing/filters_test.cpp: and these
    "vekiDeinterlaceBlendFree_8u_C1",
    "vekiDeinterlaceBlendInitAlloc_8u_C1",
    "vekiFilterDenoiseAdaptiveFree_8u_C1",
    "vekiFilterDenoiseAdaptiveInitAlloc_8u_C1",
    "vekiFilterDenoiseMosquitoFree_8u_C1",
    "vekiFilterDenoiseMosquitoInitAlloc_8u_C1",
};

TEST(Catalogue, HasOneRowForEveryExport) {
    std::multiset<std::string> described;
    for (const auto& row : rows()) described.insert(row.name);
    std::ifstream families(VEKVC_SOURCE_DIR "/src/families.txt");
    ASSERT_TRUE(families);
    for (std::string family; std::getline(families, family);) {
        std::ifstream list(std::string(VEKVC_SOURCE_DIR) + "/src/" + family + "/exports.txt");
        ASSERT_TRUE(list) << family;
        for (std::string name; std::getline(list, name);)
            EXPECT_EQ(described.count(name), kElsewhere.count(name) == 0 ? 1u : 0u) << name;
    }
}

}  // namespace
}  // namespace catalogue

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    std::printf("seed %llu, variants:", static_cast<unsigned long long>(catalogue::seed()));
    for (const auto& variant : catalogue::variants()) std::printf(" %s", variant.code.c_str());
    std::printf("\n");
    return RUN_ALL_TESTS();
}
