#include "FileSystemFixture.h"

#include <Core/VoChecksum.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPathFragment.h>

#include <ScopedEnvironment.h>

#include <QtCore/QByteArray>

#include <chrono>

#if defined(__unix__)
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace fs = std::filesystem;
using vo::test::ScopedEnvironment;

namespace {

class FileSystem : public vo::test::FileSystemFixture
{
protected:
    using Texts = std::vector<std::string>;

    // A path as the tests name it: below the root.
    std::string below(const VoString& path) const { return path.toStdString().substr(root().path().size()); }

    Texts files(bool recursive, bool directories) const
    {
        Texts found;
        VoFileSystem::ForEachFile(root(), recursive, directories,
                                  [&](const VoFilePath& path) { found.push_back(below(path.path())); });
        return found;
    }

    void setAge(const char* name, int hours) const
    {
        fs::last_write_time(native(name), fs::file_time_type::clock::now() - std::chrono::hours(hours));
    }

    fs::perms permissions(const char* name) const { return fs::status(native(name)).permissions(); }
};

#if defined(__unix__)

// A directory on another volume than the temporary directory's, or none.
class OtherVolume
{
public:
    explicit OtherVolume(const VoDirectoryPath& here)
    {
        struct stat first = {};
        struct stat second = {};
        if (::stat(vo::detail::ToNative(here).c_str(), &first) == 0 && ::stat("/dev/shm", &second) == 0 &&
            first.st_dev != second.st_dev && ::access("/dev/shm", W_OK) == 0)
            m_directory = std::make_unique<VoTemporaryDir>(VoDirectoryPath("/dev/shm/"));
    }

    explicit operator bool() const { return m_directory != nullptr; }
    VoFilePath at(const char* name) const { return m_directory->path(name); }
    fs::path native(const char* name) const { return vo::detail::ToNative(at(name)); }

private:
    std::unique_ptr<VoTemporaryDir> m_directory;
};

#endif

} // namespace

TEST_F(FileSystem, TellsWhatExists)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("file");
    write("directory\\x");
    link("file", "link");
    link("nowhere", "dangling");
    link("loop", "loop");
    struct
    {
        const char* name;
        bool exists;
        bool directory;
    } const rows[] = {{"file", true, false},     {"directory", true, true},    {"directory\\", true, true},
                      {"link", true, false},     {"dangling", false, false},   {"loop", false, false},
                      {"missing", false, false}, {"file\\below", false, false}};
    for (const auto& row : rows) {
        const VoString text = at(row.name).path();
        EXPECT_EQ(VoFileSystem::Exists(at(row.name)), row.exists) << row.name;
        EXPECT_EQ(VoFileSystem::Exists(text), row.exists) << row.name;
        EXPECT_EQ(VoFileSystem::Exists(VoStringView(text)), row.exists) << row.name;
        EXPECT_EQ(VoFileSystem::Exists(text.c_str()), row.exists) << row.name;
        EXPECT_EQ(VoFileSystem::IsDirectory(at(row.name)), row.directory) << row.name;
    }
    EXPECT_EQ(VoFileSystem::FileSize(at("file")), 7U);
    EXPECT_THROW_MSG(VoFileSystem::FileSize(at("missing")), VoFileNotFoundException,
                     "File not found: " + at("missing").path());
    EXPECT_THROW_MSG(VoFileSystem::FileSize(root().toFilePath()), VoFileException, "file_size: Is a directory");
    EXPECT_TRUE(root().exists() && VoFileSystem::IsDirectory(root()));
    EXPECT_FALSE(root().directory("missing").exists());
    EXPECT_FALSE(VoFileSystem::Exists(VoFilePath()));
    EXPECT_FALSE(VoFileSystem::Exists(root().file(VoString('x', 300)))) << "no name can be that long";
}

