#include <Core/VoDeque.h>
#include <FileSystem/VoPath.h>
#include <FileSystem/VoPathException.h>
#include <VoTestSupport.h>

namespace {

std::vector<std::string> Chunks(const VoDirectoryPath& path)
{
    std::vector<std::string> texts;
    for (const VoStringView& chunk : path.chunks())
        texts.push_back(chunk.toString().toStdString());
    return texts;
}

} // namespace

TEST(VoDirectoryPath, AcceptsDirectoriesOnly)
{
    for (const char* text : {"", "C:\\a\\", "a\\b\\", "\\", "/tmp/", "\\\\srv\\", "/tmp/a:b/"})
        EXPECT_NO_THROW(VoDirectoryPath{text}) << text;
    for (const char* text : {"C:\\Temp", "a", "C:", "\\tmp"})
        EXPECT_THROW_MSG(VoDirectoryPath{text}, VoInvalidPathException, "Not a valid directory path") << text;
    for (const char* text : {"C:\\a:b\\", "a:b:c\\", "\\\\srv\\a:b\\", "C:\\a:b"})
        EXPECT_THROW_MSG(VoDirectoryPath{text}, VoInvalidPathException, "Invalid : in path name") << text;
    const auto refused = vo::test::Caught<VoInvalidPathException>([] { VoDirectoryPath(" C:/Temp "); });
    EXPECT_EQ(refused.path().toStdString(), "C:\\Temp");
    EXPECT_EQ(refused.subject(), refused.path());
    EXPECT_TRUE(refused.reason().contains("FromText()"));
}

TEST(VoDirectoryPath, AsksItsTextNotTheDisk)
{
    const VoDirectoryPath null;
    EXPECT_TRUE(null.isNull() && !null.isDirectory() && !null.isFile() && !null.isFragment());
    EXPECT_TRUE(VoDirectoryPath("a\\").isFragment() && !VoDirectoryPath("C:\\a\\").isFragment());
    EXPECT_TRUE(VoDirectoryPath("C:\\a\\").isDirectory());
}

TEST(VoDirectoryPath, HasPieces)
{
    using Texts = std::vector<std::string>;
    EXPECT_EQ(Chunks("C:\\a\\b\\"), (Texts{"C:", "a", "b"}));
    EXPECT_EQ(Chunks("\\\\srv\\share\\"), (Texts{"srv", "share"}));
    EXPECT_EQ(Chunks("\\tmp\\"), (Texts{"tmp"}));
    EXPECT_EQ(Chunks(""), Texts());
    EXPECT_EQ(Chunks("\\"), Texts());

    const VoDirectoryPath path("C:\\a\\b\\");
    EXPECT_EQ(path.numberChunks(), 3U);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(path.chunk(i), path.chunks()[i]) << i;
    EXPECT_THROW_MSG(path.chunk(3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
    EXPECT_EQ(path.top().toString().toStdString(), "a");
    const VoDirectoryPath share("\\\\srv\\share\\");
    EXPECT_EQ(share.top().toString().toStdString(), "share");
    EXPECT_EQ(share.rootName().toString().toStdString(), "\\\\srv");
    const VoDirectoryPath drive("C:\\");
    EXPECT_EQ(drive.top().toString().toStdString(), "");
}

TEST(VoDirectoryPath, Appends)
{
    const VoDirectoryPath base("C:\\a\\b\\");
    EXPECT_EQ(base.appended(VoDirectoryPath("..\\y\\")).path().toStdString(), "C:\\a\\y\\");
    EXPECT_EQ(base.appended(VoFilePath("x.txt")).path().toStdString(), "C:\\a\\b\\x.txt");
    EXPECT_EQ(base.appended(VoDirectoryPathFragment(VoString("c\\"))).path().toStdString(), "C:\\a\\b\\c\\");
    EXPECT_EQ(base.directory("logs").path().toStdString(), "C:\\a\\b\\logs\\");
    EXPECT_EQ(base.directory(VoString("logs\\")).path().toStdString(), "C:\\a\\b\\logs\\");
    EXPECT_EQ(base.file("x").path().toStdString(), "C:\\a\\b\\x");
    EXPECT_EQ(base.relativeFile("C:\\A\\B\\c\\x").path().toStdString(), "c\\x");
    EXPECT_EQ(VoDirectoryPath().appended(VoDirectoryPath("C:\\x\\")).path().toStdString(), "C:\\x\\");

    EXPECT_EQ(VoDirectoryPath("a\\").appended(VoFilePath("/etc/x")).path().toStdString(), "a\\etc\\x");
    EXPECT_EQ(VoDirectoryPath("\\").appended(VoFilePath("\\tmp\\x")).path().toStdString(), "\\tmp\\x");
    EXPECT_EQ(VoDirectoryPath::FromText("/tmp").path().toStdString(), "\\tmp\\");
    EXPECT_EQ(VoDirectoryPath::FromText("/tmp/ ").path().toStdString(), "\\tmp\\");
    EXPECT_TRUE(VoDirectoryPath::FromText("  ").isNull());

    VoDirectoryPath inPlace = base;
    inPlace.append(VoDirectoryPath("c\\")).append(VoDirectoryPathFragment(VoString("d\\")));
    EXPECT_EQ(inPlace.path().toStdString(), "C:\\a\\b\\c\\d\\");
}

TEST(VoDirectoryPath, RefusesAbsolutePathsBehindIt)
{
    VoDirectoryPath base("C:\\a\\");
    EXPECT_THROW_MSG(base.append(VoDirectoryPath("D:\\b\\")), VoInvalidPathFileException,
                     "Cannot append absolute path to path: D:\\b\\");
    EXPECT_THROW_MSG(base.appended(VoFilePath("\\\\srv\\x")), VoInvalidPathFileException,
                     "Cannot append absolute path to path: \\\\srv\\x");
    EXPECT_THROW_MSG(base.append(VoDirectoryPath("..\\..\\b\\")), VoPathException,
                     "Unable to resolve as relative path is invalid");
    EXPECT_EQ(base, VoString("C:\\a\\")) << "unchanged after the failures";
}

TEST(VoDirectoryPathFragment, IsRelativeAndEndsWithASeparator)
{
    EXPECT_EQ(VoDirectoryPathFragment(VoString("a/b/")).path().toStdString(), "a\\b\\");
    EXPECT_TRUE(VoDirectoryPathFragment(VoString("")).isNull());
    for (const char* text : {"C:\\a\\", "a", "\\\\srv\\", "a:\\"})
        EXPECT_THROW_MSG(VoDirectoryPathFragment(VoString(text)), VoDirectoryPathException,
                         "Not a valid directory path: " + VoString(text));
}

TEST(VoDirectoryPathFragment, GivesFilesBelowIt)
{
    const VoDirectoryPathFragment fragment(VoString("a\\b\\"));
    EXPECT_EQ(fragment.file("x").path().toStdString(), "a\\b\\x");
    EXPECT_EQ(fragment.file(VoFilePath("..\\x")).path().toStdString(), "a\\x");
    EXPECT_THROW_MSG(fragment.file("C:\\x"), VoInvalidPathFileException, "Cannot append absolute path to path: C:\\x");
}
