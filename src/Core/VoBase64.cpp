#include <Core/VoBase64.h>

#include <Core/VoHostTypes.h>
#include <Core/VoThrow.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

constexpr char Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
constexpr unsigned char PadValue = 64;
constexpr unsigned char UnknownValue = 65;

// The value of each byte: its place in the alphabet.
constexpr std::array<unsigned char, 256> MakeValues()
{
    std::array<unsigned char, 256> values{};
    for (unsigned char& value : values)
        value = UnknownValue;
    for (unsigned char i = 0; i <= PadValue; ++i)
        values[static_cast<unsigned char>(Alphabet[i])] = i;
    return values;
}

constexpr std::array<unsigned char, 256> Values = MakeValues();

unsigned char ValueOf(char c)
{
    return Values[static_cast<unsigned char>(c)];
}

std::string EncodeBytes(const unsigned char* bytes, std::size_t length)
{
    std::string text((length + 2) / 3 * 4, Alphabet[PadValue]);
    char* out = text.data();
    for (; length >= 3; length -= 3, bytes += 3) {
        *out++ = Alphabet[bytes[0] >> 2];
        *out++ = Alphabet[(bytes[0] & 0x03) << 4 | bytes[1] >> 4];
        *out++ = Alphabet[(bytes[1] & 0x0f) << 2 | bytes[2] >> 6];
        *out++ = Alphabet[bytes[2] & 0x3f];
    }
    if (length == 0)
        return text;
    const unsigned char second = length == 2 ? bytes[1] : static_cast<unsigned char>(0);
    *out++ = Alphabet[bytes[0] >> 2];
    *out++ = Alphabet[(bytes[0] & 0x03) << 4 | second >> 4];
    if (length == 2)
        *out++ = Alphabet[(second & 0x0f) << 2];
    return text;
}

// Padding and unknown characters give values above six bits; the casts cut them off.
void DecodeGroup(const char* text, unsigned char* bytes)
{
    const unsigned a = ValueOf(text[0]);
    const unsigned b = ValueOf(text[1]);
    const unsigned c = ValueOf(text[2]);
    const unsigned d = ValueOf(text[3]);
    bytes[0] = static_cast<unsigned char>(a << 2 | b >> 4);
    bytes[1] = c < PadValue ? static_cast<unsigned char>(b << 4 | c >> 2) : static_cast<unsigned char>(0);
    bytes[2] = c < PadValue && d < PadValue ? static_cast<unsigned char>(c << 6 | d) : static_cast<unsigned char>(0);
}

template <typename Unsigned>
std::string EncodeNumber(Unsigned bits)
{
    unsigned char bytes[sizeof(Unsigned)];
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i)
        bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
    return EncodeBytes(bytes, sizeof(Unsigned));
}

template <typename Unsigned>
Unsigned DecodeNumber(const VoString& text)
{
    const VoByteArrayOLD bytes = VoBase64ConverterCore::Decode(text);
    Unsigned bits = 0;
    for (std::size_t i = 0; i < std::min(bytes.length(), sizeof(Unsigned)); ++i)
        bits |= static_cast<Unsigned>(static_cast<Unsigned>(bytes[i]) << (8 * i));
    return bits;
}

template <typename To, typename From>
To BitCast(const From& from)
{
    static_assert(sizeof(To) == sizeof(From) && std::is_trivially_copyable_v<To>);
    To to;
    std::memcpy(&to, &from, sizeof(To));
    return to;
}

std::string EncodeReal(double value)
{
    return EncodeNumber(BitCast<std::uint64_t>(value));
}

double DecodeReal(const VoString& text)
{
    return BitCast<double>(DecodeNumber<std::uint64_t>(text));
}

} // namespace

VoString VoBase64ConverterCore::Encode(const VoByteArrayOLD& bytes)
{
    return VoString(EncodeBytes(bytes.cdata(), bytes.length()));
}

VoByteArrayOLD VoBase64ConverterCore::Decode(const VoComparableString& text)
{
    const std::size_t length = text.size();
    if (length == 0 || length % 4 != 0)
        vo::detail::ThrowInvalidParameter("Invalid string length");
    const char* characters = &text[0];
    VoByteArrayOLD bytes(length / 4 * 3);
    for (std::size_t group = 0; group < length / 4; ++group)
        DecodeGroup(characters + 4 * group, bytes.data() + 3 * group);
    return bytes;
}

VoBase64Converter::~VoBase64Converter() = default;

YString VoBase64Converter::encodeDouble(const double& value)
{
    return YString(EncodeReal(value));
}

YString VoBase64Converter::encodeInteger(const long long& value)
{
    return YString(EncodeNumber(static_cast<std::uint64_t>(value)));
}

YString VoBase64Converter::encodeInteger(const int& value)
{
    return YString(EncodeNumber(static_cast<std::uint32_t>(value)));
}

YString VoBase64Converter::encodeString(const VoString& text)
{
    return YString(EncodeBytes(reinterpret_cast<const unsigned char*>(text.c_str()), text.size()));
}

double VoBase64Converter::decodeDouble(const VoString& text)
{
    return DecodeReal(text);
}

int VoBase64Converter::decodeInteger(const VoString& text)
{
    return static_cast<int>(DecodeNumber<std::uint32_t>(text));
}

YString VoBase64Converter::decodeString(const VoString& text)
{
    const VoByteArrayOLD bytes = VoBase64ConverterCore::Decode(text);
    const unsigned char* const end = std::find(bytes.cdata(), bytes.cdata() + bytes.length(), '\0');
    return YString(std::string(bytes.cdata(), end));
}

VoStringDoubleBase64Converter::~VoStringDoubleBase64Converter() = default;

VoString VoStringDoubleBase64Converter::convert(const double& value)
{
    return VoString(EncodeReal(value));
}

double VoStringDoubleBase64Converter::convert(const VoString& text) const
{
    return DecodeReal(text);
}
