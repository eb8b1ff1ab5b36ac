#include <IO/VoQIODevice.h>

#include <IO/VoFileDevice.h>
#include <IO/VoFileWriter.h>
#include <IO/VoStringDevice.h>

#include <MemoryDevice.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QBuffer>
#include <QtCore/QCryptographicHash>

using vo::test::MemoryDevice;
using vo::test::RandomBytes;

TEST(VoQIODevice, CarriesSmallPiecesToADeviceInFewBlocks)
{
    MemoryDevice device;
    std::string expected;
    VoQIODevice adapter(device);
    ASSERT_TRUE(adapter.open(QIODevice::WriteOnly));
    for (int i = 0; i < 30000; ++i) {
        expected += std::to_string(i);
        adapter.write(QByteArray::number(i));
    }
    adapter.close();
    EXPECT_FALSE(device.isOpen());
    EXPECT_EQ(device.content(), expected);
    EXPECT_LE(device.writes, expected.size() / 16384 + 1);
}

TEST(VoQIODevice, UsesAnOpenDeviceOfAFittingModeAsItStandsAndLeavesItOpen)
{
    const QIODevice::OpenMode all[] = {QIODevice::NotOpen, QIODevice::ReadOnly, QIODevice::WriteOnly,
                                       QIODevice::ReadWrite, QIODevice::Append};
    const std::pair<VoIODevice::Mode, std::vector<QIODevice::OpenMode>> rows[] = {
        {VoIODevice::Read, {QIODevice::ReadOnly}},
        {VoIODevice::Write, {QIODevice::WriteOnly, QIODevice::Append}},
        {VoIODevice::Append, {QIODevice::WriteOnly, QIODevice::Append}},
        {VoIODevice::ReadWrite, {QIODevice::ReadOnly, QIODevice::WriteOnly, QIODevice::ReadWrite, QIODevice::Append}},
        {VoIODevice::Write | VoIODevice::Truncate, {}}};
    for (const auto& [present, fitting] : rows) {
        for (const QIODevice::OpenMode wanted : all) {
            SCOPED_TRACE(testing::Message() << "device " << present << ", adapter " << wanted);
            VoStringDevice device("content");
            ASSERT_TRUE(device.open(present));
            VoQIODevice adapter(device);
            const bool fits = std::count(fitting.begin(), fitting.end(), wanted) != 0;
            EXPECT_EQ(adapter.open(wanted), fits);
            EXPECT_EQ(adapter.errorString() == QLatin1String("Device already open"), !fits);
            adapter.close();
            EXPECT_EQ(device.mode(), present);
        }
    }
}

TEST(VoQIODevice, WhatIsWrittenFollowsWhatTheDeviceGotBefore)
{
    VoStringDevice device;
    ASSERT_TRUE(device.open(VoIODevice::Write));
    device.write("first line\n");
    {
        VoQIODevice adapter(device);
        ASSERT_TRUE(adapter.open(QIODevice::WriteOnly));
        adapter.write("gathered");
        EXPECT_EQ(device.content(), "first line\n");
        EXPECT_TRUE(adapter.flush());
        EXPECT_EQ(device.content(), "first line\ngathered");
        adapter.write(" until destroyed");
    }
    EXPECT_EQ(device.content(), "first line\ngathered until destroyed");
    EXPECT_TRUE(device.isOpen());
}

TEST(VoQIODevice, OpensAClosedDeviceInTheMatchingMode)
{
    const std::pair<QIODevice::OpenMode, VoIODevice::Mode> rows[] = {
        {QIODevice::ReadOnly, VoIODevice::Read},       {QIODevice::ReadOnly | QIODevice::Text, VoIODevice::Read},
        {QIODevice::WriteOnly, VoIODevice::Write},     {QIODevice::WriteOnly | QIODevice::Truncate, VoIODevice::Write},
        {QIODevice::ReadWrite, VoIODevice::ReadWrite}, {QIODevice::Append, VoIODevice::Append}};
    for (const auto& [mode, expected] : rows) {
        VoStringDevice device("content");
        VoQIODevice adapter(device);
        ASSERT_TRUE(adapter.open(mode));
        EXPECT_EQ(device.mode(), expected);
        EXPECT_FALSE(adapter.open(mode));
        adapter.close();
        EXPECT_EQ(device.mode(), VoIODevice::Closed);
    }
}

TEST(VoQIODevice, KeepsTheFirstExceptionOfAWriteAndWritesNothingMore)
{
    MemoryDevice device;
    device.writable = 100000;
    VoQIODevice adapter(device);
    ASSERT_TRUE(adapter.open(QIODevice::WriteOnly));
    while (adapter.write("item") == 4)
        ASSERT_LE(device.content().size(), 100000u);
    EXPECT_TRUE(adapter.hasFailed());
    const std::size_t writes = device.writes;
    EXPECT_EQ(adapter.write("more"), -1);
    EXPECT_FALSE(adapter.seek(0));
    adapter.close();
    EXPECT_EQ(device.writes, writes);
    EXPECT_EQ(adapter.errorString(), QLatin1String("device failed"));
    for (int i = 0; i < 2; ++i)
        EXPECT_THROW_MSG(adapter.rethrow(), VoIOException, "device failed");

    device.writable = MemoryDevice::Unlimited;
    ASSERT_TRUE(adapter.open(QIODevice::WriteOnly));
    EXPECT_FALSE(adapter.hasFailed());
}

