#include <RandomBytes.h>
#include <VoTestSupport.h>

#include <Core/VoBase64.h>
#include <Core/VoHostTypes.h>

#include <QtCore/QByteArray>

#include <climits>

namespace {

VoString Encoded(const std::string& bytes)
{
    return VoBase64ConverterCore::Encode(VoByteArrayOLD(bytes.data(), bytes.size()));
}

std::string Decoded(const VoString& text)
{
    const VoByteArrayOLD bytes = VoBase64ConverterCore::Decode(text);
    return std::string(bytes.cdata(), bytes.cdata() + bytes.length());
}

TEST(VoBase64ConverterCore, AgreesWithAnotherCodecAndRoundTrips)
{
    std::mt19937 engine(3);
    for (std::size_t length = 0; length < 400; ++length) {
        const std::string bytes = vo::test::RandomBytes(engine, length);
        const VoString text = Encoded(bytes);
        ASSERT_EQ(text.toStdString(), QByteArray::fromStdString(bytes).toBase64().toStdString());
        if (length == 0)
            continue;
        std::string padded = bytes;
        padded.resize((length + 2) / 3 * 3, '\0');
        ASSERT_EQ(Decoded(text), padded) << "padding is not subtracted";
    }
}

TEST(VoBase64ConverterCore, OtherLengthsAreRefused)
{
    for (const char* text : {"", "A", "AA", "AAA", "AAAAA", "AAAAAAA"})
        EXPECT_THROW_MSG(VoBase64ConverterCore::Decode(VoString(text)), VoInvalidParameterException,
                         "Invalid string length");
}

// The rule for bytes outside the alphabet, worked out by hand: "=" counts 64, unknown ones 65.
TEST(VoBase64ConverterCore, OddCharactersGiveFixedBytes)
{
    struct Row
    {
        const char* text;
        unsigned char bytes[3];
    };
    const Row rows[] = {
        {"====", {0x04, 0, 0}}, // 64<<2 is cut to 0, 64>>4 is 4
        {"A===", {0x04, 0, 0}},
        {"=AAA", {0x00, 0x00, 0x00}},
        {"/=//", {0xFC | 0x04, 0x0F, 0xFF}}, // 64<<4 is cut to 0
        {"!AAA", {0x04, 0, 0}},              // 65<<2 is cut to 4
        {"AA=/", {0, 0, 0}},
        {"AAA!", {0, 0, 0}},
        {"\xC3QAA", {0x05, 0, 0}},
        {"\xFF\x80//", {0x04, 0x1F, 0xFF}}, // 65<<4 is cut to 0x10
    };
    for (const Row& row : rows)
        EXPECT_EQ(VoBase64ConverterCore::Decode(VoString(row.text)), VoByteArrayOLD(row.bytes, 3)) << row.text;
    EXPECT_EQ(Decoded(VoString("A\0AA", 4)), std::string("\x04\x10\0", 3));
}

TEST(VoBase64Converter, NumbersKeepTheirBits)
{
    VoBase64Converter converter;
    EXPECT_EQ(converter.encodeDouble(0.0), YString("AAAAAAAAAAA="));
    EXPECT_EQ(converter.encodeDouble(1.0), YString("AAAAAAAA8D8=")) << "least significant byte first";
    EXPECT_EQ(converter.encodeInteger(1), YString("AQAAAA=="));
    EXPECT_EQ(converter.encodeInteger(1LL), YString("AQAAAAAAAAA="));

    for (const double value : {0.0, -0.0, 0.1, -1e308, 5e-324, HUGE_VAL, std::nan("")}) {
        const VoString text = VoString::Base64(value);
        const double back = converter.decodeDouble(text);
        EXPECT_EQ(std::memcmp(&back, &value, sizeof value), 0) << value;
        VoStringDoubleBase64Converter doubles;
        EXPECT_EQ(doubles.convert(value), text);
        const double again = std::as_const(doubles).convert(text);
        EXPECT_EQ(std::memcmp(&again, &value, sizeof value), 0) << value;
    }
    for (const int value : {0, -1, 42, INT_MAX, INT_MIN})
        EXPECT_EQ(converter.decodeInteger(VoString(converter.encodeInteger(value))), value);
}

TEST(VoBase64Converter, ShortAndLongTextsFillTheNumberFromTheFront)
{
    VoBase64Converter converter;
    EXPECT_EQ(converter.decodeInteger("Kg=="), 42);
    EXPECT_EQ(converter.decodeInteger("KgAAAAAA////"), 42);
    EXPECT_EQ(converter.decodeDouble("AAAA"), 0.0);
    EXPECT_EQ(converter.decodeDouble("AAAAAAAA8D///w=="), 1.0);
    EXPECT_THROW_MSG(converter.decodeDouble("AAA"), VoInvalidParameterException, "Invalid string length");
    EXPECT_THROW_MSG(converter.decodeInteger(""), VoInvalidParameterException, "Invalid string length");
}

TEST(VoBase64Converter, TextsOfEveryLengthRoundTrip)
{
    VoBase64Converter converter;
    for (const char* text : {"A", "AB", "ABC", "ABCD", "\xC3\xA4"})
        EXPECT_EQ(converter.decodeString(VoString(converter.encodeString(text))), YString(text));
}

} // namespace
