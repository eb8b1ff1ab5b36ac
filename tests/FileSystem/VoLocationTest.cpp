#include <VoTestSupport.h>

#include <FileSystem/VoLocation.h>

TEST(VoLocation, ATextIsAUrlOrAPathAndComesBackAsIs)
{
    struct Row
    {
        const char* text;
        bool isUrl;
        const char* shown;
        const char* beside; // "a b\\c"
    };
    for (const Row& row : {Row{"", false, "", "a b\\c"},
                           {"d.xml", false, "d.xml", "a b\\c"},
                           {"\\srv\\u@h\\d.xml", false, "\\srv\\u@h\\d.xml", "\\srv\\u@h\\a b\\c"},
                           {"https://h/x/d.xml?q=/y", true, "https://h/x/d.xml?q=/y", "https://h/x/a%20b/c"},
                           {"https://u:p@h:8/d.xml", true, "https://h:8/d.xml", "https://u:p@h:8/a%20b/c"}}) {
        SCOPED_TRACE(row.text);
        const VoLocation location = VoLocation::FromText(row.text);
        EXPECT_EQ(location.isUrl(), row.isUrl);
        EXPECT_EQ(location.isNull(), row.text[0] == 0);
        EXPECT_EQ(location.toString(), row.text);
        EXPECT_EQ(location.withoutUser().toString(), row.shown);
        EXPECT_EQ(location.beside("a b\\c").toString(), row.beside);
        EXPECT_EQ(VoLocation::Deserialize(VoLocation::Serialize(location)), location);
        std::ostringstream stream;
        stream << location;
        EXPECT_EQ(stream.str(), row.text);
    }
    EXPECT_THROW_MSG(VoLocation::FromText("http://"), VoInvalidParameterException, "Invalid URL: http://");
}

TEST(VoLocation, AFileIsNoUrlAndAMovedFromOneIsNull)
{
    VoLocation file = VoFilePath("x");
    VoLocation url = VoUrl("http://x");
    EXPECT_NE(file, url);
    EXPECT_EQ(file, VoLocation::FromText("X"));
    EXPECT_EQ(std::hash<VoLocation>()(file), std::hash<VoLocation>()(VoLocation::FromText("X")));
    EXPECT_THROW_MSG(url.file(), VoInvalidCallException, "Not a file: http://x");
    EXPECT_THROW_MSG(file.url(), VoInvalidCallException, "Not a URL: x");
    const VoLocation moved = std::move(url);
    EXPECT_EQ(moved.url(), VoUrl("http://x"));
    EXPECT_TRUE(url.isNull());
    EXPECT_EQ(url, VoLocation());
}
