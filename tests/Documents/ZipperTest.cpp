#include "RawZip.h"

#include <Core/VoDeque.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <Documents/VoZipper.h>
#include <FileSizeLimit.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <HostileNames.h>
#include <Links.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#if defined(__unix__)
#include <sys/stat.h>
#endif

namespace fs = std::filesystem;

using vo::test::RawArchive;
using vo::test::RawEntry;
using vo::test::Tree;

namespace {

class Zipper : public testing::Test
{
protected:
    /// Runs a command of the shell in the scratch directory.
    int shell(const std::string& command) const
    {
        return std::system(("cd '" + m_scratch.native().string() + "' && ( " + command + " ) >log 2>&1").c_str());
    }

    VoFilePath path(const std::string& name) const { return m_scratch.path(name); }
    VoFilePath directory(const std::string& name) const { return VoFilePath(path(name).path() + "\\"); }

    Tree tree(const std::string& name) const { return m_scratch.tree(name); }

    /// A tree with what other programs might see otherwise.
    Tree plantTree(const std::string& name) const
    {
        m_scratch.write(name + "/empty", "");
        m_scratch.write(name + "/read me.txt", "text\r\n");
        m_scratch.write(name + "/large.bin", vo::test::Noise(200000, 1, 16));
        m_scratch.write(name + "/sub/Gr\xC3\xB6\xC3\x9F"
                               "e \xE2\x82\xAC",
                        std::string("\0\x01zero", 6));
        m_scratch.write(name + "/sub/deep/" + std::string(100, 'n'), "deep");
        return tree(name);
    }

    vo::test::ScratchFolder m_scratch;
};

} // namespace

TEST_F(Zipper, ArchivesOfOtherProgramsAreUnpacked)
{
    VO_SKIP_WITHOUT_SHELL();
    const Tree expected = plantTree("in");
    const char* commands[] = {
        "cd in && LC_ALL=C.UTF-8 zip -qr ../a.zip .",
        "cd in && LC_ALL=C.UTF-8 zip -qr -0 -fd ../a.zip .",
        "cd in && LC_ALL=C.UTF-8 bsdtar -c --format zip -f ../a.zip *",
        "cd in && LC_ALL=C.UTF-8 bsdtar -c --format zip -f ../a.zip .",
        "cd in && LC_ALL=C.UTF-8 7z a -tzip -bd ../a.zip .",
        "python3 -m zipfile -c a.zip in/*",
        "cd in && LC_ALL=C.UTF-8 zip -qr -fz ../a.zip .",
        "cd in && LC_ALL=C.UTF-8 zip -qr -0 -fz ../c.zip . && cat large.bin ../c.zip >../a.zip",
        "cd in && LC_ALL=C.UTF-8 bsdtar -c --format zip --options zip:zip64 -f ../a.zip *",
        "python3 -m zipfile -c a.zip in/* && python3 -c \"import zipfile; "
        "zipfile.ZipFile('a.zip', 'a').comment = b'PK\\5\\6' * 10000 + b'c' * 25535\"",
        "cat /dev/urandom | head -c 70000 >b; cd in && LC_ALL=C.UTF-8 zip -qr ../c.zip . && cat ../b ../c.zip "
        ">../a.zip",
    };
    for (const char* command : commands) {
        fs::remove_all(m_scratch.native("out"));
        fs::remove(m_scratch.native("a.zip"));
        ASSERT_EQ(shell(command), 0) << command << m_scratch.read("log");
        VoZipper::Unzip(path("a.zip"), directory("out"));
        EXPECT_TRUE(tree("out") == expected) << command;
    }
}

TEST_F(Zipper, OtherProgramsUnpackOurArchives)
{
    VO_SKIP_WITHOUT_SHELL();
    const Tree expected = plantTree("in");
    fs::create_directory(m_scratch.native("in/hollow")); // holds no file and is left out
    VoZipper::Zip(path("a.zip"), path("in"));
    ASSERT_EQ(shell("unzip -tq a.zip"), 0) << m_scratch.read("log");
    ASSERT_EQ(shell("7z t a.zip"), 0) << m_scratch.read("log");
    const char* commands[] = {
        // Not unzip: names without a Unix mode, which ours have, it takes for another encoding whatever their flag
        // says.
        "LC_ALL=C.UTF-8 bsdtar -xf ../a.zip",
        "python3 -c 'import zipfile; a = zipfile.ZipFile(\"../a.zip\"); a.extractall(); "
        "assert {e.date_time for e in a.infolist()} == {(1980, 1, 1, 0, 0, 0)}'",
    };
    for (const char* command : commands) {
        fs::remove_all(m_scratch.native("out"));
        ASSERT_EQ(shell(std::string("mkdir out && cd out && ") + command), 0) << command << m_scratch.read("log");
        EXPECT_TRUE(tree("out") == expected) << command;
    }
}

