#include <Documents/detail/WorksheetText.h>

#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Core/detail/NumberText.h>
#include <Documents/detail/CellCode.h>
#include <Documents/detail/WorksheetLayout.h>
#include <Subsystem/VoLogging.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QString>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace vo::detail {

namespace {

constexpr std::size_t LongestText = 32767; // in UTF-16 units, as spreadsheet programs count

/// The letters of every column of a worksheet, made once.
class ColumnTexts
{
public:
    ColumnTexts()
    {
        for (std::size_t column = 1; column <= WorksheetLayout::MaximumColumn; ++column) {
            const std::string text = ColumnText(column);
            Entry& entry = m_entries[column];
            entry.size = static_cast<std::uint8_t>(text.size());
            std::copy(text.begin(), text.end(), entry.letters);
        }
    }

    std::string_view operator[](std::size_t column) const
    {
        const Entry& entry = m_entries[column];
        return {entry.letters, entry.size};
    }

private:
    struct Entry
    {
        char letters[3];
        std::uint8_t size;
    };

    std::array<Entry, WorksheetLayout::MaximumColumn + 1> m_entries{};
};

const ColumnTexts& Columns()
{
    static const ColumnTexts texts;
    return texts;
}

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
}

// White space at the ends is dropped by readers that are not told to keep it.
bool NeedsPreserving(std::string_view text)
{
    return !text.empty() && (IsXMLBlank(text.front()) || IsXMLBlank(text.back()) ||
                             text.find_first_of("\r\n") != std::string_view::npos);
}

bool IsHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// Whether the text goes on with what programs would decode, "_x0041_".
bool StartsLikeCode(std::string_view text)
{
    return text.size() >= 7 && text[0] == '_' && text[1] == 'x' && text[6] == '_' &&
           std::all_of(text.begin() + 2, text.begin() + 6, IsHexDigit);
}

// A tab and a line feed survive XML; a carriage return would come back as a line feed.
bool NeedsCode(unsigned char byte)
{
    return byte < 0x20 && byte != '\t' && byte != '\n';
}

bool IsPlain(unsigned char byte)
{
    static const auto plain = [] {
        std::array<bool, 256> table{};
        for (unsigned value = 0; value < table.size(); ++value)
            table[value] = !NeedsCode(static_cast<unsigned char>(value));
        constexpr unsigned char special[] = {'<', '>', '&', '"', '_', 0xEF};
        for (const unsigned char byteValue : special)
            table[byteValue] = false;
        return table;
    }();
    return plain[byte];
}

} // namespace

std::string ColumnText(std::size_t column)
{
    std::string letters;
    for (; column > 0; column = (column - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('A' + (column - 1) % 26));
    return letters;
}

void WorksheetText::startRow(std::size_t row)
{
    m_row = UnsignedText(row);
    m_rowIsEmpty = true;
}

void WorksheetText::endRow()
{
    m_text += m_rowIsEmpty ? "<row/>" : "</row>";
}

void WorksheetText::cell(std::size_t column, const VoVariant& value)
{
    switch (value.type()) {
    case VoVariant::Null:
        return emptyCell(column);
    case VoVariant::Boolean:
        startCell(column);
        m_text += value.asBoolean() ? "\" t=\"b\"><v>1</v></c>" : "\" t=\"b\"><v>0</v></c>";
        return;
    case VoVariant::Integer:
        return valueCell(column, IntegerText(value.asInteger()));
    case VoVariant::Double:
        // Spreadsheet programs take "nan" and "inf" in a number for 0, or refuse the file.
        if (std::isfinite(value.asDouble()))
            return valueCell(column, GeneralText(value.asDouble()));
        return textCell(column, GeneralText(value.asDouble()));
    case VoVariant::String:
        return textCell(column, value.asString().toStdString());
    default:
        return textCell(column, value.toString().toStdString());
    }
}

void WorksheetText::instant(std::size_t column, std::int64_t day, std::int64_t nanoseconds)
{
    constexpr std::int64_t millisecondsOfDay = 86400000;
    constexpr std::int64_t parts = 10000000000; // of a day: ten digits, far below a millisecond
    const std::int64_t share = (nanoseconds / 1000000 * parts + millisecondsOfDay / 2) / millisecondsOfDay;
    std::string number = IntegerText(day);
    if (share > 0) {
        const std::string digits = IntegerText(share);
        number += "." + std::string(10 - digits.size(), '0') + digits;
    }
    valueCell(column, number);
}

void WorksheetText::emptyCell(std::size_t column)
{
    startCell(column);
    m_text += "\"/>";
}

void WorksheetText::startCell(std::size_t column)
{
    if (m_rowIsEmpty)
        m_text += "<row>";
    m_rowIsEmpty = false;
    m_text += "<c r=\"";
    m_text += Columns()[column];
    m_text += m_row;
    if (m_style != CellStyle::Plain) {
        m_text += "\" s=\"";
        m_text += static_cast<char>('0' + static_cast<int>(m_style));
    }
}

void WorksheetText::valueCell(std::size_t column, std::string_view number)
{
    startCell(column);
    m_text += "\"><v>";
    m_text += number;
    m_text += "</v></c>";
}

void WorksheetText::textCell(std::size_t column, std::string_view text)
{
    startCell(column);
    std::string repaired;
    if (!IsAscii(text)) {
        repaired = FromQtText(ToQtText(VoString(std::string(text)))).toStdString(); // bytes that are not UTF-8
        text = repaired;
    }
    text = shortened(column, text);
    m_text +=
        NeedsPreserving(text) ? "\" t=\"inlineStr\"><is><t xml:space=\"preserve\">" : "\" t=\"inlineStr\"><is><t>";
    appendText(text);
    m_text += "</t></is></c>";
}

std::string_view WorksheetText::shortened(std::size_t column, std::string_view text)
{
    if (text.size() <= LongestText)
        return text;
    std::size_t units = 0;
    std::size_t end = 0;
    while (end < text.size()) {
        const auto lead = static_cast<unsigned char>(text[end]);
        units += lead >= 0xF0 ? 2 : 1;
        if (units > LongestText)
            break;
        end += lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    }
    if (end < text.size() && !std::exchange(m_wasCut, true))
        vo::logging::Logger::Get("spreadsheet")
            .warning("Text of more than 32767 characters is cut in cell " +
                     VoString(std::string(Columns()[column]) + m_row) +
                     "; further ones in this worksheet are not reported");
    return text.substr(0, end);
}

void WorksheetText::appendText(std::string_view text)
{
    std::size_t done = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (IsPlain(byte))
            continue;
        m_text += text.substr(done, i - done);
        done = i + 1;
        if (byte == '<') {
            m_text += "&lt;";
        } else if (byte == '>') {
            m_text += "&gt;";
        } else if (byte == '&') {
            m_text += "&amp;";
        } else if (byte == '"') {
            m_text += "&quot;";
        } else if (byte == '_' && StartsLikeCode(text.substr(i))) {
            m_text += "_x005F_";
        } else if (const std::size_t length = AppendCellCode(m_text, text.substr(i))) {
            done = i + length;
            i = done - 1;
        } else {
            done = i;
        }
    }
    m_text += text.substr(done);
}

} // namespace vo::detail
