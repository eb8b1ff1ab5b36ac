#include "FileSystemFixture.h"

#include <FileSystem/VoNativeName.h>
#include <FileSystem/detail/NativeFile.h>

#include <system_error>

using namespace vo::detail;

namespace {

class NativePath : public vo::test::FileSystemFixture
{
};

} // namespace

TEST_F(NativePath, ZeroBytesAreRefusedAndNotCutAt)
{
    const VoFilePath path(VoString(std::string("a\0.exe", 6)));
    EXPECT_THROW_MSG(ToNative(path), VoInvalidPathFileException, "Invalid path: ");
    EXPECT_THROW_MSG(VoFileSystem::Exists(path), VoInvalidPathFileException, "Invalid path: ");
}

#if defined(__unix__)

TEST_F(NativePath, BytesPassAsTheyAre)
{
    EXPECT_EQ(ToNative(VoFilePath("\\tmp\\\xff\xfe x")).string(), "/tmp/\xff\xfe x");
    EXPECT_EQ(FromNative("/tmp/\xff x ").path().toStdString(), "\\tmp\\\xff x ");
    EXPECT_EQ(FromNative("/tmp//a///b").path().toStdString(), "\\tmp\\a\\b");
    EXPECT_EQ(ChildFromNative(VoFilePath("\\tmp\\"), " x ").path().toStdString(), "\\tmp\\ x ");
}

TEST_F(NativePath, PathsGoToTheStandardLibraryAndBack)
{
    for (const char* text : {"/tmp/\xff x ", " a /b", "", "/"}) {
        EXPECT_EQ(vo::ToStdPath(vo::FromStdPath(text)).string(), text);
        EXPECT_EQ(vo::FromStdPath(text).nativeText().toStdString(), text);
    }
    for (const auto& [text, directory] : {std::pair("/tmp/a ", "/tmp/a /"), std::pair("/tmp/a/", "/tmp/a/"),
                                          std::pair(" a", "./ a/"), std::pair("", ""), std::pair("/", "/")}) {
        EXPECT_EQ(vo::ToStdPath(vo::FromStdDirectory(text)).string(), directory);
        EXPECT_EQ(vo::FromStdDirectory(text).nativeText().toStdString(), directory);
    }
}

TEST_F(NativePath, ABackslashInANameIsNoSeparator)
{
    EXPECT_THROW_MSG(FromNative("/tmp/a\\b"), VoInvalidPathFileException, "Name contains a backslash: /tmp/a\\b");
}

#else

TEST_F(NativePath, HalfCharactersAreRefusedAndNotChanged)
{
    EXPECT_THROW_MSG(FromNative(L"a\xd800"), VoInvalidPathFileException, "Name is no Unicode text: a?");
    EXPECT_THROW(ToNative(VoFilePath("a\xff")), VoInvalidPathFileException);
}

#endif

TEST_F(NativePath, OverlongPathsAreRefusedBeforeTheDiskIsTouched)
{
    const VoFilePath longest(VoString('x', 260));
    EXPECT_NO_THROW(RequireValidLength(longest));
    const VoFilePath tooLong(VoString('x', 261));
    const VoString message = "Path exceeds maximum length by 1 characters for: " + tooLong.path();
    EXPECT_THROW_MSG(RequireValidLength(tooLong), VoPathSizeFileException, message);
    EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("missing"), tooLong), VoPathSizeFileException, message);
    EXPECT_THROW_MSG(VoFileSystem::MoveFile(tooLong, at("target")), VoPathSizeFileException, message);
    EXPECT_THROW(VoFileSystem::CreateDirectory(VoDirectoryPath::FromText(tooLong.path()), true),
                 VoPathSizeFileException);
}

TEST_F(NativePath, CanonicalContainmentFollowsEveryLink)
{
    std::error_code error;
    EXPECT_EQ(RealPath(ToNative(root()) / "", error), RealPath(ToNative(root()).parent_path(), error));
    EXPECT_TRUE(IsInsideCanonical(root(), at("missing\\too")));
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("in\\side\\file");
    write("out\\file");
    link("../out", "in\\escape");
    link("side", "in\\within");
    link("in", "alias");
    const VoDirectoryPath inside = root().directory("in");

    EXPECT_TRUE(IsInsideCanonical(inside, at("in\\side\\file")));
    EXPECT_TRUE(IsInsideCanonical(inside, at("in\\within\\file")));
    EXPECT_TRUE(IsInsideCanonical(inside, at("in\\side\\new\\deep\\file"))) << "pieces may be missing";
    EXPECT_TRUE(IsInsideCanonical(inside, inside.toFilePath()));
    EXPECT_TRUE(IsInsideCanonical(inside, at("alias\\side\\file")));
    EXPECT_TRUE(IsInsideCanonical(root().directory("alias"), at("in\\side\\file")));
    EXPECT_FALSE(IsInsideCanonical(inside, at("in\\escape\\file")));
    EXPECT_FALSE(IsInsideCanonical(inside, at("in\\escape\\new")));
    EXPECT_FALSE(IsInsideCanonical(inside, at("out\\file")));
    EXPECT_FALSE(IsInsideCanonical(inside, at("in2\\file")));
    EXPECT_FALSE(IsInsideCanonical(inside, VoFilePath::CreateUnchecked(inside.path() + "side\\..\\..\\out\\file")));
    EXPECT_FALSE(IsInsideCanonical(root().directory("missing"), at("missing\\file")));
}

TEST_F(NativePath, NewFilesAreMadeOnlyUnderFreeNames)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("taken", "theirs");
    link("nowhere", "link");
    std::error_code error;
    for (const char* name : {"taken", "link"}) {
        EXPECT_FALSE(NativeFile::CreateNew(native(name), NewFileAccess::Usual, error).isOpen());
        EXPECT_EQ(error, std::errc::file_exists) << name;
    }
    EXPECT_EQ(read("taken"), "theirs");
    EXPECT_FALSE(exists("nowhere"));
    NativeFile made = NativeFile::CreateNew(native("made"), NewFileAccess::Usual, error);
    EXPECT_TRUE(made.isOpen());
    made.close(error);
    EXPECT_FALSE(made.isOpen() || error);
}