TEST_F(FileSystem, FilesAreTheSameWhenTheyAreOneOnDisk)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("file");
    write("equal");
    link("file", "link");
    fs::create_hard_link(native("file"), native("hard"));
    EXPECT_TRUE(VoFileSystem::Same(at("file"), at("file")));
    EXPECT_TRUE(VoFileSystem::Same(at("file"), at("link")));
    EXPECT_TRUE(VoFileSystem::Same(at("hard"), at("file")));
    EXPECT_FALSE(VoFileSystem::Same(at("file"), at("equal"))) << "equal content is another matter";
    EXPECT_FALSE(VoFileSystem::Same(at("file"), at("missing")));
    EXPECT_FALSE(VoFileSystem::Same(at("missing"), at("missing")));
    write("FILE");
    EXPECT_EQ(at("file"), at("FILE"));
    EXPECT_EQ(VoFileSystem::Same(at("file"), at("FILE")), names().size() == 4) << "unless the volume ignores case";
}

TEST_F(FileSystem, RemovesFilesLinksAndEmptyDirectories)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("file");
    write("full\\x");
    fs::create_directory(native("empty"));
    link("full", "link");
    EXPECT_TRUE(VoFileSystem::Remove(at("file")));
    EXPECT_FALSE(VoFileSystem::Remove(at("file"))) << "it is gone already";
    EXPECT_TRUE(VoFileSystem::Remove(root().directory("empty")));
    EXPECT_TRUE(VoFileSystem::Remove(root().directory("link"))) << "the link, though the path ends with a separator";
    EXPECT_THROW_MSG(VoFileSystem::Remove(at("full")), VoFileException, "remove: Directory not empty");
    EXPECT_EQ(names(), Texts{"full"});
    EXPECT_EQ(read("full\\x"), "content");
}

TEST_F(FileSystem, RemovesTreesAndCountsAndFollowsNoLinks)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("kept\\x");
    write("tree\\a\\x");
    write("tree\\b\\c\\z");
    link("../kept", "tree\\link");
    link("kept", "alias");
    EXPECT_EQ(VoFileSystem::RemoveAll(root().directory("tree")), 7U);
    EXPECT_EQ(VoFileSystem::RemoveAll(root().directory("tree")), 0U);
    EXPECT_EQ(VoFileSystem::RemoveAll(root().directory("alias")), 1U);
    EXPECT_EQ(read("kept\\x"), "content");
}

// Nothing here names the root of this machine: a fault would be found by losing it.
TEST_F(FileSystem, RootsAreNotRemoved)
{
    for (const char* path : {"", "C:\\", "\\\\nobody\\"})
        EXPECT_THROW_MSG(VoFileSystem::RemoveAll(path), VoInvalidCallException,
                         "Cannot remove root directory: " + VoString(path));
}

#if defined(__unix__)

TEST_F(FileSystem, RootsAreNotRemovedWhateverTheyAreCalled)
{
    write("file");
    fs::create_directory(native("a"));
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        // In here the test's own directory is the root.
        if (::chroot(vo::detail::ToNative(root()).c_str()) != 0 || ::chdir("/") != 0)
            ::_exit(77);
        int refused = 0;
        for (const char* path : {"\\", "\\a\\..\\", "\\..\\", "a\\..\\", ".\\"}) {
            try {
                VoFileSystem::RemoveAll(path);
            } catch (const VoInvalidCallException&) {
                ++refused;
            } catch (...) {
                ::_exit(78);
            }
        }
        ::_exit(refused);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77)
        GTEST_SKIP() << "only the superuser has another root";
    EXPECT_EQ(WEXITSTATUS(status), 5);
    EXPECT_EQ(names(), (Texts{"a", "file"}));
}

#endif

