#include <IO/VoFileByteStream.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <IO/VoWholeFile.h>

#include <Core/VoByteArray.h>
#include <FileSystem/detail/NativeFile.h>

#include <MemoryDevice.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <cstdint>

#if defined(__unix__)
#include <sys/stat.h>
#include <unistd.h>
#endif

using vo::test::ModeOf;

namespace {

constexpr char OpenFailure[] = "Failed to open file in given mode";
constexpr char ReadFailure[] = "Error occurred on reading from file";
constexpr char WriteFailure[] = "Error occurred on writing to file";

std::string RandomText(std::mt19937& random, std::size_t size)
{
    return vo::test::RandomBytes(random, size, std::string("abcdefg\0\x1a\r\n", 11));
}

class VoFileDeviceTest : public testing::Test
{
protected:
    VoFileDevice device(const std::string& name) const { return VoFileDevice(m_folder.path(name)); }

    vo::test::ScratchFolder m_folder;
};

} // namespace

TEST_F(VoFileDeviceTest, EachModeTreatsTheFileInItsWay)
{
    const struct
    {
        unsigned mode;
        std::optional<std::string> before;
        std::string after; // without any write, and with "XY" written where that is permitted
        std::string written;
    } rows[] = {{2, "abcd", "", "XY"},       {2, std::nullopt, "", "XY"},   {3, "abcd", "abcd", "abcdXY"},
                {3, std::nullopt, "", "XY"}, {4, "abcd", "abcd", "abcdXY"}, {4, std::nullopt, "", "XY"},
                {6, "abcd", "abcd", ""},     {8, "abcd", "", ""},           {10, "abcd", "", ""},
                {11, "abcd", "", ""},        {12, "abcd", "abcd", ""},      {18, "abcd", "", ""},
                {1, "abcd", "abcd", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "mode " << row.mode << (row.before ? "" : ", no file"));
        const vo::test::ScratchFolder folder;
        if (row.before)
            folder.write("file", *row.before);
        VoFileDevice file(folder.path("file"));
        ASSERT_TRUE(file.open(ModeOf(row.mode)));
        file.close();
        EXPECT_EQ(folder.read("file"), row.after);
        if (row.written.empty())
            continue;
        ASSERT_TRUE(file.open(ModeOf(row.mode)));
        EXPECT_EQ(file.write("XY"), 2u);
        file.close();
        EXPECT_EQ(folder.read("file"), row.written);
    }
}

TEST_F(VoFileDeviceTest, WhatCannotBeOpenedIsToldByTheLastError)
{
    m_folder.write("file", "content");
    std::filesystem::create_directory(m_folder.native("directory"));
    const std::pair<const char*, unsigned> rows[] = {{"directory", 1},    {"directory", 2},  {"directory", 3},
                                                     {"missing/file", 2}, {"file/below", 2}, {"file", 0},
                                                     {"file", 16},        {"file", 1u << 20}};
    for (const auto& [name, mode] : rows) {
        SCOPED_TRACE(testing::Message() << name << " in mode " << mode);
        VoFileDevice file = device(name);
        EXPECT_FALSE(file.open(ModeOf(mode)));
        EXPECT_EQ(file.lastError(), OpenFailure);
        EXPECT_FALSE(file.isOpen());
    }
    EXPECT_EQ(m_folder.read("file"), "content");
    VoFileDevice none;
    EXPECT_FALSE(none.open(VoIODevice::Write));
    VoFileDevice missing = device("missing");
    for (const unsigned mode : {1u, 5u, 17u})
        EXPECT_THROW_MSG(missing.open(ModeOf(mode)), VoFileNotFoundException,
                         "File not found: " + missing.path().path().toStdString());
    EXPECT_FALSE(missing.isOpen());
    VoFileInputByteStream stream(missing.path());
    char byte = 0;
    EXPECT_TRUE(!stream.isOpen() && stream.atEnd());
    EXPECT_THROW_MSG(stream.read(&byte, 1), VoIOException, ReadFailure);
    VoFileDevice overlong = device(std::string(300, 'x'));
    EXPECT_THROW(overlong.open(VoIODevice::Write), VoPathSizeFileException);
    EXPECT_THROW(VoFileOutputByteStream(overlong.path()), VoPathSizeFileException);
}

TEST_F(VoFileDeviceTest, AnOpenDeviceMovesWithItsFileAndPlaces)
{
    m_folder.write("file", "abcdef");
    VoFileDevice from = device("file");
    ASSERT_TRUE(from.open(VoIODevice::Read));
    EXPECT_EQ(from.read(2), "ab");
    VoFileDevice to = std::move(from);
    EXPECT_EQ(to.read(2), "cd");
    EXPECT_FALSE(from.isOpen()); // NOLINT: what is left is promised
    EXPECT_TRUE(from.path().isNull());
    EXPECT_TRUE(from.atEnd());
    EXPECT_FALSE(from.open(VoIODevice::Write));
    from = std::move(to);
    EXPECT_EQ(from.readRemaining(), "ef");
}

