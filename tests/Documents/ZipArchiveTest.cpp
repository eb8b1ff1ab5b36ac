#include "RawZip.h"

#include <Core/VoDeque.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <Documents/detail/VoZipArchiveInternal.h>
#include <Documents/detail/ZipOutput.h>
#include <FileSizeLimit.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

using vo::test::RawArchive;
using vo::test::RawEntry;

namespace {

/// Bytes that compress about half.
std::string Bytes(std::size_t size, unsigned seed)
{
    return vo::test::Noise(size, seed, 16);
}

class ZipArchive : public testing::Test
{
protected:
    VoFilePath file() const { return m_scratch.path("a.zip"); }

    VoFilePath write(const std::string& bytes) const { return m_scratch.write("a.zip", bytes); }

    static std::string contentOf(VoZipArchive& archive, const VoFilePath& entry)
    {
        return archive.open(entry)->readRemaining().toStdString();
    }

    static std::vector<std::string> pathsOf(VoZipArchive& archive)
    {
        std::vector<std::string> texts;
        for (const VoFilePath& path : archive.paths())
            texts.push_back(path.path().toStdString());
        return texts;
    }

    vo::test::ScratchFolder m_scratch;
};

} // namespace

TEST_F(ZipArchive, EntriesOfEverySizeAndLevelComeBackInAnyOrder)
{
    const std::size_t sizes[] = {0, 1, 65535, 65536, 65537, 1500000};
    const auto levels = {VoZipArchive::NoCompression, VoZipArchive::Fastest, VoZipArchive::Best, VoZipArchive::Default,
                         static_cast<VoZipArchive::Compression>(77)};
    std::vector<std::pair<std::string, std::string>> expected;
    {
        VoZipArchive archive(file(), VoZipArchive::Write);
        for (const std::size_t size : sizes) {
            for (const auto level : levels) {
                const auto seed = static_cast<unsigned>(expected.size());
                expected.emplace_back("folder\\" + std::to_string(seed) + std::string(300 * (seed % 2), 'n'),
                                      Bytes(size, seed));
                const auto entry = archive.open(expected.back().first.c_str(), level);
                for (std::size_t done = 0; done < size;) { // in pieces of many sizes
                    const std::size_t count = std::min(size - done, std::size_t{1} << (done % 18));
                    done += entry->writeFrom(expected.back().second.data() + done, count);
                }
            }
        }
        archive.close();
        archive.close();
    }
    VoZipArchive archive(file(), VoZipArchive::Read);
    ASSERT_EQ(archive.paths().size(), expected.size());
    for (auto entry = expected.rbegin(); entry != expected.rend(); ++entry) {
        EXPECT_TRUE(contentOf(archive, entry->first.c_str()) == entry->second) << entry->first;
        EXPECT_EQ(archive.open(entry->first.c_str())->path(), entry->first.c_str());
    }
}

TEST_F(ZipArchive, AThreadThatCompressesChangesNoByte)
{
    std::vector<std::string> archives;
    for (const auto threads : {vo::detail::ZipOutput::Threads::Never, vo::detail::ZipOutput::Threads::Always}) {
        {
            vo::detail::ZipOutput output(vo::detail::ZipHandle(m_scratch.native("a.zip")), threads);
            for (unsigned entry = 0; entry < 6; ++entry) {
                const std::string bytes = Bytes(700000 * (entry % 3), entry);
                ASSERT_EQ(output.open(std::to_string(entry), -1), 0);
                for (std::size_t done = 0; done < bytes.size(); done += 9999)
                    ASSERT_EQ(output.write(bytes.data() + done, std::min<std::size_t>(9999, bytes.size() - done)), 0);
            }
            ASSERT_EQ(output.close(), 0);
        }
        archives.push_back(m_scratch.read("a.zip"));
    }
    EXPECT_GT(archives[0].size(), 500000U);
    EXPECT_TRUE(archives[0] == archives[1]);
}