// A mark of the file on some systems, a right of its owner on others; the directory says what may be done with its
// name.
TEST_F(FileSystem, ReadOnlyFilesAreReplacedMovedAndRemoved)
{
    const auto writeMarked = [&](const char* name) {
        write(name, "old");
        fs::permissions(native(name), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
        return at(name);
    };
    const VoFilePath file = writeMarked("file");
    VoAtomicFileWriter writer(file);
    writer.write("new", 3);
    writer.commit();
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(permissions("file") & fs::perms::owner_write, fs::perms::none) << "a replaced file keeps its marks";
    VoFileSystem::MoveFile(write("other", "moved"), file);
    EXPECT_EQ(read("file"), "moved");
    VoFileSystem::CopyFile(write("third", "copied"), writeMarked("copy"), VoFileSystem::OverwriteExisting);
    EXPECT_EQ(read("copy"), "copied");
    EXPECT_TRUE(VoFileSystem::Remove(writeMarked("gone")));
    writeMarked("tree\\sub\\file");
    EXPECT_EQ(VoFileSystem::RemoveAll(root().directory("tree")), 3U);
    EXPECT_EQ(names(), (Texts{"copy", "file", "third"}));
}

#if defined(_WIN32)

// What is tried again for a while ends with an error that names the file, and with nothing changed.
TEST_F(FileSystem, AFileThatAnotherProgramHoldsIsKeptAndNamed)
{
    const VoFilePath file = write("held", "old");
    auto holder = vo::test::HoldFile(native("held"));
    ASSERT_TRUE(holder);
    VoAtomicFileWriter writer(file);
    writer.write("new", 3);
    EXPECT_EQ(vo::test::Caught<VoFileException>([&] { writer.commit(); }).path1(), file);
    EXPECT_THROW(VoFileSystem::Remove(file), VoFileException);
    holder.reset();
    EXPECT_EQ(read("held"), "old");
    EXPECT_EQ(names(), Texts{"held"});
}

#endif

TEST_F(FileSystem, MakesDirectories)
{
    EXPECT_TRUE(VoFileSystem::CreateDirectory(root().directory("a")));
    EXPECT_FALSE(VoFileSystem::CreateDirectory(root().directory("a")));
    EXPECT_TRUE(VoFileSystem::CreateDirectory(root().directory("b\\c\\d"), true));
    EXPECT_FALSE(VoFileSystem::CreateDirectory(root().directory("b\\c\\d"), true));
    EXPECT_TRUE(VoFileSystem::IsDirectory(at("b\\c\\d")));
    EXPECT_THROW_MSG(VoFileSystem::CreateDirectory(root().directory("x\\y")), VoFileException,
                     "create_directory: No such file or directory");
    write("file");
    EXPECT_THROW(VoFileSystem::CreateDirectory(root().directory("file")), VoFileException);
    EXPECT_THROW(VoFileSystem::CreateDirectory(root().directory("file"), true), VoFileException);
    EXPECT_THROW_MSG(VoFileSystem::CreateDirectory(root().directory("file\\x"), true), VoFileException,
                     "create_directories: Not a directory");
}

TEST_F(FileSystem, CopiesAsTheOptionSays)
{
    struct
    {
        int option;
        int hoursSinceTarget; // the source is so much younger than the target
        const char* result;   // of the target; null when the copy is refused
        bool copied;
    } const rows[] = {
        {0, 1, nullptr, false}, {1, 1, "old", false},  {2, 1, "new", true},    {2, -1, "new", true},
        {3, 1, "new", true},    {3, -1, "old", false}, {4, 1, nullptr, false}, {-1, 1, nullptr, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.option);
        write("from", "new");
        write("to", "old");
        setAge("from", 10 - row.hoursSinceTarget);
        setAge("to", 10);
        const auto option = static_cast<VoFileSystem::CopyOptions>(row.option);
        if (row.result) {
            EXPECT_EQ(VoFileSystem::CopyFile(at("from"), at("to"), option), row.copied);
            EXPECT_EQ(read("to"), row.result);
        } else {
            EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("from"), at("to"), option), VoFileException, "File exists");
            EXPECT_EQ(read("to"), "old");
        }
        fs::remove(native("to"));
        EXPECT_TRUE(VoFileSystem::CopyFile(at("from"), at("to"), option)) << "nothing is in the way";
        EXPECT_EQ(read("to"), "new");
        EXPECT_EQ(names(), (Texts{"from", "to"}));
    }
}