TEST_F(VoFileDeviceTest, PlacesSoughtWhileClosedCountForNothing)
{
    m_folder.write("file", "abcdef");
    VoFileDevice device = this->device("file");
    for (int opening = 0; opening < 2; ++opening) {
        device.seek_read(4);
        device.seek_write(4);
        ASSERT_TRUE(device.open(VoIODevice::Read));
        EXPECT_EQ(device.tell_read(), 0u);
        EXPECT_EQ(device.readRemaining(), "abcdef");
        device.close();
    }
}

// One that existed is read from its beginning and written at its end, a new one is written anywhere.
TEST_F(VoFileDeviceTest, IsReadAndWrittenAtTheSameTime)
{
    for (const bool existed : {true, false}) {
        std::mt19937 random(3);
        const std::string name = existed ? "old" : "new";
        std::string model = existed ? RandomText(random, 1000) : std::string();
        if (existed)
            m_folder.write(name, model);
        VoFileDevice file = device(name);
        ASSERT_TRUE(file.open(VoIODevice::ReadWrite));
        std::size_t readPlace = 0;
        std::size_t writePlace = 0;
        for (int step = 0; step < 3000; ++step) {
            switch (random() % 4) {
            case 0:
                readPlace = random() % 5000;
                file.seek_read(readPlace);
                break;
            case 1:
                writePlace = random() % 5000;
                file.seek_write(writePlace);
                break;
            case 2: {
                const std::string text = RandomText(random, 1 + random() % (step % 100 == 0 ? 100000 : 300));
                file.write(VoString(text));
                writePlace = existed ? model.size() : writePlace;
                model.resize(std::max(model.size(), writePlace + text.size()));
                model.replace(writePlace, text.size(), text);
                writePlace += text.size();
                break;
            }
            default: {
                const std::size_t count = random() % 700;
                const std::string expected = readPlace < model.size() ? model.substr(readPlace, count) : std::string();
                ASSERT_EQ(file.read(count).toStdString(), expected) << "step " << step;
                readPlace += expected.size();
            }
            }
        }
        file.close();
        EXPECT_EQ(m_folder.read(name), model);
    }
}

TEST_F(VoFileDeviceTest, ALongLineComesWhole)
{
    const std::string line = std::string(10000000, 'x') + "\n";
    m_folder.write("file", line + "next");
    VoFileDevice file = device("file");
    ASSERT_TRUE(file.open(VoIODevice::Read));
    EXPECT_EQ(file.readLine(0).toStdString(), line);
    EXPECT_EQ(file.readLine(), "next");
}

TEST_F(VoFileDeviceTest, AFileThatShrinksWhileItIsReadEndsEarlier)
{
    m_folder.write("file", std::string(200000, 'x'));
    VoFileDevice file = device("file");
    ASSERT_TRUE(file.open(VoIODevice::Read));
    file.read(10);
    std::filesystem::resize_file(m_folder.native("file"), 100);
    EXPECT_LT(file.readRemaining().size(), 200000u);
    EXPECT_TRUE(file.atEnd());
}

TEST_F(VoFileDeviceTest, ReachesPlacesBeyondFourGigabytes)
{
    constexpr std::uint64_t place = 5000000000;
    VoFileDevice file = device("sparse");
    ASSERT_TRUE(file.open(VoIODevice::ReadWrite));
    file.seek_write(place);
    file.write("far");
    file.seek_read(place - 1);
    EXPECT_EQ(file.read(10).toStdString(), std::string("\0far", 4));
    EXPECT_EQ(file.tell_read(), place + 3);
    file.seek_read(std::numeric_limits<std::size_t>::max());
    EXPECT_TRUE(file.atEnd());
    EXPECT_EQ(file.read(5), "");
}

TEST_F(VoFileDeviceTest, ReadingAHugeCountTakesNoMoreMemoryThanTheFileNeeds)
{
    m_folder.write("file", "small");
    VoFileDevice file = device("file");
    ASSERT_TRUE(file.open(VoIODevice::Read));
    EXPECT_EQ(file.read(std::numeric_limits<std::size_t>::max()), "small");
}

#if defined(__linux__)

TEST_F(VoFileDeviceTest, AFullDiskIsToldByTheWriteTheFlushOrTheClosing)
{
    VoFileDevice full("/dev/full");
    ASSERT_TRUE(full.open(VoIODevice::Write));
    full.write("small");
    EXPECT_THROW_MSG(full.close(), VoIOException, WriteFailure);
    EXPECT_EQ(full.lastError(), "Write failure");
    EXPECT_FALSE(full.isOpen());

    ASSERT_TRUE(full.open(VoIODevice::Write));
    EXPECT_THROW_MSG(full.write(VoString('x', 1000000)), VoIOException, WriteFailure);
    EXPECT_EQ(full.lastError(), "Write failure");
    EXPECT_NO_THROW(full.close()); // nothing is left to be lost

    ASSERT_TRUE(full.open(VoIODevice::Append));
    full.write("small");
    EXPECT_THROW_MSG(full.flush(), VoIOException, WriteFailure);
    full.write("lost with the device, in silence");
}

