#include <Documents/VoCSVWriter.h>

#include <Core/NumberText.h>
#include <Core/VoDeque.h>
#include <Core/VoVariant.h>
#include <Documents/CSVText.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <algorithm>
#include <charconv>
#include <string>

using vo::detail::DetectedType;

namespace {

constexpr std::size_t blockSize = 256 * 1024;
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

// With a point, so that it is read as a Double again.
std::string DoubleText(double value)
{
    std::string text = vo::detail::ShortestText(value);
    if (text.find_first_not_of("-0123456789") == std::string::npos)
        text += ".0";
    return text;
}

} // namespace

struct VoCSVWriter::Private
{
    Private(VoIODevice& target, const VoCSVFormat& csvFormat)
        : device(target)
        , separator(csvFormat.separator.toStdString())
        , newline(csvFormat.newline.toStdString())
        , quote(csvFormat.quote)
        , guardFormulas(csvFormat.guardFormulas)
    {
        for (const char c : {separator.front(), quote, '\r', '\n'})
            isSpecial[static_cast<unsigned char>(c)] = true;
        gathered.reserve(2 * blockSize);
        if (csvFormat.byteOrderMark)
            gathered = byteOrderMark;
    }

    void addRaw(std::string_view text);
    void addQuoted(std::string_view text);
    bool needsQuotes(std::string_view text) const;
    bool isFormula(std::string_view text) const;
    void beginField();
    void flush();

    VoIODevice& device;
    const std::string separator;
    const std::string newline;
    const char quote;
    const bool guardFormulas;
    bool isSpecial[256] = {}; // bytes that stand in quotes only
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
    if (device.writeFrom(bytes.data(), bytes.size()) != bytes.size())
        throw VoIOException(device.lastError());
    bytes.clear();
    bytes.swap(gathered); // keeps the memory
}

void VoCSVWriter::Private::beginField()
{
    if (isInRow)
        gathered += separator;
    isInRow = true;
}

bool VoCSVWriter::Private::needsQuotes(std::string_view text) const
{
    if (text.empty())
        return false;
    if (IsBlank(text.front()) || IsBlank(text.back()))
        return true;
    for (const char c : text) {
        if (isSpecial[static_cast<unsigned char>(c)])
            return true;
    }
    // At the very beginning it would be taken for a mark.
    return rows == 0 && text.substr(0, byteOrderMark.size()) == byteOrderMark;
}

bool VoCSVWriter::Private::isFormula(std::string_view text) const
{
    return guardFormulas && !text.empty() && std::string_view("=+-@").find(text.front()) != std::string_view::npos &&
           DetectedType(text) == VoVariant::String;
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
        throw VoIOException(device.lastError());
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
    if (m_private->isFormula(text))
        return m_private->addQuoted("'" + std::string(text));
    if (quotes == Quotes::Always || m_private->needsQuotes(text))
        return m_private->addQuoted(text);
    m_private->addRaw(text);
}

void VoCSVWriter::addValue(const VoVariant& value)
{
    switch (value.type()) {
    case VoVariant::Null:
        return m_private->addRaw({});
    case VoVariant::Double:
        return m_private->addRaw(DoubleText(value.asDouble()));
    case VoVariant::String: {
        const std::string& text = value.asString().toStdString();
        return addText(text, DetectedType(text) == VoVariant::String ? Quotes::WhenNeeded : Quotes::Always);
    }
    case VoVariant::Boolean:
    case VoVariant::Integer:
    case VoVariant::Size:
        return m_private->addRaw(value.toString().toStdString());
    default:
        return addText(value.toString().toStdString());
    }
}

void VoCSVWriter::endRow()
{
    m_private->gathered += m_private->newline;
    m_private->isInRow = false;
    ++m_private->rows;
    if (m_private->gathered.size() >= blockSize)
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