TEST_F(Zipper, ASingleFileIsStoredUnderItsBareName)
{
    m_scratch.write("in/sub/file.txt", "text");
    for (const char* source : {"in/sub/file.txt", "in/sub"}) {
        VoZipper::Zip(path("a.zip"), path(source));
        VoZipArchive archive(path("a.zip"), VoZipArchive::Read);
        EXPECT_EQ(archive.paths(), VoDeque<VoFilePath>{VoFilePath("file.txt")});
        EXPECT_EQ(archive.open("file.txt")->readAll(), "text");
    }
}

#if defined(__unix__)

TEST_F(Zipper, TheSameTreeGivesTheSameBytesOnAnyDay)
{
    plantTree("in");
    VoZipper::Zip(path("a.zip"), path("in"));
    ASSERT_EQ(shell("cp -r in other && find other -exec touch -d 2001-02-03 {} + && chmod -R u=rwX,go= other"), 0);
    ::setenv("TZ", "Asia/Tokyo", 1);
    const mode_t old = ::umask(0077);
    VoZipper::Zip(path("b.zip"), directory("other"));
    ::umask(old);
    ::unsetenv("TZ");
    EXPECT_TRUE(m_scratch.read("a.zip") == m_scratch.read("b.zip"));
}

#endif

TEST_F(Zipper, AnArchiveInItsOwnSourceIsNotPackedAndKeptUntilTheNewOneIsWhole)
{
    m_scratch.write("in/file", "text");
    const Tree expected = tree("in");
    for (int i = 0; i < 3; ++i)
        VoZipper::Zip(path("in/a.zip"), path("in"));
    VoZipper::Unzip(path("in/a.zip"), directory("out"));
    EXPECT_EQ(tree("out"), expected);

    const std::string before = m_scratch.read("in/a.zip");
    EXPECT_THROW_MSG(VoZipper::Zip(path("in/a.zip"), path("missing")), VoCannotOpenFileException,
                     "Cannot open file: " + path("missing").path());
#if defined(__unix__)
    fs::create_symlink("/dev/null", m_scratch.native("in/device"));
    EXPECT_THROW(VoZipper::Zip(path("in/a.zip"), path("in")), VoCannotOpenFileException);
    fs::remove(m_scratch.native("in/device"));
    m_scratch.write("in/FILE", "other");
    EXPECT_THROW_MSG(VoZipper::Zip(path("in/a.zip"), path("in")), VoValidationException,
                     "Invalid path in zip archive: file");
    fs::remove(m_scratch.native("in/FILE"));
    {
        const vo::test::FileSizeLimit limit(50);
        EXPECT_THROW_MSG(VoZipper::Zip(path("in/a.zip"), path("in")), VoInvalidCallException,
                         "Cannot close zip archive file: Zip failure in " + path("in/a.zip").path());
    }
#endif
    EXPECT_TRUE(m_scratch.read("in/a.zip") == before);
    EXPECT_EQ(tree("in").size(), 2U) << "nothing is left beside it";
}

