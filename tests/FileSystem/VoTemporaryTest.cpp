#include "FileSystemFixture.h"

#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoTemporaryFile.h>

namespace {

class VoTemporary : public vo::test::FileSystemFixture
{
protected:
    static unsigned Permissions(const VoFilePath& path)
    {
        return static_cast<unsigned>(std::filesystem::status(vo::detail::ToNative(path)).permissions());
    }
};

} // namespace

TEST_F(VoTemporary, ADirectoryLivesAsLongAsItsObjectWithAllItHolds)
{
    VoDirectoryPath path;
    {
        const VoTemporaryDir directory(root());
        path = directory.path();
        EXPECT_TRUE(root().toFilePath().isAncestor(path.toFilePath()));
        EXPECT_TRUE(VoFileSystem::IsDirectory(path));
        VoFileSystem::CreateDirectory(path.directory("a\\b"), true);
        std::ofstream(vo::detail::ToNative(directory.path("file"))) << "x";
        EXPECT_THROW(VoFileSystem::Exists(directory.path(VoString("file\0.txt", 9))), VoInvalidPathFileException);
    }
    EXPECT_TRUE(names().empty());
    const VoFilePath usual = VoFileSystem::TempDirectory().toFilePath();
    EXPECT_TRUE(usual.isAncestor(VoTemporaryDir().path().toFilePath()) && usual.isAncestor(VoTemporaryFile().path()));
}

TEST_F(VoTemporary, LinksInADirectoryAreNotFollowedWhenItIsRemoved)
{
    write("kept\\file");
    {
        const VoTemporaryDir directory(root());
        vo::test::MakeLink(native("kept"), vo::detail::ToNative(directory.path("link")));
    }
    EXPECT_EQ(read("kept\\file"), "content");
}

TEST_F(VoTemporary, ReleasedThingsStay)
{
    const VoDirectoryPath directory = VoTemporaryDir(root()).release();
    const VoFilePath file = VoTemporaryFile(root()).release();
    EXPECT_TRUE(VoFileSystem::IsDirectory(directory));
    EXPECT_EQ(VoFileSystem::FileSize(file), 0U);
    VoTemporaryFile released(root());
    released.release();
    EXPECT_TRUE(released.path().isNull());
    EXPECT_TRUE(released.release().isNull());
}

TEST_F(VoTemporary, MovesHandTheThingOverAndEndTheOneBefore)
{
    VoTemporaryFile a(root());
    VoTemporaryFile b(root());
    const VoFilePath pathOfA = a.path();
    const VoFilePath pathOfB = b.path();
    a = std::move(b);
    EXPECT_FALSE(VoFileSystem::Exists(pathOfA));
    EXPECT_TRUE(VoFileSystem::Exists(pathOfB));
    EXPECT_TRUE(b.path().isNull());
    {
        const VoTemporaryFile file(root());
        VoFileSystem::MoveFile(file.path(), at("moved"));
    } // a file that is gone is no failure
    EXPECT_TRUE(exists("moved"));
    VoTemporaryDir c(root());
    VoTemporaryDir d(std::move(c));
    EXPECT_TRUE(c.path().isNull());
    EXPECT_TRUE(VoFileSystem::IsDirectory(d.path()));
}

TEST_F(VoTemporary, NothingIsMadeWhereThereIsNoDirectory)
{
    EXPECT_THROW(VoTemporaryFile(root().directory("missing")), VoCannotOpenFileException);
    EXPECT_THROW_MSG(VoTemporaryDir(root().directory("missing")), VoFileException,
                     "create_directory: No such file or directory");
}

#if defined(__unix__)

TEST_F(VoTemporary, NobodyElseMayReadThem)
{
    EXPECT_EQ(Permissions(VoTemporaryDir(root()).path().toFilePath()), 0700U);
    EXPECT_EQ(Permissions(VoTemporaryFile(root()).path()), 0600U);
}

#endif

TEST_F(VoTemporary, AFileStaysPrivateWhileItIsReplacedAndAfterwards)
{
    write("usual", "text");
    if (!vo::test::MayOthersRead(native("usual")))
        GTEST_SKIP() << "nothing here is for others";
    VoFileSystem::CreateDirectory(root().directory("shared")); // a directory that gives access to what is in it
    const VoTemporaryFile file(root().directory("shared"));
    const auto isPrivate = [](const VoFilePath& path) { return !vo::test::MayOthersRead(vo::detail::ToNative(path)); };
    EXPECT_TRUE(isPrivate(file.path()));
    VoAtomicFileWriter writer(file.path());
    writer.write("secret", 6);
    EXPECT_TRUE(isPrivate(writer.temporary()));
    writer.commit();
    EXPECT_TRUE(isPrivate(file.path()));
    VoAtomicFileWriter replaced(at("usual"));
    replaced.commit();
    EXPECT_TRUE(vo::test::MayOthersRead(native("usual")));
}
