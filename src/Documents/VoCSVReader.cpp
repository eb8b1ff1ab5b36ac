#include <Documents/VoCSVReader.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Documents/VoCSVValues.h>
#include <Documents/detail/CSVText.h>
#include <Documents/detail/TextInput.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

using vo::detail::CSVBlockSize;

namespace {

constexpr std::size_t LongestField = 64 * 1024 * 1024;
constexpr std::size_t LongestRow = 256 * 1024 * 1024;
constexpr std::size_t MostFields = 1 << 20;
constexpr std::size_t LeastRoom = 64; // for a reading from the input

// A field by its place behind the beginning of its row, which moves when the block is filled up.
struct Field
{
    std::uint32_t begin;
    std::uint32_t size;
    bool isQuoted;
};

} // namespace

struct VoCSVReader::Private
{
    Private(VoIODevice& source, const VoCSVFormat& format)
        : device(source)
        , input(source, format.encoding)
        , separator(format.separator.toStdString())
        , quote(format.quote)
        , block(CSVBlockSize)
    {
        for (const char c : {separator.front(), '\r', '\n'})
            ends[static_cast<unsigned char>(c)] = true;
    }

    bool nextRow();
    void readQuoted();
    void readPlain();
    void skimPlain();
    bool takesSeparator();
    void takeLineBreak();
    void addField(std::size_t begin, std::size_t size, bool isQuoted);
    bool fill();
    bool has() { return position < filled || fill(); } // whether there is a byte to be read
    bool follows(std::string_view text);
    [[noreturn]] void fail(const char* what);
    [[noreturn]] void failWith(const VoString& message);

    VoIODevice& device;
    vo::detail::TextInput input;
    const std::string separator;
    const char quote;
    bool ends[256] = {}; // bytes that may end a field without quotes
    bool isOwnOpening = false;

    std::vector<char> block;
    std::size_t rowBegin = 0; // of the row in the block
    std::size_t position = 0; // of the next byte to be read
    std::size_t filled = 0;   // bytes in the block
    bool isAtEnd = false;     // the input has no more
    std::vector<Field> fields;
    std::size_t rows = 0;
    std::optional<VoInvalidParameterException> failure;
};

void VoCSVReader::Private::fail(const char* what)
{
    failWith(VoString(what) + " in CSV at row " + VoString(rows + 1));
}

void VoCSVReader::Private::failWith(const VoString& message)
{
    fields.clear();
    failure.emplace(message);
    throw *failure;
}

// Gets more bytes behind those of the row, which moves to the front; false at the end of the input.
bool VoCSVReader::Private::fill()
{
    if (isAtEnd)
        return false;
    if (rowBegin > 0) {
        std::memmove(block.data(), block.data() + rowBegin, filled - rowBegin);
        position -= rowBegin;
        filled -= rowBegin;
        rowBegin = 0;
    }
    if (block.size() - filled < LeastRoom) {
        if (block.size() >= LongestRow)
            fail("Row too long");
        block.resize(block.size() * 2);
    }
    const std::size_t count = input.readInto(block.data() + filled, block.size() - filled);
    if (count == 0 && input.isBroken())
        failWith("Invalid " + VoString(vo::csv::EncodingName(input.encoding())) + " in CSV at line " +
                 VoString(input.place().line) + ", column " + VoString(input.place().column));
    filled += count;
    isAtEnd = count == 0;
    return !isAtEnd;
}

bool VoCSVReader::Private::follows(std::string_view text)
{
    while (filled - position < text.size()) {
        if (!fill())
            return false;
    }
    return std::memcmp(block.data() + position, text.data(), text.size()) == 0;
}

void VoCSVReader::Private::addField(std::size_t begin, std::size_t size, bool isQuoted)
{
    if (size > LongestField)
        fail("Field too long");
    if (fields.size() == MostFields)
        fail("Row too long");
    fields.push_back({static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(size), isQuoted});
}

bool VoCSVReader::Private::takesSeparator()
{
    if (block[position] != separator.front() || (separator.size() > 1 && !follows(separator)))
        return false;
    position += separator.size();
    return true;
}

void VoCSVReader::Private::takeLineBreak()
{
    if (block[position++] == '\r' && has() && block[position] == '\n')
        ++position;
}

