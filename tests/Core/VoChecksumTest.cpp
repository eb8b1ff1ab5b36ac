#include <Core/VoChecksum.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <RandomBytes.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>

#include <filesystem>

#if defined(__unix__)
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

constexpr char DigestOfNothing[] = "a7ffc6f8bf1ed76651c14756a061d662f580ff4de43b49fa82d80a4b80f8434a";

std::string Hex(const VoChecksum& checksum)
{
    return checksum.toString().toStdString();
}

std::string DigestOf(const std::string& bytes)
{
    return Hex(VoChecksum(QByteArray::fromStdString(bytes)));
}

class VoChecksumOfFile : public testing::Test
{
protected:
    vo::test::ScratchFolder m_folder;
    std::mt19937 m_random;
};

} // namespace

// Known answers of the standard's own examples.
TEST(VoChecksum, DigestsAreThoseOfTheStandard)
{
    EXPECT_EQ(DigestOf(""), DigestOfNothing);
    EXPECT_EQ(DigestOf("abc"), "3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532");
    EXPECT_EQ(DigestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "41c0dba2a9d6240849100376a8235e2c82e1b9998a999e21db32dd97496d3376");
    EXPECT_EQ(DigestOf(std::string(1000000, 'a')), "5c8875ae474a3634ba4fd55ec85bffd661f32aca75c6d699d0cdcb6c115891c1");
}

TEST(VoChecksum, TakenWhileBytesPassItIsTheSameHoweverTheyAreCut)
{
    std::mt19937 random;
    const std::string bytes = vo::test::RandomBytes(random, 10000);
    const std::string whole = DigestOf(bytes);
    for (const std::size_t piece : {1UL, 7UL, 135UL, 136UL, 137UL, 4096UL, 10000UL}) {
        vo::detail::Sha3 hasher;
        for (std::size_t i = 0; i < bytes.size(); i += piece)
            hasher.add(bytes.data() + i, std::min(piece, bytes.size() - i));
        EXPECT_EQ(Hex(hasher.finish()), whole) << piece;
        EXPECT_EQ(Hex(hasher.finish()), DigestOfNothing) << "the hasher begins anew";
    }
}

TEST(VoChecksum, OnlyTheDefaultOneIsNull)
{
    const VoChecksum null;
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(Hex(null), "");
    EXPECT_TRUE(VoChecksum(null).isNull());
    EXPECT_FALSE(VoChecksum(QByteArray()).isNull());
    EXPECT_NE(VoChecksum(QByteArray()), null);
    EXPECT_FALSE(VoChecksum::Deserialize("").isNull());
    EXPECT_EQ(VoChecksum::Deserialize(""), null) << "no byte differs";
}

TEST(VoChecksum, HexadecimalTextIsReadWithoutJudgement)
{
    struct
    {
        const char* text;
        const char* bytes;
    } const rows[] = {{"00ff10", "00ff10"}, {"A7FF", "a7ff"}, {"zz1g2", "12"}, {"abc", "0abc"}, {"xyz", ""}};
    for (const auto& row : rows)
        EXPECT_EQ(Hex(VoChecksum::Deserialize(row.text)), row.bytes) << row.text;
    const VoChecksum digest(QByteArray("some bytes"));
    EXPECT_EQ(VoChecksum::Deserialize(VoChecksum::Serialize(digest)), digest);
}

TEST_F(VoChecksumOfFile, IsThatOfItsBytes)
{
    for (const std::size_t size : {0UL, 1UL, 65536UL, 262143UL, 262144UL, 262145UL, 1000003UL}) {
        const std::string bytes = vo::test::RandomBytes(m_random, size);
        EXPECT_EQ(Hex(VoChecksum(m_folder.write("file", bytes))), DigestOf(bytes)) << size;
    }
}

TEST_F(VoChecksumOfFile, AMissingFileADirectoryAndAnOverlongPathAreToldApart)
{
    const VoFilePath missing = m_folder.path("missing");
    EXPECT_THROW_MSG(VoChecksum(missing), VoFileNotFoundException, "File not found: " + missing.path());
    EXPECT_THROW_MSG(VoChecksum(m_folder.path("")), VoInvalidPathFileException, "Invalid path: ");
    const VoFilePath behindFile = VoFilePath(m_folder.write("file", "x").path() + "\\y");
    EXPECT_THROW_MSG(VoChecksum(behindFile), VoFileNotFoundException, "File not found: " + behindFile.path());
    EXPECT_THROW_MSG(VoChecksum(VoFilePath()), VoFileNotFoundException, "File not found: ");
    EXPECT_THROW(VoChecksum(VoFilePath(VoString('x', 261))), VoPathSizeFileException);
    EXPECT_THROW(VoChecksum(VoFilePath(VoString(std::string("a\0b", 3)))), VoInvalidPathFileException);
}

#if defined(__unix__)

TEST_F(VoChecksumOfFile, APipeIsRefusedInsteadOfWaitedFor)
{
    const VoFilePath pipe = m_folder.path("pipe");
    ASSERT_EQ(::mkfifo(vo::detail::ToNative(pipe).c_str(), 0600), 0);
    EXPECT_THROW_MSG(VoChecksum(pipe), VoCannotOpenFileException, "Cannot open file: " + pipe.path());
    EXPECT_THROW_MSG(VoChecksum(VoFilePath("/dev/zero")), VoCannotOpenFileException, "Cannot open file: \\dev\\zero");
}

TEST_F(VoChecksumOfFile, AnUnreadableFileCannotBeOpened)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "the superuser reads everything";
    const VoFilePath file = m_folder.write("secret", "x");
    ASSERT_EQ(::chmod(vo::detail::ToNative(file).c_str(), 0), 0);
    EXPECT_THROW_MSG(VoChecksum(file), VoCannotOpenFileException, "Cannot open file: " + file.path());
}

// The start of a process's memory is mapped by nobody, so that reading it fails where opening succeeded.
TEST_F(VoChecksumOfFile, AReadErrorIsReported)
{
    const VoFilePath memory("/proc/self/mem");
    if (!std::filesystem::exists("/proc/self/mem"))
        GTEST_SKIP() << "no /proc here";
    EXPECT_THROW_MSG(VoChecksum(memory), VoFileException, "Cannot obtain file data");
}

#endif
