#include <Core/VoByteArray.h>

#include <RandomBytes.h>
#include <VoTestSupport.h>

#include <QtCore/QByteArray>

#include <cstdint>

namespace {

constexpr char InvalidData[] = "Cannot decompress byte array as data is invalid";

VoByteArray Bytes(const std::string& text)
{
    return VoByteArray(text.data(), text.size());
}

std::string Text(const VoByteArray& array)
{
    return array.isEmpty() ? std::string() : std::string(array.cdata(), array.size());
}

std::string Repeated(const std::string& text, std::size_t size)
{
    std::string result;
    while (result.size() < size)
        result += text;
    return result.substr(0, size);
}

std::string Noise(std::size_t size)
{
    std::mt19937 random(7);
    return vo::test::RandomBytes(random, size);
}

VoByteArray WithPrefix(std::uint32_t prefix, const VoByteArray& compressed)
{
    VoByteArray changed = compressed;
    for (std::size_t i = 0; i < 4; ++i)
        changed[i] = static_cast<char>(prefix >> (24 - 8 * i));
    return changed;
}

} // namespace

TEST(VoByteArray, CompressesToTheFormOfQtAndBack)
{
    const std::string samples[] = {"", "a", Repeated("chunk of a file, ", 100000), Noise(70000),
                                   std::string(5000, '\0')};
    for (const std::string& sample : samples) {
        for (int level = -2; level <= 13; ++level) {
            SCOPED_TRACE(testing::Message() << sample.size() << " bytes at level " << level);
            const QByteArray qt = qCompress(QByteArray::fromStdString(sample), level);
            const VoByteArray compressed = Bytes(sample).compress(level);
            EXPECT_EQ(qUncompress(QByteArray::fromStdString(Text(compressed))).toStdString(), sample);
            EXPECT_LE(compressed.size(), static_cast<std::size_t>(qt.size()) * 101 / 100 + 16);
            EXPECT_EQ(Text(compressed.decompress()), sample);
            EXPECT_EQ(Text(Bytes(qt.toStdString()).decompress()), sample);
        }
    }
}

TEST(VoByteArray, EveryTruncationOfCompressedDataIsRefused)
{
    const VoByteArray whole = Bytes(Noise(300)).compress();
    for (std::size_t size = 1; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_THROW_MSG(VoByteArray(whole.cdata(), size).decompress(), VoInvalidConversionException, InvalidData);
    }
}

TEST(VoByteArray, ALeadingSizeOtherThanThatOfTheStreamIsRefused)
{
    const VoByteArray compressed = Bytes(Repeated("abc", 1000)).compress();
    for (const std::uint32_t prefix : {0u, 1u, 999u, 1001u, 100000u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        SCOPED_TRACE(prefix);
        EXPECT_THROW_MSG(WithPrefix(prefix, compressed).decompress(), VoInvalidConversionException, InvalidData);
    }
    EXPECT_EQ(Text(WithPrefix(1000, compressed).decompress()), Repeated("abc", 1000));
}

TEST(VoByteArray, EveryFlippedBitIsRefusedOrWithoutEffect)
{
    const std::string original = Repeated("the quick brown fox ", 200);
    const VoByteArray compressed = Bytes(original).compress();
    for (std::size_t bit = 0; bit < 8 * compressed.size(); ++bit) {
        VoByteArray damaged = compressed;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
        try {
            EXPECT_EQ(Text(damaged.decompress()), original) << "bit " << bit;
        } catch (const VoInvalidConversionException& e) {
            EXPECT_STREQ(e.what(), InvalidData);
        }
    }
}

TEST(VoByteArray, BytesBehindTheStreamAreIgnored)
{
    VoByteArray compressed = Bytes("content").compress();
    compressed.append("junk", 4);
    EXPECT_EQ(Text(compressed.decompress()), "content");
}

TEST(VoByteArray, NothingDecompressesToNothing)
{
    EXPECT_TRUE(VoByteArray().decompress().isEmpty());
    EXPECT_TRUE(VoByteArray(4).decompress().isEmpty());
}

TEST(VoByteArray, ArraysBeyondTheSizeOfQtAreRefused)
{
    const VoByteArray huge(2147483648u); // never touched, so it takes no memory
    EXPECT_THROW_MSG(
        huge.compress(), VoOverflowException,
        "Cannot compress byte array as length is beyond maximum allowed size. Array size 2147483648 bytes, "
        "maximum size 2147483647 bytes.");
    EXPECT_THROW_MSG(huge.decompress(), VoOverflowException,
                     "Cannot decompress byte array as length is beyond maximum allowed size. Array size 2147483648 "
                     "bytes, maximum size 2147483647 bytes.");
}

TEST(VoByteArray, MemoryThatCannotBeHadLeavesTheArrayAsItWas)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers end the process when memory cannot be had";
#endif
    VoByteArray array = Bytes("kept");
    constexpr std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 2;
    EXPECT_THROW(array.allocate(tooMuch), VoBadAllocException);
    EXPECT_THROW(array.resize(tooMuch), VoBadAllocException);
    EXPECT_THROW(array.append("x", std::numeric_limits<std::size_t>::max() - 2), VoBadAllocException);
    EXPECT_EQ(Text(array), "kept");
}

TEST(VoByteArray, BehavesLikeAStringUnderRandomChanges)
{
    std::mt19937 random(11);
    VoByteArray array;
    std::string model;
    for (int step = 0; step < 5000; ++step) {
        const std::size_t size = random() % 3000;
        switch (random() % 7) {
        case 0:
            array.resize(size);
            model.resize(size);
            break;
        case 1:
            array.expandTo(size);
            model.resize(std::max(size, model.size()));
            break;
        case 2:
            array.append("0123456789", size % 11);
            model.append("0123456789", size % 11);
            break;
        case 3:
            array.allocate(size);
            ASSERT_GE(array.allocatedSize(), size);
            break;
        case 4:
            array = VoByteArray(array);
            break;
        case 5:
            array = std::move(array);
            break;
        default:
            if (size % 10 == 0) {
                array.clear();
                model.clear();
            }
        }
        ASSERT_EQ(Text(array), model) << "step " << step;
        ASSERT_LE(array.size(), array.allocatedSize());
    }
}

TEST(VoByteArray, CheckedAccessNamesIndexAndSize)
{
    VoByteArray array = Bytes("abc");
    EXPECT_EQ(array.at(2), 'c');
    EXPECT_THROW_MSG(array.at(3), VoIndexOutOfBoundsException, "Index out of bounds [3,3]");
}
