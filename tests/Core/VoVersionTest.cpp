#include <Core/VoVersion.h>
#include <VoTestSupport.h>

#include <tuple>
#include <unordered_set>

namespace {

using Parts = std::tuple<int, int, int, int>; // major, minor, revision, build

Parts PartsOf(const VoVersion& version)
{
    return {version.major(), version.minor(), version.revision(), static_cast<int>(version.build())};
}

VoVersion Version(int major, int minor, int revision, int build = 0)
{
    return VoVersion(major, minor, revision, static_cast<VoVersion::BuildType>(build));
}

} // namespace

TEST(VoVersion, AnyTextIsRead)
{
    struct
    {
        const char* text;
        Parts parts;
    } const rows[] = {
        {"", {0, 0, 0, 0}},
        {"  \t", {0, 0, 0, 0}},
        {"5", {5, 0, 0, 0}},
        {"1.2.3", {1, 2, 0, 3}},
        {"4.2.1.17", {4, 2, 17, 1}},
        {"1.2.3.4.5", {1, 2, 4, 3}},
        {" 1. 2 .3.4 ", {1, 2, 4, 3}},
        {".", {0, 0, 0, 0}},
        {"...7", {0, 0, 7, 0}},
        {"1..2", {1, 0, 0, 2}},
        {"-1.2.3.4", {-1, 2, 4, 3}},
        {"+1.2x.y3.4", {1, 2, 4, 0}},
        {"a.b", {0, 0, 0, 0}},
        {"1,5.2", {1, 2, 0, 0}},
        {"\xc3\xa9.2", {0, 2, 0, 0}},
        {"2147483647.0.0.1", {2147483647, 0, 1, 0}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PartsOf(VoVersion::Deserialize(row.text)), row.parts) << '"' << row.text << '"';
}

TEST(VoVersion, ATextOfManyDotsIsReadAtOnce)
{
    EXPECT_EQ(PartsOf(VoVersion::Deserialize(VoString("7" + std::string(1000000, '.')))), Parts(7, 0, 0, 0));
}

TEST(VoVersion, WhatIsWrittenIsReadBack)
{
    const int numbers[] = {0, 1, 9, 10, 1000000, -3, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    for (const int a : numbers)
        for (const int b : numbers) {
            const VoVersion version = Version(a, b, b, a);
            EXPECT_EQ(PartsOf(VoVersion::Deserialize(VoVersion::Serialize(version))), PartsOf(version)) << version;
        }
}

TEST(VoVersion, OrderIsThatOfMajorMinorAndRevision)
{
    const VoVersion ascending[] = {Version(-1, 9, 9), Version(0, 0, 0), Version(0, 0, 1), Version(0, 2, 0),
                                   Version(1, 0, 0),  Version(1, 0, 9), Version(1, 1, 0), Version(10, 0, 0)};
    for (const VoVersion& a : ascending)
        for (const VoVersion& b : ascending) {
            const int order = &a < &b ? -1 : &a > &b ? 1 : 0;
            EXPECT_EQ(a.compare(b), order) << a << " and " << b;
            EXPECT_EQ(a == b, order == 0);
            EXPECT_EQ(a != b, order != 0);
            EXPECT_EQ(a < b, order < 0);
            EXPECT_EQ(a <= b, order <= 0);
            EXPECT_EQ(a > b, order > 0);
            EXPECT_EQ(a >= b, order >= 0);
        }
}

TEST(VoVersion, BuildTypesDoNotCountInComparisonsAndHashes)
{
    const std::unordered_set<VoVersion> set = {VoVersion(1, 2, 3, VoVersion::Release),
                                               VoVersion(1, 2, 3, VoVersion::Development), Version(1, 3, 2)};
    EXPECT_EQ(set.size(), 2U);
    EXPECT_TRUE(VoVersion(1, 2, 3, VoVersion::Alpha) >= VoVersion(1, 2, 3, VoVersion::Beta));
    EXPECT_TRUE(VoVersion(1, 2, 3, VoVersion::Alpha) <= VoVersion(1, 2, 3, VoVersion::Beta));
}

TEST(VoVersion, PartsAreSetAndIncrementedOneByOne)
{
    VoVersion version;
    version.setMajor(4).setMinor(2).setRevision(17).setBuild(VoVersion::Beta);
    EXPECT_EQ(version.toString().toStdString(), "4.2.1.17") << "the build type comes before the revision";
    EXPECT_EQ(PartsOf(Version(1, 4, 7, 2).incrementMajor()), Parts(2, 4, 7, 2));
    EXPECT_EQ(PartsOf(Version(1, 4, 7, 2).incrementMinor()), Parts(1, 5, 7, 2));
    EXPECT_EQ(PartsOf(Version(1, 4, 7, 2).incrementRevision()), Parts(1, 4, 8, 2));
    EXPECT_EQ(Version(std::numeric_limits<int>::max(), 0, 0).incrementMajor().major(), std::numeric_limits<int>::max());
}
