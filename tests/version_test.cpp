// The version record, and that the variant under test is the one that the run is meant for.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "vekvc.h"

TEST(Version, RecordIsComplete) {
    const VekLibraryVersion* version = vekvcGetLibVersion();
    ASSERT_NE(version, nullptr);
    EXPECT_EQ(version, vekvcGetLibVersion());
    EXPECT_EQ(version->versionMajor, 6);
    EXPECT_EQ(version->versionMinor, 1);
    EXPECT_EQ(version->buildMajor, 137);
    EXPECT_EQ(version->buildNumber, 779);
    EXPECT_STREQ(version->versionText, "6.1 build 137.36");
    EXPECT_STREQ(version->buildDate, "Sep 29 2009");
    EXPECT_EQ(version->cpuCode[2], 0);
    EXPECT_EQ(version->cpuCode[3], 0);
    EXPECT_EQ(std::string(version->libraryName), "libvekvc-" + std::string(version->cpuCode) + ".so.6.1");
    if (const char* expected = std::getenv("VEKVC_EXPECTED_VARIANT")) {
        EXPECT_STREQ(version->cpuCode, expected);
    }
}