TEST_F(FileSystem, ARefusedCopyNamesBothFilesAndTheSystemsReason)
{
    const auto refused = vo::test::Caught<VoFileException>([&] { VoFileSystem::CopyFile(at("missing"), at("to")); });
    EXPECT_EQ(refused.message(), "No such file or directory");
    EXPECT_EQ(refused.path1(), at("missing"));
    EXPECT_EQ(refused.path2(), at("to"));
    write("directory\\x");
    write("file");
    EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("file"), at("no\\place")), VoFileException, "No such file or directory");
    for (const auto option : {VoFileSystem::NoOption, VoFileSystem::SkipExisting, VoFileSystem::OverwriteExisting,
                              VoFileSystem::UpdateExisting}) {
        for (const char* target : {"to", "file"}) { // whether the target exists or not
            EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("directory"), at(target), option), VoFileException,
                             "Is a directory");
            EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("missing"), at(target), option), VoFileException,
                             "No such file or directory");
        }
        EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("file"), at("directory"), option), VoFileException,
                         "Is a directory");
    }
    EXPECT_EQ(names(), (Texts{"directory", "file"}));
}

TEST_F(FileSystem, AFileCopiedOntoItselfIsNotLost)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("file");
    link("file", "link");
    fs::create_hard_link(native("file"), native("hard"));
    for (const char* other : {"file", "link", "hard"})
        for (const auto option :
             {VoFileSystem::NoOption, VoFileSystem::OverwriteExisting, VoFileSystem::UpdateExisting})
            EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("file"), at(other), option), VoFileException, "File exists")
                << other;
    EXPECT_EQ(read("file"), "content");
}

TEST_F(FileSystem, ContentOfAnySizeIsCopied)
{
    for (const std::size_t size : {0UL, 1UL, 262144UL, 262145UL, 3000000UL}) {
        std::string content(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            content[i] = static_cast<char>(i * 31 + i / 251);
        write("from", content);
        VoFileSystem::CopyFile(at("from"), at("to"), VoFileSystem::OverwriteExisting);
        EXPECT_EQ(read("to"), content) << size;
    }
}

TEST_F(FileSystem, MovesFilesAndDirectories)
{
    write("from", "new");
    write("to", "old");
    VoFileSystem::MoveFile(at("from"), at("to"));
    EXPECT_EQ(read("to"), "new");
    write("directory\\x");
    VoFileSystem::MoveFile(at("directory\\"), at("moved\\"));
    EXPECT_EQ(read("moved\\x"), "content");
    EXPECT_THROW_MSG(VoFileSystem::MoveFile(at("missing"), at("x")), VoFileException,
                     "rename: No such file or directory");
    EXPECT_THROW_MSG(VoFileSystem::MoveFile(at("to"), at("moved")), VoFileException, "rename: Is a directory");
    EXPECT_EQ(names(), (Texts{"moved", "to"}));
}

TEST_F(FileSystem, MovingOneNameOfAFileToAnotherLeavesTheOther)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("from");
    fs::create_hard_link(native("from"), native("to"));
    fs::create_hard_link(native("from"), native("FROM"));
    link(".", "here");
    VoFileSystem::MoveFile(at("from"), at("from"));
    VoFileSystem::MoveFile(at("from"), at("here\\from")); // its own name
    EXPECT_EQ(names(), (Texts{"FROM", "from", "here", "to"}));
    VoFileSystem::MoveFile(at("from"), at("to"));
    VoFileSystem::MoveFile(at("FROM"), at("here\\to"));
    EXPECT_EQ(names(), (Texts{"here", "to"}));
    EXPECT_EQ(read("to"), "content");
}

#if defined(__unix__)

TEST_F(FileSystem, CopiesKeepPermissionsAndReplaceLinks)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("from", "new");
    fs::permissions(native("from"), static_cast<fs::perms>(0640));
    write("real", "old");
    link("real", "link");
    VoFileSystem::CopyFile(at("from"), at("link"), VoFileSystem::OverwriteExisting);
    EXPECT_EQ(read("real"), "old");
    EXPECT_EQ(read("link"), "new");
    EXPECT_EQ(permissions("link"), static_cast<fs::perms>(0640));
    ASSERT_EQ(::mkfifo(native("pipe").c_str(), 0600), 0);
    EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("pipe"), at("to")), VoFileException, "Operation not supported");
    EXPECT_FALSE(exists("to"));
}

