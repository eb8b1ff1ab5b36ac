#include "FileSystemFixture.h"

#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryDir.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#if defined(__unix__)
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

class AtomicFileWriter : public vo::test::FileSystemFixture
{
protected:
    using Names = std::vector<std::string>;

    static void write(VoAtomicFileWriter& writer, const std::string& bytes)
    {
        writer.write(bytes.data(), bytes.size());
    }
    using FileSystemFixture::write;
};

// Saves when the process ends, after the main thread's variables have gone, which drew random names before.
struct SavesAtExit
{
    ~SavesAtExit()
    {
        try {
            VoTemporaryDir directory;
            VoAtomicFileWriter writer(directory.path("saved"));
            writer.write("late", 4);
            writer.commit();
            if (VoFileSystem::FileSize(directory.path("saved")) == 4)
                return;
        } catch (const VoException&) {
        }
        std::_Exit(EXIT_FAILURE);
    }
} const savesAtExit;

} // namespace

TEST_F(AtomicFileWriter, TheTargetShowsWhatItHeldUntilTheCommitAndNewContentAfterIt)
{
    for (const bool existed : {true, false}) {
        if (existed)
            write("file", "old");
        {
            VoAtomicFileWriter dropped(at("file"));
            write(dropped, std::string(1000000, 'n'));
        }
        VoAtomicFileWriter writer(at("file"));
        write(writer, "new");
        EXPECT_EQ(exists("file"), existed);
        EXPECT_EQ(read("file"), existed ? "old" : "");
        writer.commit();
        EXPECT_EQ(read("file"), "new");
        EXPECT_EQ(names(), Names{"file"}) << "nothing is left beside it";
        VoFileSystem::Remove(at("file"));
    }
}

TEST_F(AtomicFileWriter, BlocksOfAllSizesArriveInOrder)
{
    std::string expected;
    VoAtomicFileWriter writer(at("file"));
    for (const std::size_t size : {1UL, 65535UL, 1UL, 65536UL, 65537UL, 0UL, 300000UL, 7UL}) {
        const std::string block(size, static_cast<char>('a' + expected.size() % 26));
        expected += block;
        if (size % 2 == 0)
            write(writer, block);
        else
            EXPECT_EQ(writer.device().write(VoString(block)), size);
    }
    writer.device().close(); // as its user may
    writer.commit();
    EXPECT_EQ(read("file"), expected);
}

TEST_F(AtomicFileWriter, TheDeviceIsOpenForWritingUntilTheCommit)
{
    VoAtomicFileWriter writer(at("file"));
    EXPECT_EQ(writer.device().mode(), VoIODevice::Write);
    EXPECT_THROW(writer.device().read(1), VoIOInvalidReadException);
    EXPECT_EQ(writer.device().write("text"), 4U);
    writer.commit();
    EXPECT_THROW(writer.device().write("more"), VoIOInvalidWriteException);
    EXPECT_EQ(read("file"), "text");
}

TEST_F(AtomicFileWriter, CommitsOnce)
{
    VoAtomicFileWriter writer(at("file"));
    writer.commit();
    EXPECT_THROW_MSG(writer.commit(), VoInvalidCallException, "File already committed");
    EXPECT_THROW_MSG(writer.write("x", 1), VoInvalidCallException, "File already committed");
}

TEST_F(AtomicFileWriter, AMovedWriterGoesOnAndTheOneItReplacesIsDiscarded)
{
    VoAtomicFileWriter first(at("first"));
    write(first, "1");
    VoAtomicFileWriter second(at("second"));
    write(second, "2");
    second = std::move(first);
    write(second, "1");
    second.commit();
    EXPECT_EQ(read("first"), "11");
    EXPECT_EQ(names(), Names{"first"});
    EXPECT_TRUE(first.target().isNull());
    EXPECT_THROW_MSG(first.commit(), VoInvalidCallException, "No file to write");
    EXPECT_THROW_MSG(first.device(), VoInvalidCallException, "No file to write");
}