TEST_F(VoFileDeviceTest, AReadThatFailsIsToldByTheRead)
{
    VoFileDevice memory("/proc/self/mem");
    ASSERT_TRUE(memory.open(VoIODevice::Read));
    EXPECT_FALSE(memory.atEnd());
    EXPECT_THROW_MSG(memory.read(10), VoIOException, ReadFailure);
    EXPECT_THROW_MSG(memory.readLine(), VoIOException, ReadFailure);
    EXPECT_THROW_MSG(memory.readAll(), VoIOException, ReadFailure);

    VoFileInputByteStream stream(VoFilePath("/proc/self/mem"));
    char byte = 0;
    EXPECT_FALSE(stream.atEnd());
    EXPECT_THROW_MSG(stream.read(&byte, 1), VoIOException, ReadFailure);
}

TEST_F(VoFileDeviceTest, AFileWithoutASizeIsReadToItsEnd)
{
    VoFileDevice status("/proc/self/status");
    ASSERT_TRUE(status.open(VoIODevice::Read));
    EXPECT_TRUE(status.readAll().contains("VmSize"));
}

TEST_F(VoFileDeviceTest, APipeIsReadWithoutSeeking)
{
    ASSERT_EQ(::mkfifo(m_folder.native("pipe").c_str(), 0600), 0);
    const std::string content = "first\n" + std::string(200000, 'x') + "\nlast";
    std::thread writer([&] { m_folder.write("pipe", content); });
    VoFileDevice pipe = device("pipe");
    ASSERT_TRUE(pipe.open(VoIODevice::Read));
    std::string got = pipe.readLine().toStdString();
    EXPECT_EQ(got, "first\n");
    got += pipe.readRemaining().toStdString();
    writer.join();
    EXPECT_EQ(got, content);
}

TEST_F(VoFileDeviceTest, AFileWithoutPermissionIsNotOpened)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "the superuser may open everything";
    m_folder.write("file", "content");
    ASSERT_EQ(::chmod(m_folder.native("file").c_str(), 0), 0);
    for (const unsigned mode : {1u, 2u, 4u}) {
        VoFileDevice file = device("file");
        EXPECT_FALSE(file.open(ModeOf(mode)));
        EXPECT_EQ(file.lastError(), OpenFailure);
    }
}

TEST_F(VoFileDeviceTest, AByteStreamTellsAFullDisk)
{
    VoFileOutputByteStream stream(VoFilePath("/dev/full"));
    stream.write("small", 5);
    EXPECT_THROW_MSG(stream.flush(), VoIOException, WriteFailure);
    stream.write("small", 5);
    EXPECT_THROW_MSG(stream.close(), VoIOException, WriteFailure);
    EXPECT_FALSE(stream.isOpen());
    EXPECT_THROW_MSG(stream.write("late", 4), VoIOException, WriteFailure);
}

#endif

TEST_F(VoFileDeviceTest, ByteStreamsCarryAllBytesInBlocksOfAnySize)
{
    std::mt19937 random(5);
    const std::string content = RandomText(random, 500000);
    {
        VoFileOutputByteStream out(m_folder.path("file"));
        ASSERT_TRUE(out.isOpen());
        for (std::size_t place = 0; place < content.size();) {
            const std::size_t count = std::min<std::size_t>(random() % 100000, content.size() - place);
            out.write(VoByteArray(content.data() + place, count));
            place += count;
        }
        out.close();
        out.close();
    }
    EXPECT_EQ(m_folder.read("file"), content);
    VoFileInputByteStream in(m_folder.path("file"));
    std::string got;
    while (!in.atEnd()) {
        EXPECT_FALSE(in.eof());
        std::string block(random() % 100000, '#');
        block.resize(in.read(&block[0], block.size()));
        got += block;
    }
    EXPECT_EQ(got, content);
    char byte = 0;
    EXPECT_EQ(in.read(&byte, 1), 0u);
    EXPECT_TRUE(in.eof());
}

TEST_F(VoFileDeviceTest, WholeFilesAreReadUpToTheLengthAskedFor)
{
    constexpr std::size_t block = vo::detail::FileBlockSize;
    std::mt19937 random(4);
    for (const std::size_t size : {std::size_t(1), block - 1, block, block + 1, 2 * block}) {
        const std::string content = RandomText(random, size);
        const VoFilePath path = m_folder.write("file", content);
        EXPECT_TRUE(vo::ReadWholeFile(path, size) == content) << size;
        EXPECT_FALSE(vo::ReadWholeFile(path, size - 1)) << size;
    }
    EXPECT_EQ(vo::ReadWholeFile(m_folder.write("empty", ""), 0), "");
    EXPECT_THROW(vo::ReadWholeFile(m_folder.path("missing"), 1), VoFileNotFoundException);
#if defined(__linux__)
    EXPECT_THROW(vo::ReadWholeFile(VoFilePath("/proc/self/mem"), 1), VoIOException);
#endif
}
