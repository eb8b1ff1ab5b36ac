#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>
#include <VoTestSupport.h>

#include <QtCore/QUrl>

TEST(VoUrl, KeepsItsTextWithoutTheBlanksAround)
{
    EXPECT_EQ(VoUrl(" http://Host/a b \n").toString().toStdString(), "http://Host/a b");
    EXPECT_TRUE(VoUrl(" ").isNull());
    EXPECT_EQ(VoUrl(QUrl(QStringLiteral("http://h/a b"))).toString().toStdString(), "http://h/a%20b");
    EXPECT_EQ(VoUrl::Deserialize(VoUrl::Serialize(VoUrl("x:y"))).toString().toStdString(), "x:y");
}

TEST(VoUrl, HasParts)
{
    const VoUrl url("HTTPS://User@Host.Example:8443/dir/a%20file.xml?q=1#f");
    EXPECT_EQ(url.scheme().toStdString(), "https");
    EXPECT_EQ(url.host().toStdString(), "host.example");
    EXPECT_EQ(url.port(), 8443);
    EXPECT_EQ(url.path().toStdString(), "/dir/a file.xml");
    EXPECT_EQ(url.filename().toStdString(), "a file.xml");
    EXPECT_EQ(VoUrl("http://h").port(80), 80);
    EXPECT_EQ(url.toQUrl().query().toStdString(), "q=1");
}

TEST(VoUrl, IsValidWithSchemeAndHost)
{
    for (const char* text : {"http://h", "https://h/x y", "file:///tmp/x"})
        EXPECT_TRUE(VoUrl(text).isValid()) << text;
    for (const char* text : {"", "h/x", "http://", "http:///x", "http://[", "//h/x"})
        EXPECT_FALSE(VoUrl(text).isValid()) << text;
}

TEST(VoUrl, ParentEndsWithTheLastSlashOfThePath)
{
    const std::pair<const char*, const char*> rows[] = {
        {"http://h/a/b.xml", "http://h/a/"},
        {"http://h/a/", "http://h/a/"},
        {"http://h", "http://h/"},
        {"http://h?q=/x/y", "http://h/"},
        {"http://h/a?q=/x#/y", "http://h/"},
        {"http://h/a/b#f", "http://h/a/"},
        {"a/b", "a/"},
        {"a", ""},
        {"", ""},
    };
    for (const auto& [text, parent] : rows)
        EXPECT_EQ(VoUrl(text).parent().toString().toStdString(), parent) << text;
}

TEST(VoUrl, AppendsPathsPieceByPieceAndEncoded)
{
    const std::pair<const char*, const char*> rows[] = {
        {"chunks\\{a-b}", "http://h/r/chunks/%7Ba-b%7D"},
        {"a b#c?d%e", "http://h/r/a%20b%23c%3Fd%25e"},
        {"\xc3\xa9", "http://h/r/%C3%A9"},
        {"dir\\", "http://h/r/dir/"},
        {"..x\\.y", "http://h/r/..x/.y"},
    };
    for (const char* base : {"http://h/r/", "http://h/r", "http://h/r/?q#f"})
        for (const auto& [path, url] : rows)
            EXPECT_EQ(VoUrl(base).appended(path).toString().toStdString(), url) << base << " and " << path;
}

TEST(VoUrl, WhatIsAppendedDecodesToTheSamePath)
{
    std::string all;
    for (int byte = 1; byte < 128; ++byte)
        if (std::string("\\/:").find(static_cast<char>(byte)) == std::string::npos)
            all += static_cast<char>(byte);
    const VoUrl url = VoUrl("http://h/r").appended(VoFilePath::CreateUnchecked(VoString(all)));
    EXPECT_EQ(url.toQUrl().path(QUrl::FullyDecoded).toStdString(), "/r/" + all);
}

TEST(VoUrl, NothingAppendedLeavesTheFolderOrTheHost)
{
    for (const char* path :
         {"", "\\x", "\\\\evil\\x", "C:\\x", "http://evil/x", "..\\x", "a\\..\\x", "a\\..", ".", "a\\.\\b"})
        EXPECT_THROW_MSG(VoUrl("http://h/r/").appended(path), VoInvalidPathFileException, "Invalid path: ") << path;
}
