#include <IO/VoFileDevice.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>

#include <MemoryDevice.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

using vo::test::MemoryDevice;
using vo::test::ModeOf;

TEST(VoIODevice, PermitsTransfersForExactModesOnly)
{
    const std::set<unsigned> readable = {1, 3};
    const std::set<unsigned> writable = {2, 3, 4};
    for (unsigned flags = 1; flags < 32; ++flags) {
        SCOPED_TRACE(flags);
        MemoryDevice device("content");
        ASSERT_TRUE(device.open(ModeOf(flags)));
        EXPECT_EQ(device.mode(), ModeOf(flags));
        char byte = 'x';
        if (readable.count(flags) != 0) {
            EXPECT_EQ(device.readAll(), "content");
            EXPECT_NO_THROW(device.restart());
        } else {
            for (const auto& reading : std::initializer_list<std::function<void()>>{
                     [&] { device.read(1); }, [&] { device.readAll(); }, [&] { device.readLine(0); },
                     [&] { device.readRemaining(); }, [&] { device.readInto(&byte, 1); }, [&] { device.restart(); }})
                EXPECT_THROW_MSG(reading(), VoIOInvalidReadException, "Cannot read from IO device");
        }
        if (writable.count(flags) != 0) {
            EXPECT_EQ(device.write("x"), 1u);
            EXPECT_EQ(device.writeFrom(&byte, 1), 1u);
        } else {
            EXPECT_THROW_MSG(device.write("x"), VoIOInvalidWriteException, "Cannot write to IO device");
            EXPECT_THROW_MSG(device.writeFrom(&byte, 1), VoIOInvalidWriteException, "Cannot write to IO device");
        }
    }
}

TEST(VoIODevice, OpeningTwiceIsRefusedAndSuccessClearsTheError)
{
    MemoryDevice device("content");
    ASSERT_TRUE(device.open(VoIODevice::Read));
    EXPECT_FALSE(device.open(VoIODevice::Write));
    EXPECT_EQ(device.lastError(), "Device already open");
    EXPECT_EQ(device.mode(), VoIODevice::Read);
    device.close();
    device.close();
    EXPECT_EQ(device.mode(), VoIODevice::Closed);
    EXPECT_THROW(device.read(1), VoIOInvalidReadException);
    EXPECT_THROW(device.write("x"), VoIOInvalidWriteException);
    ASSERT_TRUE(device.open(VoIODevice::Read));
    EXPECT_FALSE(device.hasError());
}

TEST(VoIODevice, AShortWriteTellsHowManyBytesAreMissing)
{
    MemoryDevice device;
    device.takenAtOnce = 3;
    ASSERT_TRUE(device.open(VoIODevice::Write));
    EXPECT_EQ(device.write("12345"), 3u);
    EXPECT_EQ(device.lastError(), "2 bytes were not written");
    EXPECT_EQ(device.writeFrom("1234567", 7), 3u);
    EXPECT_EQ(device.lastError(), "4 bytes were not written");
    EXPECT_EQ(device.content(), "123123");
}

TEST(VoIODevice, ReadingStopsWhereADeviceHasLessThanItThought)
{
    MemoryDevice device("0123456789");
    device.vanishesAt = 4;
    ASSERT_TRUE(device.open(VoIODevice::Read));
    EXPECT_EQ(device.readLine(4), "0123");
    EXPECT_EQ(device.readLine(0), "");
    EXPECT_EQ(device.readRemaining(), "");
}