#if defined(__unix__)
TEST_F(ZipArchive, AFullDiskIsReportedByAWriteOrAtTheLatestByTheClose)
{
    for (const auto threads : {vo::detail::ZipOutput::Threads::Never, vo::detail::ZipOutput::Threads::Always}) {
        for (const std::size_t size : {std::size_t{1000}, std::size_t{9000000}}) {
            const vo::test::FileSizeLimit limit(100);
            vo::detail::ZipOutput output(vo::detail::ZipHandle(m_scratch.native("a.zip")), threads);
            const std::string bytes = Bytes(size, 1);
            ASSERT_EQ(output.open("a", 1), 0);
            int code = 0;
            for (std::size_t done = 0; done < size && code == 0; done += 1000)
                code = output.write(bytes.data() + done, 1000);
            if (size > 1000) {
                EXPECT_EQ(code, vo::detail::ZipSystemError) << "a thread must not keep it to itself";
                EXPECT_EQ(output.open("b", 1), code);
            }
            EXPECT_EQ(output.close(), vo::detail::ZipSystemError);
        }
    }
    const vo::test::FileSizeLimit limit(10);
    VoZipArchive archive(file(), VoZipArchive::Write);
    archive.open("a")->write("text");
    EXPECT_THROW_MSG(archive.close(), VoInvalidCallException,
                     "Cannot close zip archive file: Zip failure in " + file().path());
    EXPECT_NO_THROW(archive.close());
}
#endif

TEST_F(ZipArchive, OnlyTheActiveEntryWorks)
{
    {
        VoZipArchive archive(file(), VoZipArchive::Write);
        const auto first = archive.open("a").lock();
        first->write("first");
        EXPECT_TRUE(first->path().isNull());
        EXPECT_TRUE(first->atEnd());
        const auto second = archive.open("b");
        EXPECT_THROW_MSG(first->write("more"), VoInvalidCallException,
                         "VoZipFile cannot be written to as it is not the active file");
        EXPECT_THROW_MSG(second->seek_write(0), VoInvalidCallException, "VoZipFile cannot be restarted");
        EXPECT_THROW_MSG(archive.paths(), VoInvalidCallException, "Zip paths cannot be returned in write mode");
        archive.close();
        EXPECT_TRUE(second.expired());
        EXPECT_THROW_MSG(archive.open("c"), VoInvalidParameterException,
                         "Cannot open zip archive file: Zip param error in c");
    }
    VoZipArchive archive(file(), VoZipArchive::Read);
    const auto first = archive.open("a").lock();
    EXPECT_EQ(first->read(2), "fi");
    EXPECT_NO_THROW(first->seek_read(0));
    EXPECT_THROW_MSG(first->seek_read(1), VoInvalidCallException, "VoZipFile cannot be restarted");
    EXPECT_EQ(first->read(static_cast<std::size_t>(-1)), "rst");
    EXPECT_TRUE(first->atEnd());
    EXPECT_EQ(first->read(1), "");
    archive.paths();
    EXPECT_TRUE(first->atEnd());
    EXPECT_THROW_MSG(first->read(0), VoInvalidCallException,
                     "VoZipFile cannot be read from as it is not the active file");
    EXPECT_THROW_MSG(first->path(), VoNullPointerException, "VoZipFile parent archive not set");
    EXPECT_THROW_MSG(archive.open("missing\\x"), VoInvalidParameterException,
                     "Cannot open zip archive file: Unzip end of list of file in missing\\x");
}

TEST_F(ZipArchive, WhatIsNoArchiveIsRefused)
{
    EXPECT_THROW_MSG(VoZipArchive(file(), VoZipArchive::Read), VoFileNotFoundException,
                     "File not found: " + file().path());
    EXPECT_THROW_MSG(VoZipArchive(file(), static_cast<VoZipArchive::Mode>(2)), VoInvalidParameterException,
                     "Unknown mode for zip/unzip");
    EXPECT_THROW_MSG(VoZipArchive(m_scratch.path("no/a.zip"), VoZipArchive::Write), VoInvalidPathFileException,
                     "Invalid path: ");
    EXPECT_THROW_MSG(VoZipArchive(m_scratch.path(""), VoZipArchive::Read), VoInvalidPathFileException,
                     "Not a zip archive: " + m_scratch.path("").path());
    const std::string empty = RawArchive({});
    const std::string whole = RawArchive({{"a", "x"}}, "remark");
    const std::string comment = RawArchive({}, std::string(65535, 'c'));
    const struct
    {
        std::string bytes;
        const char* message;
    } rows[] = {
        {"", "Not a zip archive: "},
        {std::string(100, 'P'), "Not a zip archive: "},
        {empty.substr(1), "Not a zip archive: "},
        {"PK\3\4" + std::string(90000, 'x'), "Zip archive is not complete: "},
        {whole.substr(0, whole.size() - 1), "Zip archive is not complete: "},
        {whole + "x", "Data behind the end of zip archive: "},
        {whole + std::string(100000, 'x'), "Data behind the end of zip archive: "},
        {whole + empty, "Zip archive is damaged: "}, // an empty one would hide the other
        {std::string("PK\5\6\1\0", 6) + empty.substr(6), "Zip archive of several volumes: "},
        {whole.substr(whole.find("PK\1\2")), "Zip archive is damaged: "},
    };
    for (const auto& row : rows)
        EXPECT_THROW_MSG(VoZipArchive(write(row.bytes), VoZipArchive::Read), VoInvalidPathFileException,
                         row.message + file().path());
    for (const std::string& bytes : {empty, comment}) {
        VoZipArchive archive(write(bytes), VoZipArchive::Read);
        EXPECT_TRUE(archive.paths().isEmpty());
        EXPECT_THROW_MSG(archive.open("a"), VoInvalidParameterException,
                         "Cannot open zip archive file: Unzip end of list of file in a");
    }
}