TEST_F(Zipper, HostileArchivesAreRefusedBeforeAnythingIsWritten)
{
    const auto invalid = [](const std::string& name) { return "Invalid path in zip archive: " + name; };
    const std::string zero("a\0b", 3);
    struct Row
    {
        std::vector<RawEntry> entries;
        std::string message;
    };
    std::vector<Row> rows = {
        {{{"a", "1"}, {"a", "2"}}, invalid("a")},
        {{{"a", "1"}, {"A", "2"}}, invalid("A")},
        {{{"a//b", "1"}, {"a/b", "2"}}, invalid("a/b")},
        {{{"a", "1"}, {"././a", "2"}}, invalid("././a")},
        {{{"a", "1"}, {"a/b", "2"}}, invalid("a/b")},
        {{{"A/b", "1"}, {"a", "2"}}, invalid("a")},
        {{{"a", "1"}, {"a/", ""}}, invalid("a/")},
        {{{"a", "x", 1}}, "Cannot open zip archive file: Unzip encryption not supported in a"},
        {{{"a", "x", 0, 9}}, "Cannot open zip archive file: Unzip method 9 (deflate64) not supported in a"},
        {{{"a", "1"}, {"b", "1", 0, 0, -1, 0, 0, false, 39}}, "Overlapping entries in zip archive: b"},
        {{{"b", "1", 0, 0, -1, 0, 0, true, 20}}, "Overlapping entries in zip archive: b"},
        {{{zero, "x"}}, invalid(zero)},
    };
    for (const std::string name : vo::test::HostileNames)
        rows.push_back({{{name, "x"}}, invalid(name)});
    for (const std::string name : {"..\\evil", "\\evil", "./../evil"})
        rows.push_back({{{name, "x"}}, invalid(name)});
    if (vo::test::CanMakeLinks(m_scratch.native())) {
        rows.push_back({{{"link/evil", "x"}}, invalid("link/evil")});
        rows.push_back({{{"link/", ""}}, invalid("link/")});
    }
    fs::create_directory(m_scratch.native("outside"));
    for (const auto& row : rows) {
        fs::remove_all(m_scratch.native("out"));
        fs::create_directory(m_scratch.native("out"));
        vo::test::MakeLink(m_scratch.native("outside"), m_scratch.native("out/link"));
        std::vector<RawEntry> entries = {{"good", "fine"}};
        entries.insert(entries.end(), row.entries.begin(), row.entries.end());
        m_scratch.write("a.zip", RawArchive(entries));
        EXPECT_EQ(vo::test::Refusal([&] { VoZipper::Unzip(path("a.zip"), directory("out")); }), row.message);
        EXPECT_FALSE(fs::exists(m_scratch.native("out/good"))) << row.message;
        EXPECT_TRUE(fs::is_empty(m_scratch.native("outside"))) << row.message;
    }
    m_scratch.write("a.zip", RawArchive({{"good", "fine"}, {std::string(251, 'n'), "x"}}));
    EXPECT_THROW(VoZipper::Unzip(path("a.zip"), directory("out")), VoPathSizeFileException);
    const std::vector<RawEntry> two = {{"good", "fine"}, {"b", "x"}};
    std::string damaged = RawArchive(two);
    damaged[damaged.rfind("PK\1\2")] = 'x';
    for (const std::string& bytes : {damaged, RawArchive(two, "", -1), RawArchive(two, "", 1)}) {
        m_scratch.write("a.zip", bytes);
        EXPECT_THROW_MSG(VoZipper::Unzip(path("a.zip"), directory("out")), VoInvalidParameterException,
                         "Cannot open zip archive file: Unzip bad zip file in " + path("a.zip").path());
        EXPECT_FALSE(fs::exists(m_scratch.native("out/good")));
    }
}

TEST_F(Zipper, AClaimThatNoDiskCanHoldIsRefusedBeforeAnythingIsWritten)
{
    std::vector<RawEntry> entries(5000, {"", "x", 0, 0, 0xFFFFFFFE});
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i].name = std::to_string(i);
    m_scratch.write("a.zip", RawArchive(entries)); // 20 terabytes
    EXPECT_THROW_MSG(VoZipper::Unzip(path("a.zip"), directory("out")), VoFileException,
                     "Not enough disk space to unzip archive");
    EXPECT_FALSE(fs::exists(m_scratch.native("out")));
}

TEST_F(Zipper, DamagedContentLeavesTheFilesBeforeItAndNothingOfItself)
{
    m_scratch.write("a.zip", RawArchive({{"d/good", "fine"}, {"d/bad", "0123456789", 0, 0, -1, 1}, {"last", "x"}}));
    m_scratch.write("out/d/bad", "as it was");
    EXPECT_THROW_MSG(VoZipper::Unzip(path("a.zip"), directory("out")), VoInvalidCallException,
                     "VoZipFile read failed: Unzip CRC error");
    EXPECT_EQ(tree("out"), (Tree{{"d/", ""}, {"d/bad", "as it was"}, {"d/good", "fine"}}));
}

TEST_F(Zipper, UnpackingReplacesFilesAndLinksButNoDirectories)
{
    m_scratch.write("outside", "mine");
    m_scratch.write("out/old", "old");
    vo::test::MakeLink("../outside", m_scratch.native("out/link"));
    const std::uint32_t folder = 0x10; // as DOS has it
    m_scratch.write("a.zip", RawArchive({{"link", "new"},
                                         {"old", "new", 0, 0, -1, 0, folder}, // with content
                                         {"hollow", "", 0, 0, -1, 0, folder},
                                         {"a/b/c/", ""}}));
    VoZipper::Unzip(path("a.zip"), directory("out"));
    EXPECT_EQ(m_scratch.read("outside"), "mine");
    EXPECT_FALSE(fs::is_symlink(m_scratch.native("out/link")));
    EXPECT_EQ(tree("out"),
              (Tree{{"link", "new"}, {"old", "new"}, {"hollow/", ""}, {"a/", ""}, {"a/b/", ""}, {"a/b/c/", ""}}));
    m_scratch.write("a.zip", RawArchive({{"hollow", "x"}}));
    EXPECT_THROW_MSG(VoZipper::Unzip(path("a.zip"), directory("out")), VoCannotOpenFileException,
                     "Cannot open file: " + path("out/hollow").path());
    EXPECT_THROW_MSG(VoZipper::Unzip(path("no.zip"), path("out")), VoFileException,
                     "Cannot unzip as target path is not a directory");
}
