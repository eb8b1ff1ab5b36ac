#include <Documents/VoCSVWriter.h>

#include <Core/VoDeque.h>
#include <Core/VoVariant.h>
#include <Documents/VoCSVValues.h>
#include <Documents/detail/CSVText.h>
#include <Documents/detail/TextEncoding.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

using vo::csv::DetectedType;
using vo::detail::CSVBlockSize;
using vo::detail::TextEncoding;

namespace {

constexpr std::string_view ByteOrderMark = "\xef\xbb\xbf";

// Kinds of bytes; a byte may be of both.
constexpr unsigned char Special = 1; // stands in quotes only
constexpr unsigned char BeyondASCII = 2;

VoString CodePointText(char32_t code)
{
    char digits[8];
    const auto written = std::to_chars(digits, std::end(digits), static_cast<std::uint32_t>(code), 16);
    std::string text(digits, written.ptr);
    text.insert(0, text.size() < 4 ? 4 - text.size() : 0, '0');
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
    return VoString("U+" + text);
}

} // namespace

struct VoCSVWriter::Private
{
    Private(VoIODevice& target, const VoCSVFormat& csvFormat)
        : device(target)
        , format(csvFormat)
        , separator(format.separator.toStdString())
        , newline(format.newline.toStdString())
        , quote(format.quote)
    {
        std::fill(std::begin(kinds) + 0x80, std::end(kinds), BeyondASCII);
        for (const char c : {separator.front(), quote, '\r', '\n'})
            kinds[static_cast<unsigned char>(c)] |= Special;
        gathered.reserve(2 * CSVBlockSize);
        if (csvFormat.byteOrderMark && !vo::detail::FirstUnwritable(ByteOrderMark, csvFormat.encoding))
            gathered = ByteOrderMark;
    }

    void addRaw(std::string_view text);
    void addQuoted(std::string_view text);
    unsigned char kindsIn(std::string_view text) const;
    bool needsQuotes(std::string_view text, unsigned char found) const;
    bool looksLikeMark(std::string_view text) const;
    void requireWritable(std::string_view text) const;
    bool isFormula(std::string_view text) const;
    void beginField();
    void flush();

    VoIODevice& device;
    const VoCSVFormat format;
    const std::string& separator;
    const std::string& newline;
    const char quote;
    unsigned char kinds[256] = {}; // of bytes
    bool isOwnOpening = false;

    std::string gathered;
    bool isInRow = false;
    std::size_t rows = 0;
};

void VoCSVWriter::Private::flush()
{
    if (gathered.empty())
        return;
    // Taken out even when this fails: what the device did not take is lost, and must not be written twice.
    std::string bytes;
    bytes.swap(gathered);
    if (format.encoding != TextEncoding::UTF8) {
        std::string encoded;
        vo::detail::AppendEncoded(encoded, bytes, format.encoding);
        bytes.swap(encoded);
    }
    if (device.writeFrom(bytes.data(), bytes.size()) != bytes.size())
        throw VoIOException(device);
    bytes.clear();
    bytes.swap(gathered); // keeps the memory
}

void VoCSVWriter::Private::beginField()
{
    if (isInRow)
        gathered += separator;
    isInRow = true;
}

unsigned char VoCSVWriter::Private::kindsIn(std::string_view text) const
{
    unsigned char found = 0;
    for (const char c : text)
        found |= kinds[static_cast<unsigned char>(c)];
    return found;
}

bool VoCSVWriter::Private::needsQuotes(std::string_view text, unsigned char found) const
{
    if (text.empty())
        return false;
    return vo::detail::IsCSVBlank(text.front()) || vo::detail::IsCSVBlank(text.back()) || (found & Special) != 0 ||
           (rows == 0 && !isInRow && looksLikeMark(text));
}