TEST_F(ZipArchive, DamagedAndLyingEntriesAreNotReadAsGood)
{
    const struct
    {
        const char* what;
        RawEntry entry;
        const char* message; // of opening or reading
    } rows[] = {
        {"too long a claim", {"a", "0123456789", 0, 0, 4000000000}, "VoZipFile read failed: Unzip bad zip file"},
        {"too short a claim", {"a", "0123456789", 0, 0, 9}, "VoZipFile read failed: Unzip CRC error"},
        {"a wrong checksum", {"a", "0123456789", 0, 0, -1, 1}, "VoZipFile read failed: Unzip CRC error"},
        {"encrypted", {"a", "0123456789", 1}, "Cannot open zip archive file: Unzip encryption not supported in a"},
        {"a method",
         {"a", "0123456789", 0, 12},
         "Cannot open zip archive file: Unzip method 12 (bzip2) not supported in a"},
        {"no known method",
         {"a", "0123456789", 0, 77},
         "Cannot open zip archive file: Unzip method 77 not supported in a"},
        {"in the directory",
         {"a", "0123456789", 0, 0, -1, 0, 0, false, 60},
         "Cannot open zip archive file: Unzip bad zip file in a"},
        {"no header there",
         {"a", "0123456789", 0, 0, -1, 0, 0, false, 42},
         "Cannot open zip archive file: Unzip bad zip file in a"},
        {"not deflated at all", {"a", "0123456789", 0, 8}, "VoZipFile read failed: Unzip faliure"},
    };
    for (const bool isLarge : {false, true}) { // whoever reads it
        for (const auto& row : rows) {
            std::vector<RawEntry> entries = {{"good", "content"}, row.entry};
            for (RawEntry& entry : entries)
                entry.isLarge = isLarge;
            VoZipArchive archive(write(RawArchive(entries)), VoZipArchive::Read);
            EXPECT_EQ(vo::test::Refusal([&] { contentOf(archive, "a"); }), row.message)
                << row.what << (isLarge ? ", large" : "");
            EXPECT_EQ(contentOf(archive, "good"), "content") << "the other entries are not concerned";
        }
    }
}

TEST_F(ZipArchive, AFailedEntryIsAtItsEndAndFailsAgain)
{
    VoZipArchive archive(write(RawArchive({{"a", "0123456789", 0, 0, 50}})), VoZipArchive::Read);
    const auto entry = archive.open("a");
    EXPECT_EQ(entry->read(10), "0123456789");
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW_MSG(entry->read(10), VoInvalidCallException, "VoZipFile read failed: Unzip bad zip file");
    EXPECT_TRUE(entry->atEnd()) << "else loops until the end would never end";
}

TEST_F(ZipArchive, NamesComeBackAsTheyAreStored)
{
    const std::string zero = std::string("a") + '\0' + "tail";
    VoZipArchive archive(write(RawArchive({{"dir/", ""},
                                           {"dir//x", "doubled"},
                                           {" b ", "blanks"},
                                           {"c\\d", "backslash"},
                                           {"e", "first"},
                                           {"e", "second"},
                                           {"", "none"},
                                           {zero, "zero"},
                                           {"E", "upper"}})),
                         VoZipArchive::Read);
    const std::vector<std::string> expected = {"dir\\", "dir\\x", "b", "c\\d", "e", "e", "", zero, "E"};
    EXPECT_EQ(pathsOf(archive), expected);
    EXPECT_EQ(contentOf(archive, "dir/x"), "doubled");
    EXPECT_EQ(contentOf(archive, "b"), "blanks");
    EXPECT_EQ(contentOf(archive, "c/d"), "backslash");
    EXPECT_EQ(contentOf(archive, "e"), "first");
    EXPECT_EQ(contentOf(archive, "E"), "upper");
    EXPECT_THROW(archive.open("B"), VoInvalidParameterException) << "names in archives are told apart by case";
}