// Leaves the place at what ends the field.
void VoCSVReader::Private::readPlain()
{
    const std::size_t begin = position - rowBegin;
    for (;;) {
        const char* const end = block.data() + filled;
        const char* place = block.data() + position;
        while (place != end && !ends[static_cast<unsigned char>(*place)])
            ++place;
        position = static_cast<std::size_t>(place - block.data());
        if (place == end) {
            if (position - rowBegin - begin > LongestField)
                fail("Field too long");
            if (!fill())
                break;
            continue;
        }
        if (separator.size() == 1 || *place != separator.front() || follows(separator))
            break;
        ++position;
    }
    addField(begin, position - rowBegin - begin, false);
}

// Takes the fields without quotes that end with a separator within the block: the greater part of most files. What is
// left is read with all care.
void VoCSVReader::Private::skimPlain()
{
    if (separator.size() > 1 || block.size() > LongestField)
        return;
    const char* const row = block.data() + rowBegin;
    const char* const end = block.data() + filled;
    const char* begin = block.data() + position;
    const char mark = separator.front();
    const char quoteMark = quote;
    while (begin != end && *begin != quoteMark && fields.size() < MostFields) {
        const char* place = begin;
        while (place != end && !ends[static_cast<unsigned char>(*place)])
            ++place;
        if (place == end || *place != mark)
            break;
        fields.push_back({static_cast<std::uint32_t>(begin - row), static_cast<std::uint32_t>(place - begin), false});
        begin = place + 1;
    }
    position = static_cast<std::size_t>(begin - block.data());
}

// Takes the doubled quotes together in place.
void VoCSVReader::Private::readQuoted()
{
    ++position;
    const std::size_t begin = position - rowBegin;
    std::size_t written = begin;
    for (;;) {
        if (written - begin > LongestField)
            fail("Field too long");
        if (!has())
            fail("Unterminated quoted field");
        const char* const from = block.data() + position;
        const void* const found = std::memchr(from, quote, filled - position);
        const std::size_t run =
            found ? static_cast<std::size_t>(static_cast<const char*>(found) - from) : filled - position;
        if (written != position - rowBegin)
            std::memmove(block.data() + rowBegin + written, from, run);
        written += run;
        position += run;
        if (!found)
            continue;
        ++position;
        if (!has() || block[position] != quote)
            break;
        block[rowBegin + written++] = quote;
        ++position;
    }
    addField(begin, written - begin, true);
}

bool VoCSVReader::Private::nextRow()
{
    if (failure)
        throw *failure;
    fields.clear();
    rowBegin = position;
    if (!has())
        return false;
    for (;;) {
        skimPlain();
        const bool isQuoted = has() && block[position] == quote;
        if (isQuoted)
            readQuoted();
        else
            readPlain();
        if (!has())
            break;
        if (takesSeparator())
            continue;
        if (isQuoted && block[position] != '\r' && block[position] != '\n')
            fail("Unexpected character after quoted field");
        takeLineBreak();
        break;
    }
    ++rows;
    return true;
}

VoCSVReader::VoCSVReader(VoIODevice& device, const VoCSVFormat& format)
{
    vo::detail::RequireValid(format);
    m_private = std::make_unique<Private>(device, format);
    if (device.isOpen())
        return;
    if (!device.open(VoIODevice::Read))
        throw VoIOException(device);
    m_private->isOwnOpening = true;
}

VoCSVReader::~VoCSVReader()
{
    if (!m_private->isOwnOpening)
        return;
    try {
        m_private->device.close();
    } catch (...) { // nothing was written
    }
}

bool VoCSVReader::nextRow()
{
    return m_private->nextRow();
}

std::size_t VoCSVReader::numberFields() const noexcept
{
    return m_private->fields.size();
}

std::string_view VoCSVReader::field(std::size_t index) const
{
    if (index >= m_private->fields.size())
        throw VoIndexOutOfBoundsException(index, m_private->fields.size());
    const Field& field = m_private->fields[index];
    return {m_private->block.data() + m_private->rowBegin + field.begin, field.size};
}

bool VoCSVReader::isQuoted(std::size_t index) const
{
    if (index >= m_private->fields.size())
        throw VoIndexOutOfBoundsException(index, m_private->fields.size());
    return m_private->fields[index].isQuoted;
}

bool VoCSVReader::readRow(VoDeque<VoString>& fields)
{
    fields.clear();
    if (!nextRow())
        return false;
    for (std::size_t i = 0; i < numberFields(); ++i) {
        const std::string_view text = field(i);
        fields.emplaceBack(text.data(), text.size());
    }
    return true;
}

std::size_t VoCSVReader::rowNumber() const noexcept
{
    return m_private->rows;
}

std::size_t VoCSVReader::bytesRead() const noexcept
{
    return m_private->input.bytesTaken();
}