// Whether a reader would take the field, the first of the file, for a mark, or the mark for another one.
bool VoCSVWriter::Private::looksLikeMark(std::string_view text) const
{
    const bool hasMark = !gathered.empty();
    std::string bytes;
    vo::detail::AppendEncoded(bytes, gathered + std::string(text.substr(0, 16)) + separator, format.encoding);
    const auto mark = vo::detail::MarkOf(bytes);
    return mark && !(hasMark && mark->encoding == format.encoding);
}

void VoCSVWriter::Private::requireWritable(std::string_view text) const
{
    const auto character = vo::detail::FirstUnwritable(text, format.encoding);
    if (!character)
        return;
    const VoString where = " in CSV at row " + VoString(rows + 1);
    if (*character == vo::detail::NotUTF8)
        throw VoInvalidParameterException("Text is not UTF-8" + where);
    throw VoInvalidParameterException("Character " + CodePointText(*character) + " is not in " +
                                      vo::csv::EncodingName(format.encoding) + where);
}

bool VoCSVWriter::Private::isFormula(std::string_view text) const
{
    return format.guardFormulas && !text.empty() &&
           std::string_view("=+-@").find(text.front()) != std::string_view::npos &&
           DetectedType(text, format) == VoVariant::String;
}

void VoCSVWriter::Private::addRaw(std::string_view text)
{
    beginField();
    gathered.append(text.data(), text.size());
}

void VoCSVWriter::Private::addQuoted(std::string_view text)
{
    beginField();
    gathered += quote;
    for (std::size_t place = text.find(quote); place != std::string_view::npos; place = text.find(quote)) {
        gathered.append(text.data(), place + 1);
        gathered += quote;
        text.remove_prefix(place + 1);
    }
    gathered.append(text.data(), text.size());
    gathered += quote;
}

VoCSVWriter::VoCSVWriter(VoIODevice& device, const VoCSVFormat& format)
{
    vo::detail::RequireValid(format);
    m_private = std::make_unique<Private>(device, format);
    if (device.isOpen())
        return;
    if (!device.open(VoIODevice::Write))
        throw VoIOException(device);
    m_private->isOwnOpening = true;
}

VoCSVWriter::~VoCSVWriter()
{
    try {
        finish();
    } catch (...) { // who needs to know calls finish()
    }
}

void VoCSVWriter::addText(std::string_view text, Quotes quotes)
{
    const unsigned char found = m_private->kindsIn(text);
    if ((found & BeyondASCII) != 0)
        m_private->requireWritable(text);
    if (m_private->isFormula(text))
        return m_private->addQuoted("'" + std::string(text));
    if (quotes == Quotes::Always || m_private->needsQuotes(text, found))
        return m_private->addQuoted(text);
    m_private->addRaw(text);
}

void VoCSVWriter::addValue(const VoVariant& value)
{
    switch (value.type()) {
    case VoVariant::Null:
        return m_private->addRaw({});
    case VoVariant::Double: // in quotes where the separator has a character of it
        return addText(vo::detail::DoubleText(value.asDouble(), m_private->format));
    case VoVariant::String: {
        const std::string& text = value.asString().toStdString();
        const bool isText = DetectedType(text, m_private->format) == VoVariant::String;
        return addText(text, isText ? Quotes::WhenNeeded : Quotes::Always);
    }
    default:
        return addText(value.toString().toStdString());
    }
}

void VoCSVWriter::endRow()
{
    m_private->gathered += m_private->newline;
    m_private->isInRow = false;
    ++m_private->rows;
    if (m_private->gathered.size() >= CSVBlockSize)
        m_private->flush();
}

void VoCSVWriter::writeRow(const VoDeque<VoString>& fields)
{
    for (const VoString& field : fields)
        addText(field.toStdString());
    endRow();
}

void VoCSVWriter::writeRow(const VoDeque<VoVariant>& values)
{
    for (const VoVariant& value : values)
        addValue(value);
    endRow();
}

std::size_t VoCSVWriter::rowNumber() const noexcept
{
    return m_private->rows;
}

void VoCSVWriter::finish()
{
    m_private->flush();
    if (!m_private->isOwnOpening)
        return;
    m_private->isOwnOpening = false;
    m_private->device.close();
}
