#include <Updater/detail/documents/FileTable.h>

#include <Core/VoChecksum.h>
#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/detail/Sha3Hasher.h>

#include <algorithm>
#include <cstring>
#include <functional>

namespace vo::updater::detail {

namespace {

constexpr std::size_t PlainIDLength = 36;
constexpr std::size_t DigestLength = 32;

// The bytes of documents that a file and its path take, at least, in what this library writes.
constexpr std::size_t LeastDocumentBytes = 160;

constexpr char Digits[] = "0123456789abcdef";

// The number that a lower-case digit means; -1 for another character.
int DigitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool ByteOfHex(const char* text, unsigned char& byte)
{
    const int high = DigitValue(text[0]);
    const int low = DigitValue(text[1]);
    byte = static_cast<unsigned char>(high * 16 + low);
    return high >= 0 && low >= 0;
}

void AppendHex(std::string& text, unsigned char byte)
{
    text += Digits[byte >> 4];
    text += Digits[byte & 15];
}

bool HasHyphenBefore(std::size_t byte)
{
    return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

std::string_view KeptText(const std::string& text)
{
    return text;
}

} // namespace

void FileTable::reserveFor(std::size_t documentBytes)
{
    m_rows.reserve(documentBytes / (2 * LeastDocumentBytes));
    m_texts.reserve(documentBytes / 4);
    while (m_fewestSlots < m_rows.capacity())
        m_fewestSlots *= 2;
}

FileTable::Form FileTable::Pack(std::string_view text, IDBytes& bytes)
{
    const bool isBraced = text.size() == PlainIDLength + 2 && text.front() == '{' && text.back() == '}';
    if (!isBraced && text.size() != PlainIDLength)
        return Form::Other;
    const char* next = text.data() + (isBraced ? 1 : 0);
    for (std::size_t i = 0; i < bytes.size(); ++i, next += 2) {
        if (HasHyphenBefore(i) && *next++ != '-')
            return Form::Other;
        if (!ByteOfHex(next, bytes[i]))
            return Form::Other;
    }
    return isBraced ? Form::Braced : Form::Plain;
}

template <typename Bytes>
void FileTable::keepText(std::string_view text, Bytes& room)
{
    static_assert(sizeof(Bytes) >= sizeof(Span));
    const Span span{m_texts.size(), text.size()};
    m_texts += text;
    std::memcpy(room.data(), &span, sizeof(span));
}

template <typename Bytes>
std::string_view FileTable::kept(const Bytes& room) const
{
    Span span;
    std::memcpy(&span, room.data(), sizeof(span));
    return KeptText(m_texts).substr(span.begin, span.length);
}

FileTable::Number FileTable::add(std::string_view id, std::string_view checksum, std::int64_t size,
                                 std::string_view path)
{
    Row row{};
    row.size = size;
    row.digestForm = checksum.size() == 2 * DigestLength ? Form::Plain : Form::Other;
    for (std::size_t i = 0; i < DigestLength && row.digestForm == Form::Plain; ++i) {
        if (!ByteOfHex(&checksum[2 * i], row.digest[i]))
            row.digestForm = Form::Other;
    }
    if (row.digestForm == Form::Other)
        return add(VoUUID(VoString(std::string(id))), VoChecksum::Deserialize(VoString(std::string(checksum))), size,
                   VoString(std::string(path)));
    return append(id, row, path);
}

FileTable::Number FileTable::add(const VoUUID& id, const VoChecksum& checksum, std::int64_t size, const VoString& path)
{
    Row row{};
    row.size = size;
    const std::string_view bytes = vo::detail::Sha3::Bytes(checksum);
    if (checksum.isNull()) {
        row.digestForm = Form::Null;
    } else if (bytes.size() == DigestLength) {
        std::memcpy(row.digest.data(), bytes.data(), DigestLength);
    } else {
        row.digestForm = Form::Other;
        keepText(bytes, row.digest);
    }
    return append(id.toString().toStdString(), row, path.toStdString());
}

// A row with its texts, but for the path. The other table may be this one.
FileTable::Row FileTable::copied(const FileTable& other, Number file)
{
    Row row = other.m_rows[file];
    if (row.digestForm == Form::Other)
        keepText(std::string(other.kept(other.m_rows[file].digest)), row.digest);
    if (row.idForm == Form::Other)
        keepText(std::string(other.kept(other.m_rows[file].id)), row.id);
    return row;
}

FileTable::Number FileTable::add(const FileTable& other, Number file)
{
    const Pieces pieces = other.pieces(file);
    const std::vector<Piece> piecesOfFile(pieces.begin(), pieces.end());
    const Row row = copied(other, file);
    const Number added = append(row, std::string(other.path(file)));
    for (const Piece& piece : piecesOfFile)
        addPiece(std::string(other.m_chunkIDs[piece.chunk]), piece.offset, piece.length);
    return added;
}

FileTable::Number FileTable::addAt(std::string_view path, const FileTable& other, Number file)
{
    return append(copied(other, file), path);
}

FileTable::Number FileTable::append(std::string_view id, Row row, std::string_view path)
{
    row.idForm = Pack(id, row.id);
    if (row.idForm == Form::Other)
        keepText(id, row.id);
    return append(row, path);
}

FileTable::Number FileTable::append(const Row& row, std::string_view path)
{
    if (m_rows.size() >= None - 1)
        throw VoOverflowException("More files or pieces in a listing than can be counted");
    m_rows.push_back(row);
    m_rows.back().path = m_texts.size();
    m_rows.back().pathLength = static_cast<std::uint32_t>(path.size());
    m_rows.back().firstPiece = static_cast<std::uint32_t>(m_pieces.size());
    m_texts += path;
    const auto added = static_cast<Number>(m_rows.size() - 1);
    index(added);
    return added;
}

void FileTable::addPiece(std::string_view chunkID, std::uint64_t offset, std::uint64_t length)
{
    if (m_pieces.size() >= None)
        throw VoOverflowException("More files or pieces in a listing than can be counted");
    // Mostly that of the piece before.
    std::uint32_t chunk = m_pieces.empty() ? 0 : m_pieces.back().chunk;
    if (m_pieces.empty() || m_chunkIDs[chunk] != chunkID) {
        const auto next = static_cast<std::uint32_t>(m_chunkIDs.size());
        const auto [known, isNew] = m_chunkNumbers.emplace(chunkID, next);
        if (isNew)
            m_chunkIDs.emplace_back(chunkID);
        chunk = known->second;
    }
    m_pieces.push_back({offset, length, chunk});
}

FileTable::Key FileTable::keyOf(const Row& row) const
{
    if (row.idForm == Form::Other)
        return {row.idForm, kept(row.id)};
    return {row.idForm, {reinterpret_cast<const char*>(row.id.data()), row.id.size()}};
}

// A file whose ID is there already is not entered: the first one is found.
void FileTable::index(Number file)
{
    if (m_rows.size() <= Few)
        return;
    if (m_slots.size() < 2 * m_rows.size()) {
        growIndex();
        return;
    }
    const Key key = keyOf(m_rows[file]);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(key.bytes) & mask;
    for (; m_slots[slot] != None; slot = (slot + 1) & mask) {
        if (isKey(m_rows[m_slots[slot]], key))
            return;
    }
    m_slots[slot] = file;
}

void FileTable::growIndex()
{
    m_slots.assign(std::max(m_fewestSlots, 2 * m_slots.size()), None);
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        index(static_cast<Number>(i));
}

bool FileTable::isKey(const Row& row, const Key& key) const
{
    return row.idForm == key.form && keyOf(row).bytes == key.bytes;
}

FileTable::Number FileTable::find(const Key& key) const
{
    if (m_slots.empty()) {
        const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return isKey(row, key); });
        return found == m_rows.end() ? None : static_cast<Number>(found - m_rows.begin());
    }
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(key.bytes) & mask;
    while (m_slots[slot] != None && !isKey(m_rows[m_slots[slot]], key))
        slot = (slot + 1) & mask;
    return m_slots[slot];
}