TEST_F(ZipArchive, NoCutOrDamagedByteMakesAnEntryVanishUnnoticed)
{
    const std::string whole = RawArchive({{"a", "first"}, {"b", "second", 0, 0, -1, 0, 0, true}});
    std::vector<std::string> archives;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        archives.push_back(whole.substr(0, at));
        archives.push_back(whole);
        archives.back()[at] = static_cast<char>(whole[at] ^ 0xFF);
    }
    int refused = 0;
    for (std::size_t i = 0; i < archives.size(); ++i) {
        try {
            VoZipArchive archive(write(archives[i]), VoZipArchive::Read);
            const bool cut = i % 2 == 0;
            const bool fewer = archive.paths().size() < 2;
            EXPECT_TRUE(!fewer || !archive.internal().input->complete()) << (cut ? "cut at " : "damaged at ") << i / 2;
            for (const VoFilePath& path : archive.paths())
                EXPECT_THAT(contentOf(archive, path), testing::AnyOf("first", "second"));
        } catch (const VoException&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, static_cast<int>(whole.size()));
}

TEST_F(ZipArchive, ManyEntriesAreReadByAllPrograms)
{
    VO_SKIP_WITHOUT_SHELL();
    for (const int count : {65534, 65537}) { // around what the format's old counters hold
        {
            VoZipArchive archive(file(), VoZipArchive::Write);
            for (int i = 0; i < count; ++i)
                archive.open(VoFilePath(VoString(i)), VoZipArchive::NoCompression)->write(VoString(i));
            archive.close();
        }
        VoZipArchive archive(file(), VoZipArchive::Read);
        ASSERT_EQ(archive.paths().size(), static_cast<std::size_t>(count));
        EXPECT_TRUE(archive.internal().input->complete());
        for (int i = count - 1; i >= 0; i -= 100) // looking each up in the directory would take minutes
            ASSERT_EQ(contentOf(archive, VoFilePath(VoString(i))), std::to_string(i));
        EXPECT_EQ(m_scratch.read("a.zip").find("PK\6\6") != std::string::npos, count > 65535);
        const std::string want = std::to_string(count);
        const std::string path = "'" + m_scratch.native("a.zip").string() + "'";
        for (const std::string& command :
             {"unzip -tqq " + path, "7z t " + path + " | grep -qx 'Files: " + want + "'",
              "test $(python3 -m zipfile -l " + path + " | wc -l) = " + std::to_string(count + 1),
              "test $(bsdtar -tf " + path + " | wc -l) = " + want})
            EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
}

// What the library's own header lacks must be right whether there was room for it from the beginning or not.
TEST_F(ZipArchive, AnEntryExpectedToBeLargeIsReadByAllPrograms)
{
    VO_SKIP_WITHOUT_SHELL();
    {
        vo::detail::ZipOutput output(vo::detail::ZipHandle(m_scratch.native("a.zip")));
        for (const char* name : {"a", "b"}) {
            ASSERT_EQ(output.open(name, -1, std::uint64_t{1} << 32), 0);
            ASSERT_EQ(output.write("content", 7), 0);
        }
        ASSERT_EQ(output.close(), 0);
    }
    VoZipArchive archive(file(), VoZipArchive::Read);
    EXPECT_EQ(contentOf(archive, "b"), "content");
    const std::string path = "'" + m_scratch.native("a.zip").string() + "'";
    for (const char* command : {"unzip -tqq ", "7z t >/dev/null ", "python3 -m zipfile -t >/dev/null "})
        EXPECT_EQ(std::system((command + path).c_str()), 0) << command;
    EXPECT_EQ(std::system(("test \"$(bsdtar -xOf - <" + path + ")\" = contentcontent").c_str()), 0);
}

TEST_F(ZipArchive, InsertingMovesWhatStandsBehind)
{
    const std::string before = Bytes(2500000, 1);
    const auto opened = vo::detail::ArchiveFile::Open(m_scratch.native("a.zip"), true);
    ASSERT_EQ(opened->write(before.data(), before.size()), before.size());
    ASSERT_TRUE(opened->insert(1000, 20));
    opened->seek(1000, std::ios_base::beg);
    ASSERT_EQ(opened->write(std::string(20, '+').data(), 20), 20U);
    ASSERT_TRUE(opened->close());
    EXPECT_TRUE(m_scratch.read("a.zip") == before.substr(0, 1000) + std::string(20, '+') + before.substr(1000));
}