TEST_F(FileSystem, ACopyThatFindsTheDiskFullLeavesTheTargetAndNothingElse)
{
    write("from", std::string(100000, 'n'));
    write("to", "old");
    const vo::test::FileSizeLimit limit(1000);
    EXPECT_THROW_MSG(VoFileSystem::CopyFile(at("from"), at("to"), VoFileSystem::OverwriteExisting), VoFileException,
                     "File too large");
    EXPECT_EQ(read("to"), "old");
    EXPECT_EQ(names(), (Texts{"from", "to"}));
}

TEST_F(FileSystem, AFileMovesToAnotherVolumeWithPermissionsAndTime)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    const OtherVolume other(root());
    if (!other)
        GTEST_SKIP() << "there is no other volume";
    write("from", "new");
    fs::permissions(native("from"), static_cast<fs::perms>(0640));
    setAge("from", 5);
    const auto time = fs::last_write_time(native("from"));
    std::ofstream(other.native("to")) << "old";

    VoFileSystem::MoveFile(at("from"), other.at("to"));

    EXPECT_FALSE(exists("from"));
    EXPECT_EQ(VoFileSystem::Checksum(other.at("to")), VoChecksum(QByteArray("new")));
    EXPECT_EQ(fs::status(other.native("to")).permissions(), static_cast<fs::perms>(0640));
    EXPECT_EQ(fs::last_write_time(other.native("to")), time);
    link("nowhere", "link");
    VoFileSystem::MoveFile(at("link"), other.at("link"));
    EXPECT_FALSE(exists("link"));
    EXPECT_EQ(fs::read_symlink(other.native("link")), "nowhere") << "a link moves as a link";
}

TEST_F(FileSystem, AMoveToAnotherVolumeThatFailsKeepsTheSource)
{
    const OtherVolume other(root());
    if (!other)
        GTEST_SKIP() << "there is no other volume";
    write("from", std::string(100000, 'n'));
    write("directory\\x");
    {
        const vo::test::FileSizeLimit limit(1000);
        EXPECT_THROW_MSG(VoFileSystem::MoveFile(at("from"), other.at("to")), VoFileException, "rename: File too large");
    }
    EXPECT_EQ(read("from").size(), 100000U);
    EXPECT_FALSE(VoFileSystem::Exists(other.at("to")));
    EXPECT_THROW_MSG(VoFileSystem::MoveFile(at("directory\\"), other.at("directory\\")), VoFileException,
                     "rename: Invalid cross-device link");
    EXPECT_EQ(read("directory\\x"), "content");
}

#endif

TEST_F(FileSystem, WalksInTheOrderOfTheBytes)
{
    for (const char* name : {"d", "B", "a\\z", "a\\c\\x", "a.txt", "\xc3\xa9", "a b"})
        write(name);
    EXPECT_EQ(files(false, false), (Texts{"B", "a b", "a.txt", "d", "\xc3\xa9"}));
    EXPECT_EQ(files(false, true), (Texts{"B", "a\\", "a b", "a.txt", "d", "\xc3\xa9"}));
    EXPECT_EQ(files(true, false), (Texts{"B", "a\\c\\x", "a\\z", "a b", "a.txt", "d", "\xc3\xa9"}));
    EXPECT_EQ(files(true, true), (Texts{"B", "a\\", "a\\c\\", "a\\c\\x", "a\\z", "a b", "a.txt", "d", "\xc3\xa9"}));
    EXPECT_EQ(VoFileSystem::NumberFiles(root(), false, false), 5U);
    EXPECT_EQ(VoFileSystem::NumberFiles(root(), true, true), 9U);
    for (const bool recursive : {false, true}) {
        Texts found;
        VoFileSystem::ForEachDirectory(root(), recursive,
                                       [&](const VoDirectoryPath& path) { found.push_back(below(path.path())); });
        EXPECT_EQ(found, recursive ? (Texts{"a\\", "a\\c\\"}) : Texts{"a\\"});
    }
}