TEST(VoQIODevice, APlaceThatCannotBeWrittenAtIsAFailure)
{
    struct Fixed : VoStringDevice
    {
        using VoStringDevice::VoStringDevice;
        void seek_write(std::size_t) override { throw VoIOException("cannot go there"); }
    } device("content");
    VoQIODevice adapter(device);
    ASSERT_TRUE(adapter.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    EXPECT_EQ(adapter.read(1), "c");
    EXPECT_EQ(adapter.write("x"), -1);
    EXPECT_THROW_MSG(adapter.rethrow(), VoIOException, "cannot go there");
}

TEST(VoQIODevice, AShortWriteIsAFailure)
{
    MemoryDevice device;
    device.takenAtOnce = 3;
    VoQIODevice adapter(device);
    ASSERT_TRUE(adapter.open(QIODevice::WriteOnly));
    adapter.write("12345");
    EXPECT_FALSE(adapter.flush());
    EXPECT_THROW_MSG(adapter.rethrow(), VoIOException, "2 bytes were not written");
}

TEST(VoQIODevice, AReadThatFailsIsNotTakenForTheEnd)
{
    MemoryDevice device(std::string(100000, 'x'));
    device.readable = 50000;
    VoQIODevice adapter(device);
    ASSERT_TRUE(adapter.open(QIODevice::ReadOnly));
    QCryptographicHash hash(QCryptographicHash::Sha3_256);
    EXPECT_FALSE(hash.addData(&adapter));
    EXPECT_FALSE(adapter.atEnd());
    EXPECT_THROW_MSG(adapter.rethrow(), VoIOException, "device failed");
}

TEST(VoQIODevice, AnExceptionOfOpeningIsKept)
{
    const vo::test::ScratchFolder folder;
    VoFileDevice missing(folder.path("missing"));
    VoQIODevice adapter(missing);
    EXPECT_FALSE(adapter.open(QIODevice::ReadOnly));
    EXPECT_THROW(adapter.rethrow(), VoFileNotFoundException);

    std::filesystem::create_directory(folder.native("directory"));
    VoFileDevice directory(folder.path("directory"));
    VoQIODevice refused(directory);
    EXPECT_FALSE(refused.open(QIODevice::WriteOnly));
    EXPECT_EQ(refused.errorString(), QStringLiteral("Failed to open file in given mode"));
}

TEST(VoQIODevice, ReadsAndWritesInTurnsAsABufferDoes)
{
    for (const QIODevice::OpenMode extra :
         {QIODevice::OpenMode(QIODevice::NotOpen), QIODevice::OpenMode(QIODevice::Unbuffered)}) {
        std::mt19937 random(8);
        const QByteArray start = QByteArray::fromStdString(RandomBytes(random, 50000));
        VoStringDevice device(VoString(start.toStdString()));
        VoQIODevice adapter(device);
        QBuffer buffer;
        buffer.setData(start);
        ASSERT_TRUE(adapter.open(QIODevice::ReadWrite | extra));
        ASSERT_TRUE(buffer.open(QIODevice::ReadWrite | extra));
        for (int step = 0; step < 3000; ++step) {
            const int count = static_cast<int>(random() % (step % 50 == 0 ? 40000 : 100));
            switch (random() % 4) {
            case 0: {
                const qint64 place = static_cast<qint64>(random()) % buffer.size();
                ASSERT_TRUE(adapter.seek(place));
                ASSERT_TRUE(buffer.seek(place));
                break;
            }
            case 1: {
                const QByteArray bytes =
                    QByteArray::fromStdString(RandomBytes(random, static_cast<std::size_t>(count)));
                ASSERT_EQ(adapter.write(bytes), buffer.write(bytes));
                break;
            }
            case 2:
                ASSERT_EQ(adapter.readLine(count + 2), buffer.readLine(count + 2)) << "step " << step;
                break;
            default:
                ASSERT_EQ(adapter.read(count), buffer.read(count)) << "step " << step;
            }
            ASSERT_EQ(adapter.pos(), buffer.pos()) << "step " << step;
            ASSERT_EQ(adapter.atEnd(), buffer.atEnd()) << "step " << step;
        }
        adapter.close();
        EXPECT_EQ(device.content().toStdString(), buffer.data().toStdString());
    }
}

TEST(VoFileWriter, WritesThroughQt)
{
    const vo::test::ScratchFolder folder;
    folder.write("file", "an older and longer content than the new one");
    VoFileWriter writer(folder.path("file"));
    writer.device().write("content");
    VoFileWriter moved = std::move(writer);
    moved.close();
    moved.close();
    EXPECT_EQ(folder.read("file"), "content");
}

TEST(VoFileWriter, TellsWhatCannotBeOpenedOrWritten)
{
    const vo::test::ScratchFolder folder;
    EXPECT_THROW_MSG(VoFileWriter(folder.path("missing/file")), VoIOException, "Unable to open file for writing");
#if defined(__linux__)
    VoFileWriter full(VoFilePath("/dev/full"));
    full.device().write("small");
    EXPECT_THROW_MSG(full.close(), VoIOException, "Error occurred on writing to file");
#endif
}
