#include <VoTestSupport.h>
#include <vo/line/Values.h>
#include <vo/screen/TableOutput.h>

using namespace vo::tool;

TEST(ParseBytes, TakesDigitsAndOneSuffixOnly)
{
    struct
    {
        const char* text;
        std::uint64_t bytes;
    } const rows[] = {{"0", 0},
                      {"65536", 65536},
                      {"4K", 4096},
                      {"4k", 4096},
                      {"4M", 4194304},
                      {"2G", 2147483648},
                      {"18446744073709551615", 18446744073709551615u},
                      {"17179869183G", 18446744072635809792u}};
    for (const auto& row : rows)
        EXPECT_EQ(ParseBytes(row.text), row.bytes) << row.text;
    for (const char* text : {"", "K", "-1", "+1", "4 K", " 4", "4KB", "4T", "0x10", "1.5M", "18446744073709551616",
                             "17179869184G", "4\xc2\xa0K"})
        EXPECT_FALSE(ParseBytes(text)) << text;
}

TEST(ParseInteger, TakesTheWholeText)
{
    EXPECT_EQ(ParseInteger("-12"), -12);
    for (const char* text : {"", "1a", "1.0", " 1", "9223372036854775808"})
        EXPECT_FALSE(ParseInteger(text)) << text;
}

TEST(ParseRelease, ReadsTheBuildTypeInTheThirdOfFourPlaces)
{
    const auto number = ParseRelease("4.2.1.17");
    ASSERT_TRUE(number);
    EXPECT_EQ(number->version.toString().toStdString(), "4.2.1.17");
    EXPECT_TRUE(number->hasBuildType);
    EXPECT_EQ(number->version.revision(), 17);
    EXPECT_EQ(ReleaseText(number->version).toStdString(), "4.2.17 (build type 1)");
}

TEST(ParseRelease, FillsMissingPartsWithZero)
{
    struct
    {
        const char* text;
        const char* shown;
    } const rows[] = {{"4", "4.0.0"}, {"4.2", "4.2.0"}, {"4.2.17", "4.2.17"}, {"0.0.0", "0.0.0"}, {"1.2.0.3", "1.2.3"}};
    for (const auto& row : rows) {
        const auto number = ParseRelease(row.text);
        ASSERT_TRUE(number) << row.text;
        EXPECT_EQ(ReleaseText(number->version).toStdString(), row.shown) << row.text;
    }
}

TEST(ParseRelease, RefusesWhatIsNoNumber)
{
    for (const char* text : {"", ".", "1.", ".1", "1..2", "-1.2.3", "1.-2.3", "1.2.3.4.5", "v1", "1.2.x", " 1", "1.2 ",
                             "2147483648", "99999999999.1"})
        EXPECT_FALSE(ParseRelease(text)) << text;
}

TEST(TimeText, HasItsUnits)
{
    for (const auto& [seconds, text] :
         {std::pair(0.0, "0.00 s"), std::pair(-5.0, "0.00 s"), std::pair(59.99, "59.99 s"),
          std::pair(59.999, "1 min 0 s"), std::pair(3599.0, "59 min 59 s"), std::pair(3599.9, "1 h 0 min"),
          std::pair(37815.0, "10 h 30 min")})
        EXPECT_EQ(TimeText(seconds).toStdString(), text);
    EXPECT_EQ(TimeText(7, 0).toStdString(), "7 s");
}

TEST(SheetName, AFilesNameBecomesASheetName)
{
    for (const auto& [name, sheet] :
         {std::pair("a:b/c[1]'", "a_b_c_1__"), std::pair("", "Sheet"), std::pair(" ", "Sheet"),
          std::pair("0123456789012345678901234567890123", "0123456789012345678901234567890")})
        EXPECT_EQ(SheetName(name, 0).toStdString(), sheet);
    EXPECT_EQ(SheetName("0123456789012345678901234567890123", 1).toStdString(), "012345678901234567890123456 (2)");
}