FileTable::Number FileTable::find(const VoUUID& id) const
{
    const std::string& text = id.toString().toStdString();
    IDBytes bytes;
    const Form form = Pack(text, bytes);
    if (form == Form::Other)
        return find(Key{form, text});
    return find(Key{form, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}});
}

FileTable::Number FileTable::find(const FileTable& other, Number otherFile) const
{
    return find(other.keyOf(other.m_rows[otherFile]));
}

VoUUID FileTable::id(Number file) const
{
    std::string text;
    appendID(text, file);
    return VoUUID(VoString(std::move(text)));
}

VoChecksum FileTable::checksum(Number file) const
{
    const Row& row = m_rows[file];
    if (row.digestForm == Form::Null)
        return VoChecksum();
    const std::string_view bytes = digestBytes(row);
    return vo::detail::Sha3::Digest(bytes.data(), bytes.size());
}

std::string_view FileTable::path(Number file) const
{
    return KeptText(m_texts).substr(m_rows[file].path, m_rows[file].pathLength);
}

FileTable::Pieces FileTable::pieces(Number file) const
{
    const std::size_t end = file + std::size_t{1} < m_rows.size() ? m_rows[file + 1].firstPiece : m_pieces.size();
    return {m_pieces.data() + m_rows[file].firstPiece, m_pieces.data() + end};
}

void FileTable::appendID(std::string& text, Number file) const
{
    const Row& row = m_rows[file];
    if (row.idForm == Form::Other) {
        text += kept(row.id);
        return;
    }
    text.reserve(text.size() + PlainIDLength + 2);
    if (row.idForm == Form::Braced)
        text += '{';
    for (std::size_t i = 0; i < row.id.size(); ++i) {
        if (HasHyphenBefore(i))
            text += '-';
        AppendHex(text, row.id[i]);
    }
    if (row.idForm == Form::Braced)
        text += '}';
}

void FileTable::appendChecksum(std::string& text, Number file) const
{
    for (const char byte : digestBytes(m_rows[file]))
        AppendHex(text, static_cast<unsigned char>(byte));
}

std::string_view FileTable::digestBytes(const Row& row) const
{
    switch (row.digestForm) {
    case Form::Null:
        return {};
    case Form::Other:
        return kept(row.digest);
    default:
        return {reinterpret_cast<const char*>(row.digest.data()), row.digest.size()};
    }
}

bool FileTable::sameID(Number file, const FileTable& other, Number otherFile) const
{
    return isKey(m_rows[file], other.keyOf(other.m_rows[otherFile]));
}

bool FileTable::isBefore(Number file, const FileTable& other, Number otherFile) const
{
    const Row& row = m_rows[file];
    const Row& otherRow = other.m_rows[otherFile];
    if (row.idForm == otherRow.idForm && row.idForm != Form::Other)
        return row.id < otherRow.id; // digits are ordered as their characters
    return id(file) < other.id(otherFile);
}

bool FileTable::sameChecksum(Number file, const FileTable& other, Number otherFile) const
{
    return digestBytes(m_rows[file]) == other.digestBytes(other.m_rows[otherFile]);
}

} // namespace vo::updater::detail
