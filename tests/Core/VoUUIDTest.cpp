#include <Core/VoHostTypes.h>
#include <Core/VoUUID.h>
#include <VoTestSupport.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <unordered_set>

namespace {

const std::regex RandomIdentifier("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");

std::string Text(const VoUUID& uuid)
{
    return uuid.toString().toStdString();
}

} // namespace

TEST(VoUUID, NewIdentifiersAreRandomOnesInBraces)
{
    const std::string text = Text(VoUUID());
    ASSERT_EQ(text.size(), 38U);
    EXPECT_EQ(text.front(), '{');
    EXPECT_EQ(text.back(), '}');
    EXPECT_TRUE(std::regex_match(text.substr(1, 36), RandomIdentifier)) << text;
}

TEST(VoUUID, EveryFormatMeansWithoutBraces)
{
    for (const int format : {0, 1, 7, -1})
        EXPECT_TRUE(std::regex_match(Text(VoUUID(static_cast<VoUUID::Format>(format))), RandomIdentifier)) << format;
}

TEST(VoUUID, NewIdentifiersDiffer)
{
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.insert(Text(VoUUID(VoUUID::WithoutBraces)));
    EXPECT_EQ(texts.size(), 1000U);
}

TEST(VoUUID, TakesAnyTextAsItIs)
{
    for (const char* text : {"", " ", "{A}", "no identifier at all", "\xff\xfe"}) {
        EXPECT_EQ(Text(VoUUID(text)), text);
        EXPECT_EQ(Text(VoUUID(VoString(text))), text);
        EXPECT_EQ(Text(VoUUID(YString(text))), text);
        EXPECT_EQ(Text(VoUUID::Deserialize(VoUUID::Serialize(VoUUID(text)))), text);
    }
    EXPECT_EQ(Text(VoUUID(static_cast<const char*>(nullptr))), "");
}

TEST(VoUUID, CaseCountsWhicheverOperandComesFirst)
{
    const VoUUID lower("ab-c");
    const VoString upper("AB-C");
    EXPECT_FALSE(lower == VoUUID(upper));
    EXPECT_FALSE(lower == upper);
    EXPECT_FALSE(upper == lower);
    EXPECT_FALSE(lower == "AB-C");
    EXPECT_FALSE("AB-C" == lower);
    EXPECT_TRUE(lower != upper);
    EXPECT_TRUE(upper != lower);
    EXPECT_TRUE("AB-C" != lower);

    EXPECT_TRUE(lower == VoString("ab-c"));
    EXPECT_TRUE(VoString("ab-c") == lower);
    EXPECT_TRUE("ab-c" == lower);
    EXPECT_FALSE(lower != "ab-c");
}

TEST(VoUUID, OrderIsThatOfTheBytes)
{
    EXPECT_LT(VoUUID("B"), VoUUID("a"));
    EXPECT_FALSE(VoUUID("a") < VoUUID("B"));
    EXPECT_FALSE(VoUUID("a") < VoUUID("a"));
}

TEST(VoUUID, HashesKeepIdentifiersOfDifferentCaseApart)
{
    const std::unordered_set<VoUUID> set = {VoUUID("a"), VoUUID("A"), VoUUID("a")};
    EXPECT_EQ(set.size(), 2U);
}

TEST(VoUUID, AMovedFromIdentifierIsEmptyAndCanBeAssigned)
{
    VoUUID from("abc");
    const VoUUID to(std::move(from));
    EXPECT_EQ(Text(to), "abc");
    EXPECT_EQ(Text(from), "");
    from = to;
    EXPECT_EQ(Text(from), "abc");
}

TEST(VoUUID, ConvertsToTheHostsStringAndPrintsItsText)
{
    const YString host = VoUUID("abc");
    EXPECT_STREQ(host.c_str(), "abc");
    std::ostringstream stream;
    stream << VoUUID("abc");
    EXPECT_EQ(stream.str(), "abc");
}
