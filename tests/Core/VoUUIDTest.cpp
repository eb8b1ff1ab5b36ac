#include <Core/VoHostTypes.h>
#include <Core/VoUUID.h>
#include <VoTestSupport.h>

#include <regex>

namespace {

const std::regex RandomIdentifier("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");

std::string Text(const VoUUID& uuid)
{
    return uuid.toString().toStdString();
}

} // namespace

TEST(VoUUID, NewIdentifiersAreDistinctRandomOnesInTheFormThatIsAskedFor)
{
    std::set<std::string> texts;
    for (int i = 0; i < 1000; ++i) {
        // Every format but the default means without braces.
        const std::string bare = Text(VoUUID(static_cast<VoUUID::Format>(i % 9 - 1)));
        EXPECT_TRUE(std::regex_match(bare, RandomIdentifier)) << bare;
        for (const std::string& braced : {Text(VoUUID()), sp_GetGUID().toStdString()}) {
            EXPECT_TRUE(std::regex_match(braced.substr(1, 36), RandomIdentifier)) << braced;
            EXPECT_EQ(braced.front() + braced.substr(37), "{}");
            texts.insert(braced.substr(1, 36));
        }
        texts.insert(bare);
    }
    EXPECT_EQ(texts.size(), 3000U);
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
    EXPECT_FALSE(lower == VoUUID(upper) || lower == upper || upper == lower || lower == "AB-C" || "AB-C" == lower);
    EXPECT_TRUE(lower != upper && upper != lower && "AB-C" != lower);
    EXPECT_TRUE(lower == VoString("ab-c") && VoString("ab-c") == lower && "ab-c" == lower);
    EXPECT_FALSE(lower != "ab-c");
}

TEST(VoUUID, OrderIsThatOfTheBytes)
{
    EXPECT_LT(VoUUID("B"), VoUUID("a"));
    EXPECT_FALSE(VoUUID("a") < VoUUID("B"));
    EXPECT_FALSE(VoUUID("a") < VoUUID("a"));
}

TEST(VoUUID, ConvertsToTheHostsStringAndPrintsItsText)
{
    const YString host = VoUUID("abc");
    EXPECT_STREQ(host.c_str(), "abc");
    std::ostringstream stream;
    stream << VoUUID("abc");
    EXPECT_EQ(stream.str(), "abc");
}
