#include <FileSystem/VoPath.h>
#include <FileSystem/VoPathException.h>
#include <VoTestSupport.h>

namespace {

std::string Text(const VoFilePath& path)
{
    return path.path().toStdString();
}

std::string Text(const VoStringView& view)
{
    return view.toString().toStdString();
}

} // namespace

TEST(VoFilePath, NameIsSplitAtItsLastDot)
{
    struct
    {
        const char* path;
        const char* filename;
        const char* stem;
        const char* extension;
    } const rows[] = {
        {"C:\\a\\x.txt", "x.txt", "x", "txt"},
        {"a\\x.tar.gz", "x.tar.gz", "x.tar", "gz"},
        {"x", "x", "x", ""},
        {"C:\\a.b\\x", "x", "x", ""},
        {".profile", ".profile", ".profile", ""},
        {".a.b", ".a.b", ".a", "b"},
        {"a.", "a.", "a", ""},
        {".", ".", ".", ""},
        {"..", "..", "..", ""},
        {"C:\\a\\", "", "", ""},
        {"", "", "", ""},
        {"a\\..", "..", "..", ""},
    };
    for (const auto& row : rows) {
        const VoFilePath path(row.path);
        EXPECT_EQ(Text(path.filename()), row.filename) << row.path;
        EXPECT_EQ(Text(path.stem()), row.stem) << row.path;
        EXPECT_EQ(Text(path.extension()), row.extension) << row.path;
    }
}

TEST(VoFilePath, TakesAnyTextAndIsLongestAt260Bytes)
{
    EXPECT_THROW_MSG(VoFilePath("C:\\a:b\\x").parent(), VoInvalidPathException, "Invalid : in path name");
    EXPECT_EQ(Text(VoFilePath::CreateUnchecked(" a//b ")), " a//b ");
    EXPECT_TRUE(VoFilePath(VoString('x', 260)).validLength());
    EXPECT_FALSE(VoFilePath(VoString('x', 261)).validLength());
    std::string accents;
    for (int i = 0; i < 131; ++i)
        accents += "\xc3\xa9";
    const VoFilePath path{VoString(accents)};
    EXPECT_FALSE(path.validLength()) << "bytes count, not characters";
    EXPECT_EQ(VoPathSizeFileException(path).message().toStdString(),
              "Path exceeds maximum length by 2 characters for: " + accents);
}

TEST(VoFilePath, BecomesAbsoluteAgainstADirectoryOrTheDirectoryOfAFile)
{
    EXPECT_EQ(Text(VoFilePath("x").absolute("C:\\a\\")), "C:\\a\\x");
    EXPECT_EQ(Text(VoFilePath("x").absolute("C:\\a\\b.txt")), "C:\\a\\x");
    EXPECT_EQ(Text(VoFilePath("..\\x").absolute("C:\\a\\b\\")), "C:\\a\\x");
    EXPECT_EQ(Text(VoFilePath("x").absolute("b.txt")), "x");
    for (const char* rooted : {"D:\\x", "\\tmp\\x", "\\\\srv\\x"})
        EXPECT_EQ(Text(VoFilePath(rooted).absolute("C:\\a\\")), rooted);
    EXPECT_THROW_MSG(VoFilePath("..\\..\\x").absolute("C:\\a\\"), VoPathException,
                     "Unable to resolve as relative path is invalid");
    EXPECT_EQ(Text(VoFilePath::Resolve("/x/ ", "C:\\a\\")), "\\x\\");
    EXPECT_EQ(Text(VoFilePath::Resolve("sub//x", "C:\\a\\")), "C:\\a\\sub\\x");
}

TEST(VoFilePath, IsSeenFromABase)
{
    struct
    {
        const char* path;
        const char* base;
        const char* relative;
    } const rows[] = {
        {"C:\\a\\b\\x", "C:\\a\\", "b\\x"},
        {"C:\\A\\B\\x", "c:\\a\\b\\", "x"},
        {"C:\\a\\x", "C:\\a\\b\\c\\", "..\\..\\x"},
        {"C:\\a\\x", "C:\\a\\list.xml", "x"},
        {"C:\\a\\b\\", "C:\\a\\", "b\\"},
        {"C:\\a\\", "C:\\a\\", ""},
        {"C:\\a", "C:\\a\\b\\", "..\\..\\a"},
        {"C:\\x", "D:\\", "C:\\x"},
        {"\\tmp\\x", "tmp\\", "\\tmp\\x"},
        {"tmp\\x", "\\tmp\\", "tmp\\x"},
        {"\\\\srv\\x", "\\\\other\\", "\\\\srv\\x"},
        {"\\tmp\\a\\x", "\\tmp\\b\\", "..\\a\\x"},
        {"b", "..\\a\\", "b"},
        {"a\\x", "", "a\\x"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Text(VoFilePath(row.path).relative(row.base)), row.relative) << row.path << " from " << row.base;
}

TEST(VoFilePath, RelativeAndAbsoluteAreEachOthersInverse)
{
    const char* const directories[] = {"\\", "\\a\\", "\\a\\b\\", "\\a\\c\\d\\", "\\e\\"};
    for (const char* base : directories)
        for (const char* directory : directories) {
            const VoFilePath path = VoDirectoryPath(directory).file("x.txt");
            EXPECT_EQ(Text(path.relative(base).absolute(base)), Text(path)) << path << " from " << base;
        }
}

TEST(VoFilePath, IsAncestorOfWhatLiesBelowPieceByPiece)
{
    struct
    {
        const char* ancestor;
        const char* path;
        bool is;
    } const rows[] = {
        {"C:\\ab\\", "C:\\ab\\x", true},    {"C:\\AB\\", "c:\\ab\\c\\x", true},
        {"C:\\ab\\", "C:\\abc\\x", false},  {"C:\\ab\\", "C:\\ab\\", false},
        {"C:\\ab", "C:\\ab\\x", false},     {"\\", "\\tmp\\", true},
        {"\\", "\\\\srv\\x", false},        {"", "x", false},
        {"C:\\ab\\c\\", "C:\\ab\\", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(VoFilePath(row.ancestor).isAncestor(row.path), row.is) << row.ancestor << " of " << row.path;
}

TEST(VoFilePath, AppendsToDirectoriesOnly)
{
    EXPECT_EQ(Text(VoFilePath("a\\").appended("b\\x")), "a\\b\\x");
    EXPECT_EQ(Text(VoFilePath().appended("C:\\x")), "C:\\x");
    EXPECT_THROW_MSG(VoFilePath("a").appended("b"), VoInvalidPathFileException, "Cannot append to file path: b");
    EXPECT_THROW_MSG(VoFilePath("a").appended("C:\\b"), VoInvalidPathFileException,
                     "Cannot append to file path: C:\\b");
    EXPECT_THROW_MSG(VoFilePath("a\\").appended("C:\\b"), VoInvalidPathFileException,
                     "Cannot append absolute path to path: C:\\b");
}