TEST_F(FileSystem, WalksDeliverLinksToDirectoriesAsFilesAndDoNotEnterThem)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("a\\x");
    link("..", "a\\up");
    link("a", "b");
    link("nowhere", "c");
    EXPECT_EQ(files(true, false), (Texts{"a\\up", "a\\x", "b", "c"}));
}

#if defined(__unix__) // elsewhere the system takes such blanks away

TEST_F(FileSystem, NamesWithBlanksAtTheirEndsAreDeliveredAsTheyAre)
{
    std::ofstream(vo::detail::ToNative(root()) / " x ") << "1";
    const Texts found = files(false, false);
    ASSERT_EQ(found, Texts{" x "});
    VoFileSystem::ForEachFile(root(), false, false,
                              [](const VoFilePath& path) { EXPECT_EQ(VoFileSystem::FileSize(path), 1U); });

    write("x", "another file"); // which the errors about " x " must not name
    const VoFilePath blank = VoFilePath::CreateUnchecked(root().path() + " x ");
    const VoFilePath below = VoFilePath::CreateUnchecked(blank.path() + "\\y");
    const auto pathOf = [](const auto& failing) { return vo::test::Caught<VoFileException>(failing).path1().path(); };
    EXPECT_EQ(pathOf([&] { VoFileSystem::FileSize(below); }), below.path());
    EXPECT_EQ(pathOf([&] { VoFileSystem::CopyFile(below, at("to")); }), below.path());
    EXPECT_EQ(pathOf([&] { throw VoFileException("text", blank); }), blank.path());
    EXPECT_EQ(pathOf([&] { throw VoCannotOpenFileException(blank); }), blank.path());
    EXPECT_EQ(pathOf([&] { throw VoFileException("text", "/a/b "); }), "\\a\\b") << "a text is made a path";
}

#endif

TEST_F(FileSystem, CallbacksMayRemoveWhatIsStillToCome)
{
    for (const char* name : {"a", "b", "c\\x", "d", "e\\x"})
        write(name);
    Texts found;
    VoFileSystem::ForEachFile(root(), true, true, [&](const VoFilePath& path) {
        found.push_back(below(path.path()));
        VoFileSystem::Remove(at("b"));
        VoFileSystem::RemoveAll(root().directory("c"));
        if (path.isDirectory())
            VoFileSystem::RemoveAll(VoDirectoryPath(path.path()));
        write("new");
    });
    EXPECT_EQ(found, (Texts{"a", "d", "e\\"}));

    found.clear();
    const auto onlyOne = [&](const VoFilePath& path) {
        found.push_back(below(path.path()));
        throw VoInvalidCallException("enough");
    };
    EXPECT_THROW_MSG(VoFileSystem::ForEachFile(root(), true, true, onlyOne), VoInvalidCallException, "enough");
    EXPECT_EQ(found, Texts{"a"});
}

TEST_F(FileSystem, WhatCannotBeWalkedIsReported)
{
    EXPECT_NO_THROW(VoFileSystem::SyncDirectory(root()));
    EXPECT_THROW_MSG(VoFileSystem::SyncDirectory(root().directory("missing")), VoFileException,
                     "sync: No such file or directory");
    EXPECT_THROW_MSG(VoFileSystem::ForEachFile(root(), true, true, nullptr), VoInvalidParameterException,
                     "Invalid callback");
    EXPECT_THROW_MSG(VoFileSystem::ForEachDirectory(root(), true, nullptr), VoInvalidParameterException,
                     "Invalid callback");
    const auto ignore = [](const VoFilePath&) {};
    EXPECT_THROW_MSG(VoFileSystem::ForEachFile(root().directory("missing"), true, true, ignore), VoFileException,
                     "directory_iterator: No such file or directory");
    EXPECT_THROW_MSG(VoFileSystem::NumberFiles(VoDirectoryPath(), true, true), VoFileException,
                     "directory_iterator: No such file or directory");
#if defined(__unix__)
    std::ofstream(vo::detail::ToNative(root()) / "a\\b") << "x";
    EXPECT_THROW_MSG(VoFileSystem::ForEachFile(root(), false, false, ignore), VoInvalidPathFileException,
                     "Name contains a backslash: a\\b");
#endif
}

