#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/SafePath.h>
#include <VoTestSupport.h>

using vo::detail::SafeName;
using vo::detail::SafeRelativePath;

TEST(SafePath, IdentifiersThatAreFileNamesEverywhereAreAccepted)
{
    for (const char* name : {"a", "{f81d4fae-7dec-41d0-a765-00a0c91e6bf6}", "f81d4fae", "com", "com10", "lpt", "consul",
                             "a.b", "packages2", "x packages", "\xc3\xa9", "a b", "nulls", "-", "#"})
        EXPECT_TRUE(SafeName(VoString(name))) << name;
    EXPECT_TRUE(SafeName(VoString(std::string(128, 'x'))));
}

TEST(SafePath, IdentifiersThatWouldHarmSomewhereAreRefused)
{
    for (const char* name : {"",       ".",       "..",     "a.",          ".a",   " a",       "a ",         "a\\b",
                             "a/b",    "C:x",     "a*",     "a?",          "a\"",  "a<b",      "a>b",        "a|b",
                             "a\nb",   "a\x7f",   "con",    "CON",         "nul.", "NUL.txt",  "aux.tar.gz", "com1",
                             "LPT9.x", "com1 .x", "conin$", "com\xc2\xb9", "prn ", "packages", "PackAges"})
        EXPECT_FALSE(SafeName(VoString(name))) << name;
    EXPECT_FALSE(SafeName(VoString(std::string(129, 'x'))));
    EXPECT_FALSE(SafeName(VoString(std::string("a\0b", 3))));
}

TEST(SafePath, PathsThatStayBelowTheirDirectoryAreAccepted)
{
    for (const char* path : {"a", "a\\b", "a/b\\c.txt", ".hidden", "..x\\y", " leading", "...x", "{id}\\x", "packages"})
        EXPECT_TRUE(SafeRelativePath(VoString(path))) << path;
    EXPECT_TRUE(SafeRelativePath(VoString(std::string(260, 'x'))));
}

TEST(SafePath, PathsThatCouldLeaveTheirDirectoryAreRefused)
{
    for (const char* path :
         {"",        "\\",     "/etc/passwd", "\\etc\\passwd", "\\\\srv\\x", "C:\\x",     "C:x",   "a:b",
          "..",      "..\\x",  "../x",        "a\\..\\b",      "a\\..",      "a/../../b", ".",     ".\\a",
          "a\\.",    "a\\\\b", "a//b",        "a\\/b",         "a\\",        "a/",        "a.\\b", "a \\b",
          "..  \\x", ".. \\x", "a\\nul",      "con.txt\\a",    "a\nb",       "a\x01",     "a\\b ", "...\\x"})
        EXPECT_FALSE(SafeRelativePath(VoString(path))) << path;
    EXPECT_FALSE(SafeRelativePath(VoString(std::string(261, 'x'))));
    EXPECT_FALSE(SafeRelativePath(VoString(std::string("a\0b", 3))));
    EXPECT_FALSE(SafeRelativePath(VoFilePath()));
    EXPECT_FALSE(SafeRelativePath(VoFilePath("/tmp/x")));
}

// Whatever passes must land below its directory, in the library's paths as on disk.
TEST(SafePath, AcceptedPathsSurviveNormalisationUnchanged)
{
    const std::string alphabet = "a.\\/ :";
    std::string path;
    for (int number = 0; number < 6 * 6 * 6 * 6 * 6; ++number) {
        path.clear();
        for (int rest = number; rest != 0; rest /= 6)
            path += alphabet[static_cast<std::size_t>(rest % 6)];
        if (!SafeRelativePath(VoString(path)) || path.front() == ' ')
            continue;
        std::string backslashes = path;
        for (char& byte : backslashes)
            if (byte == '/')
                byte = '\\';
        ASSERT_EQ(VoFilePath("C:\\base\\").appended(VoFilePath(VoString(path))).path().toStdString(),
                  "C:\\base\\" + backslashes);
    }
}