TEST_F(AtomicFileWriter, OnlyFilesCanBeReplaced)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("directory\\x");
    link("directory", "link");
    EXPECT_THROW_MSG(VoAtomicFileWriter(VoFilePath()), VoInvalidPathFileException, "Invalid path: ");
    EXPECT_THROW_MSG(VoAtomicFileWriter(at("directory\\")), VoInvalidPathFileException, "Invalid path: ");
    EXPECT_THROW_MSG(VoAtomicFileWriter(at("directory")), VoInvalidPathFileException, "Invalid path: ");
    EXPECT_THROW_MSG(VoAtomicFileWriter(at("link")), VoInvalidPathFileException, "Invalid path: ");
    EXPECT_THROW_MSG(VoAtomicFileWriter(at("missing\\file")), VoCannotOpenFileException,
                     "Cannot open file: " + at("missing\\file").path());
    EXPECT_THROW(VoAtomicFileWriter(VoFilePath(VoString('x', 261))), VoPathSizeFileException);
#if defined(__unix__)
    ASSERT_EQ(::mkfifo(vo::detail::ToNative(at("pipe")).c_str(), 0600), 0);
    link("pipe", "way");
    for (const char* const special : {"pipe", "way"}) {
        EXPECT_THROW_MSG(VoAtomicFileWriter(at(special)), VoInvalidPathFileException, "Invalid path: ");
    }
    EXPECT_TRUE(std::filesystem::is_fifo(vo::detail::ToNative(at("way"))));
#endif
}

TEST_F(AtomicFileWriter, TheLongestPathHasRoomForItsTemporaryName)
{
    const std::string name(VoFilePath::MaximumLength - root().path().size(), 'n');
    VoAtomicFileWriter writer(at(name.c_str()));
    write(writer, "x");
    writer.commit();
    EXPECT_EQ(names(), Names{name});
}

TEST_F(AtomicFileWriter, ATargetThatBecameADirectoryMakesTheCommitFailWithoutATrace)
{
    VoAtomicFileWriter writer(at("file"));
    write("file\\x");
    EXPECT_THROW_MSG(writer.commit(), VoFileException, "rename: Is a directory");
    EXPECT_EQ(names(), Names{"file"});
    EXPECT_EQ(read("file\\x"), "content");
}

TEST_F(AtomicFileWriter, ALinkIsReplacedAndWhatItLedToStays)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(root()));
    write("real", "old");
    link("real", "link");
    VoAtomicFileWriter writer(at("link"));
    write(writer, "new");
    writer.commit();
    EXPECT_EQ(read("real"), "old");
    EXPECT_EQ(read("link"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(native("link")));
}

#if defined(__unix__)

TEST_F(AtomicFileWriter, AReplacedFileKeepsItsPermissions)
{
    namespace fs = std::filesystem;
    write("file", "old");
    fs::permissions(native("file"), static_cast<fs::perms>(0751));
    VoAtomicFileWriter writer(at("file"));
    writer.commit();
    EXPECT_EQ(fs::status(native("file")).permissions(), static_cast<fs::perms>(0751));
}

TEST_F(AtomicFileWriter, AFullDiskLeavesTheOldContentAndNothingBesideIt)
{
    write("file", "old");
    for (const std::size_t size : {5000UL, 1000000UL}) {
        VoAtomicFileWriter writer(at("file"));
        const vo::test::FileSizeLimit limit(1000);
        if (size > 100000)
            EXPECT_THROW_MSG(write(writer, std::string(size, 'n')), VoFileException,
                             "Cannot write file: File too large");
        else
            write(writer, std::string(size, 'n')); // gathered: the disk is met by the commit
        EXPECT_THROW_MSG(writer.commit(), VoFileException, "Cannot write file: File too large");
        EXPECT_EQ(names(), Names{"file"});
    }
    EXPECT_EQ(read("file"), "old");
}

TEST_F(AtomicFileWriter, TheFirstFailureStaysWhenThereIsRoomAgain)
{
    write("file", "old");
    VoAtomicFileWriter writer(at("file"));
    {
        const vo::test::FileSizeLimit limit(1000);
        EXPECT_THROW(writer.device().write(VoString(std::string(1000000, 'n'))), VoIOException);
    }
    EXPECT_THROW(writer.device().write("more"), VoIOException);
    EXPECT_THROW_MSG(writer.commit(), VoFileException, "Cannot write file: File too large");
    EXPECT_EQ(read("file"), "old");
}

TEST_F(AtomicFileWriter, AKilledProcessLeavesTheTargetAsItWas)
{
    write("file", "old");
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        VoAtomicFileWriter writer(at("file"));
        write(writer, std::string(1000000, 'n'));
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(read("file"), "old");
    const Names left = names();
    ASSERT_EQ(left.size(), 2U);
    EXPECT_EQ(left[1].substr(0, 8), "file.tmp");
}

#endif