TEST_F(FileSystem, AnUnreadableDirectoryIsReported)
{
    if (IsSuperuser())
        GTEST_SKIP() << "the superuser reads everything";
    write("secret\\x");
    fs::permissions(native("secret"), fs::perms::none);
    EXPECT_THROW_MSG(VoFileSystem::NumberFiles(root(), true, true), VoFileException,
                     "directory_iterator: Permission denied");
    fs::permissions(native("secret"), fs::perms::owner_all);
}

TEST_F(FileSystem, WellKnownDirectoriesFollowTheEnvironmentAtEachCall)
{
    const ScopedEnvironment data("VOAPPDATAPATH", "/data/app");
    const ScopedEnvironment documents("VODOCSPATH", "/data/docs/");
    EXPECT_EQ(VoFileSystem::Directory(VoFileSystem::ApplicationData).path().toStdString(), "\\data\\app\\");
    EXPECT_EQ(VoFileSystem::Directory(VoFileSystem::Documents).path().toStdString(), "\\data\\docs\\");
    EXPECT_EQ(VoFileSystem::Directory(VoFileSystem::Logs).path().toStdString(), "\\data\\app\\logs\\");
    const ScopedEnvironment changed("VOAPPDATAPATH", "/other");
    EXPECT_EQ(VoFileSystem::Directory(VoFileSystem::Logs).path().toStdString(), "\\other\\logs\\");
    const ScopedEnvironment empty("VOAPPDATAPATH", "");
    EXPECT_TRUE(VoFileSystem::Directory(VoFileSystem::ApplicationData).isRooted()) << "the platform's place";
    EXPECT_NE(VoFileSystem::Directory(VoFileSystem::ApplicationData), VoDirectoryPath("\\"));
    EXPECT_THROW_MSG(VoFileSystem::Directory(static_cast<VoFileSystem::DirectoryIdentifier>(3)),
                     VoInvalidParameterException, "Unknown directory identifier: 3");
#if defined(__unix__)
    const ScopedEnvironment temporary("TMPDIR", QByteArray::fromStdString(vo::detail::ToNative(root()).string()));
    EXPECT_EQ(VoFileSystem::TempDirectory(), root());
    const ScopedEnvironment nowhere("TMPDIR", QByteArray::fromStdString(native("missing").string()));
    EXPECT_THROW(VoFileSystem::TempDirectory(), VoFileException);
#endif
}

TEST_F(FileSystem, FreeSpaceIsThatOfTheVolumeAlsoForDirectoriesToCome)
{
    const std::uint64_t total = fs::space(vo::detail::ToNative(root())).capacity;
    for (const VoDirectoryPath& directory :
         {root(), root().directory("not\\yet\\made"), VoDirectoryPath("not\\here\\"), VoDirectoryPath()}) {
        const std::uint64_t space = VoFileSystem::FreeSpace(directory);
        EXPECT_GT(space, 0U) << directory;
        EXPECT_LT(space, std::uint64_t(1) << 62) << directory;
    }
    EXPECT_LE(VoFileSystem::FreeSpace(root().directory("not\\yet")), total);
}

TEST_F(FileSystem, PathsAreOpenedByWhatIsSetForThat)
{
    const VoFilePath file = write("file");
    EXPECT_THROW_MSG(VoFileSystem::OpenFile(file), VoInvalidCallException,
                     "Cannot open " + file.path() + ": no desktop services are installed");
    EXPECT_THROW(VoFileSystem::OpenDirectory(root()), VoInvalidCallException);
    static VoString opened;
    VoFileSystem::SetOpener([](const VoFilePath& path) { opened = path.path(); });
    VoFileSystem::OpenFile(file);
    EXPECT_EQ(std::exchange(opened, VoString()), file.path());
    VoFileSystem::OpenDirectory(root());
    EXPECT_EQ(std::exchange(opened, VoString()), root().path());
    EXPECT_NE(VoFileSystem::SetOpener(nullptr), nullptr);
}
