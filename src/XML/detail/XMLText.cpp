#include <XML/detail/XMLText.h>

#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>

#include <QtCore/QString>
#include <QtCore/QStringView>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vo::detail {

namespace {

using namespace std::string_view_literals;

// A QString of this many units is half of what its 32-bit sizes and byte counts could address.
constexpr std::size_t LongestText = std::size_t(1) << 29;

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF"sv;
constexpr unsigned char LeadOfNonCharacters = 0xEF; // U+FFFE is EF BF BE, U+FFFF is EF BF BF

constexpr std::uint64_t EachByte(unsigned char byte)
{
    return UINT64_C(0x0101010101010101) * byte;
}

constexpr bool HasZeroByte(std::uint64_t bytes)
{
    return ((bytes - EachByte(0x01)) & ~bytes & EachByte(0x80)) != 0;
}

// False only if none of the eight bytes is below 0x20 or leads a non-character; may be true for a tab or line break.
constexpr bool MayHoldForbidden(std::uint64_t bytes)
{
    const bool anyControl = ((bytes - EachByte(0x20)) & ~bytes & EachByte(0x80)) != 0;
    return anyControl || HasZeroByte(bytes ^ EachByte(LeadOfNonCharacters));
}

bool IsForbiddenAt(std::string_view text, std::size_t index)
{
    const auto byte = static_cast<unsigned char>(text[index]);
    if (byte < 0x20)
        return byte != '\t' && byte != '\n' && byte != '\r';
    if (byte != LeadOfNonCharacters)
        return false;
    const std::string_view character = text.substr(index, 3);
    return character == "\xEF\xBF\xBE"sv || character == "\xEF\xBF\xBF"sv;
}

} // namespace

QString ToQtText(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    if (bytes.size() > LongestText)
        throw VoOverflowException();
    QString decoded = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    if (std::string_view(bytes).substr(0, ByteOrderMark.size()) == ByteOrderMark)
        decoded.prepend(QChar(QChar::ByteOrderMark)); // Qt takes it for an encoding mark and drops it
    return decoded;
}

VoString FromQtText(QStringView text)
{
    std::string bytes(static_cast<std::size_t>(text.size()), '\0');
    ushort seen = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const ushort unit = text.utf16()[i];
        seen = static_cast<ushort>(seen | unit);
        bytes[i] = static_cast<char>(unit);
    }
    if (seen < 0x80)
        return VoString(std::move(bytes));
    const QByteArray encoded = text.toUtf8();
    return VoString(std::string(encoded.constData(), static_cast<std::size_t>(encoded.size())));
}

bool IsXMLText(const VoString& text)
{
    const std::string_view bytes = text.toStdString();
    std::size_t index = 0;
    while (index < bytes.size()) {
        std::uint64_t block = 0;
        if (bytes.size() - index >= sizeof(block)) {
            std::memcpy(&block, bytes.data() + index, sizeof(block));
            if (!MayHoldForbidden(block)) {
                index += sizeof(block);
                continue;
            }
        }
        const std::size_t end = std::min(index + sizeof(block), bytes.size());
        for (; index < end; ++index) {
            if (IsForbiddenAt(bytes, index))
                return false;
        }
    }
    return true;
}

void RequireXMLText(const VoString& text)
{
    if (!IsXMLText(text))
        throw VoInvalidXMLOperation("Character not allowed in XML");
}

} // namespace vo::detail