// Every byte is read in every way as a string has it, by the defaults of the base as by what replaces them.
TEST(VoIODevice, DevicesOfAllKindsReadAsAStringDoes)
{
    const vo::test::ScratchFolder folder;
    std::mt19937 random(2);
    for (const std::size_t size : {0UL, 1UL, 7UL, 300UL, 65535UL, 65536UL, 65537UL, 300000UL}) {
        const std::string content = vo::test::RandomBytes(random, size, std::string("ab\0\r\n", 5));
        MemoryDevice plain(content);
        VoStringDevice string((VoString(content)));
        VoFileDevice file(folder.write("file", content));
        for (VoIODevice* device : std::initializer_list<VoIODevice*>{&plain, &string, &file}) {
            ASSERT_TRUE(device->open(VoIODevice::Read));
            std::size_t place = 0;
            const auto expect = [&](const std::string& got, std::size_t count) {
                const std::size_t rest = content.size() - std::min(place, content.size());
                ASSERT_EQ(got, rest == 0 ? std::string() : content.substr(place, count));
                place += got.size();
            };
            for (int step = 0; step < 200; ++step) {
                const std::size_t count = random() % (random() % 3 == 0 ? 200000 : 50);
                ASSERT_EQ(device->atEnd(), place >= content.size());
                ASSERT_EQ(file.isOpen() ? file.tell_read() : place, place);
                switch (random() % 7) {
                case 0:
                case 1:
                    expect(device->read(count).toStdString(), count);
                    break;
                case 2: {
                    std::string block(count, '#');
                    block.resize(device->readInto(&block[0], count));
                    expect(block, count);
                    break;
                }
                case 3:
                case 4: {
                    const std::size_t newline = content.find('\n', place);
                    const std::size_t length = newline == std::string::npos ? content.size() : newline + 1 - place;
                    const std::size_t limit = count % 4;
                    expect(device->readLine(limit).toStdString(), limit == 0 ? length : std::min(length, limit));
                    break;
                }
                case 5:
                    place = random() % (size + 10);
                    device->seek_read(place);
                    break;
                default:
                    if (step % 2 == 0)
                        expect(device->readRemaining().toStdString(), content.size());
                    else {
                        place = 0;
                        expect(device->readAll().toStdString(), content.size());
                    }
                }
            }
        }
    }
}

TEST(VoStringDevice, EachModePlacesItsFirstWrite)
{
    const struct
    {
        unsigned mode;
        const char* content; // after writing "XY" to "abcd"
    } rows[] = {{2, "XYcd"}, {3, "XYcd"}, {4, "abcdXY"}};
    for (const auto& row : rows) {
        VoStringDevice device("abcd");
        ASSERT_TRUE(device.open(ModeOf(row.mode)));
        device.write("XY");
        EXPECT_EQ(device.content(), row.content) << "mode " << row.mode;
    }
    VoStringDevice truncated("abcd");
    ASSERT_TRUE(truncated.open(VoIODevice::Write | VoIODevice::Truncate));
    EXPECT_EQ(truncated.content(), "");
    for (const unsigned mode : {0u, 16u, 32u}) {
        VoStringDevice refused("kept");
        EXPECT_FALSE(refused.open(ModeOf(mode)));
        EXPECT_EQ(refused.lastError(), "Failed to open file in given mode");
        EXPECT_EQ(refused.content(), "kept");
    }
    VoStringDevice again("abcd");
    for (const char* text : {"abXY", "ab12"}) { // positions start anew with each opening
        ASSERT_TRUE(again.open(VoIODevice::ReadWrite));
        again.read(2);
        again.seek_write(2);
        again.write(text + 2);
        EXPECT_EQ(again.readAll(), text);
        again.close();
    }
}

TEST(VoStringDevice, WritingBeyondTheEndFillsTheGapWithZeroBytes)
{
    VoStringDevice device("ab");
    ASSERT_TRUE(device.open(VoIODevice::ReadWrite));
    device.seek_write(4);
    EXPECT_EQ(device.content(), "ab");
    device.write("cd");
    EXPECT_EQ(device.content().toStdString(), std::string("ab\0\0cd", 6));
    device.seek_read(100);
    EXPECT_TRUE(device.atEnd());
    EXPECT_EQ(device.read(1), "");
    device.seek_write(std::numeric_limits<std::size_t>::max() - 1);
    EXPECT_THROW_MSG(device.write("cd"), VoOverflowException, "Overflow - result too large");
    EXPECT_EQ(device.content().size(), 6u);
}

TEST(VoStringDevice, APlaceThatNoMemoryReachesIsRefused)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer ends the program when memory is refused";
#endif
    VoStringDevice device("ab");
    ASSERT_TRUE(device.open(VoIODevice::ReadWrite));
    device.seek_write(std::numeric_limits<std::size_t>::max() / 8);
    EXPECT_THROW(device.write("x"), VoBadAllocException);
    EXPECT_EQ(device.content(), "ab");
}

TEST(VoIOException, TakesOverTheTextOfAStreamFailure)
{
    const std::ios_base::failure failure("disk on fire");
    const VoIOException exception(failure);
    EXPECT_STREQ(exception.what(), failure.what());
    EXPECT_STREQ(exception.name(), "VoIOException");
}
