#include <Updater/detail/documents/PlainListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileDevice.h>
#include <Updater/AbstractPackage.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/PlainWriter.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

// No line that is written for a path of the system comes near it.
constexpr std::size_t LongestLine = std::size_t{64} << 10;

// Bytes that are read at once.
constexpr std::size_t BlockSize = std::size_t{256} << 10;

// Whether a byte stands for itself in a text.
bool IsPlainByte(char c)
{
    return c >= ' ' && c != '&' && c != '<' && c != '>' && c != '"' && c != '\x7F';
}

// Thrown, and caught here, where a document has another form.
struct AnotherForm
{
};

void Need(bool isPlain)
{
    if (!isPlain)
        throw AnotherForm();
}

// The lines of a document that is in memory, or of one that is read block by block.
class Lines
{
public:
    explicit Lines(std::string_view document)
        : m_rest(document)
    {
    }

    explicit Lines(VoIODevice& device)
        : m_device(&device)
        , m_block(BlockSize + LongestLine, '\0')
    {
    }

    // The next line without its end; valid until the next call.
    std::string_view next()
    {
        std::size_t end = m_rest.find('\n');
        if (end == std::string_view::npos && m_device) {
            fill();
            end = m_rest.find('\n');
        }
        Need(end < LongestLine);
        const std::string_view line = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return line;
    }

    bool isAtEnd()
    {
        if (m_rest.empty() && m_device)
            fill();
        return m_rest.empty();
    }

private:
    void fill()
    {
        Need(m_rest.size() < LongestLine);
        std::copy(m_rest.begin(), m_rest.end(), m_block.begin());
        const std::size_t count = m_device->readInto(m_block.data() + m_rest.size(), BlockSize);
        m_rest = std::string_view(m_block.data(), m_rest.size() + count);
    }

    VoIODevice* m_device = nullptr;
    std::string m_block;
    std::string_view m_rest;
};

// One line that is taken apart from its beginning.
class Line
{
public:
    explicit Line(std::string_view text)
        : m_rest(text)
    {
    }

    bool take(std::string_view text)
    {
        if (m_rest.substr(0, text.size()) != text)
            return false;
        m_rest.remove_prefix(text.size());
        return true;
    }

    // An attribute behind a blank. Its text without escapes is kept in `room` where it has any.
    std::string_view attribute(std::string_view name, std::string& room)
    {
        Need(take(" ") && take(name) && take("=\""));
        return until('"', room);
    }

    std::string attribute(std::string_view name)
    {
        std::string room;
        return std::string(attribute(name, room));
    }

    template <typename Integer>
    Integer number(std::string_view name)
    {
        Need(take(" ") && take(name) && take("=\""));
        const std::size_t end = m_rest.find('"');
        Need(end != std::string_view::npos);
        Integer value = 0;
        const auto [rest, error] = std::from_chars(m_rest.data(), m_rest.data() + end, value);
        Need(error == std::errc() && rest == m_rest.data() + end);
        m_rest.remove_prefix(end + 1);
        return value;
    }

    std::string_view until(char end, std::string& room)
    {
        const auto first = std::find_if_not(m_rest.begin(), m_rest.end(), IsPlainByte);
        const auto length = static_cast<std::size_t>(first - m_rest.begin());
        if (first == m_rest.end() || *first != end)
            return untilSlowly(end, room);
        const std::string_view text = m_rest.substr(0, length);
        m_rest.remove_prefix(length + 1);
        return text;
    }

    void end(std::string_view text) { Need(take(text) && m_rest.empty()); }

private:
    std::string_view untilSlowly(char end, std::string& room)
    {
        const std::size_t length = m_rest.find(end);
        Need(length != std::string_view::npos);
        room = unescaped(m_rest.substr(0, length));
        Need(SurvivesXML(room));
        m_rest.remove_prefix(length + 1);
        return room;
    }

    static std::string unescaped(std::string_view text)
    {
        std::string result;
        while (!text.empty()) {
            const auto* known =
                std::find_if(std::begin(PlainEscapes), std::end(PlainEscapes), [&](const PlainEscape& escape) {
                    return text.substr(0, escape.text.size()) == escape.text;
                });
            const bool isEscape = known != std::end(PlainEscapes);
            const char c = isEscape ? known->character : text.front();
            Need(isEscape || IsPlainByte(c) || static_cast<unsigned char>(c) >= 0x80);
            result += c;
            text.remove_prefix(isEscape ? known->text.size() : 1);
        }
        return result;
    }

    std::string_view m_rest;
};

class ListingReader
{
public:
    ListingReader(ListingKind kind, Lines lines, std::size_t size)
        : m_kind(kind)
        , m_lines(std::move(lines))
    {
        m_listing.files.reserveFor(size);
    }

    PlainListing read()
    {
        Need(m_lines.next() == PlainPrologue);
        readIdentity();
        readContainer("files", [this](Line& line) { readFile(line); });
        if (m_kind == ListingKind::Advertised)
            readContainer("chunks", [this](Line& line) { readChunk(line); });
        else
            readContainer("directories", [this](Line& line) { readDirectory(line); });
        Need(m_lines.next() == "</package>" && m_lines.isAtEnd());
        return std::move(m_listing);
    }

private:
    void readIdentity()
    {
        Line line(m_lines.next());
        Need(line.take("<package"));
        if (m_kind == ListingKind::Installed)
            m_listing.directory = VoDirectoryPath::Deserialize(VoString(line.attribute("directory")));
        m_listing.packageID = VoUUID(VoString(line.attribute("packageID")));
        m_listing.versionID = VoUUID(VoString(line.attribute("versionID")));
        m_listing.name = VoString(line.attribute("name"));
        m_listing.version = VoVersion::Deserialize(VoString(line.attribute("version")));
        line.end(">");
    }

    template <typename Read>
    void readContainer(std::string_view name, Read read)
    {
        Line first(m_lines.next());
        Need(first.take("\t<") && first.take(name));
        if (first.take("/>")) {
            first.end("");
            return;
        }
        first.end(">");
        for (;;) {
            Line line(m_lines.next());
            if (line.take("\t</")) {
                Need(line.take(name));
                line.end(">");
                return;
            }
            read(line);
        }
    }

    void readFile(Line& line)
    {
        Need(line.take("\t\t<file"));
        const bool isAdvertised = m_kind == ListingKind::Advertised;
        const std::string_view path = line.attribute(isAdvertised ? "target" : "path", m_path);
        const std::string_view id = line.attribute("id", m_id);
        const std::string_view checksum = line.attribute("checksum", m_checksum);
        const auto size = line.number<std::int64_t>("size");
        Need(size >= -1);
        m_listing.files.add(id, checksum, size, normalised(path));
        if (line.take("/>")) {
            line.end("");
            return;
        }
        Need(isAdvertised);
        line.end(">");
        readPieces();
    }

    void readPieces()
    {
        for (std::uint64_t index = 0;; ++index) {
            Line line(m_lines.next());
            if (line.take("\t\t</file>")) {
                line.end("");
                return;
            }
            Need(line.take("\t\t\t<chunkref"));
            const std::string_view chunk = line.attribute("chunkID", m_id);
            const auto offset = line.number<std::uint64_t>("offset");
            const auto length = line.number<std::uint64_t>("length");
            Need(line.number<std::uint64_t>("index") == index);
            line.end("/>");
            m_listing.files.addPiece(chunk, offset, length);
        }
    }

    void readChunk(Line& line)
    {
        Need(line.take("\t\t<chunk"));
        const VoUUID id{VoString(line.attribute("id"))};
        const VoChecksum checksum = VoChecksum::Deserialize(VoString(line.attribute("checksum")));
        const auto size = line.number<std::int64_t>("size");
        const VoFilePath path = VoFilePath::Deserialize(VoString(line.attribute("path")));
        line.end("/>");
        m_listing.chunks.pushBack(ChunkListing(id, checksum, VoDownloadSize(size), path));
    }

    void readDirectory(Line& line)
    {
        Need(line.take("\t\t<path>"));
        const std::string path(line.until('<', m_path));
        line.end("/path>");
        m_listing.directories.pushBack(VoDirectoryPath::Deserialize(VoString(path)));
    }

    // As VoFilePath would have it.
    std::string_view normalised(std::string_view path)
    {
        const bool isPlain = !path.empty() && path.front() > ' ' && path.back() > ' ' &&
                             path.find('/') == std::string_view::npos && path.find("\\\\") == std::string_view::npos;
        if (isPlain)
            return path;
        m_path = VoFilePath::Deserialize(VoString(std::string(path))).path().toStdString();
        return m_path;
    }

    ListingKind m_kind;
    Lines m_lines;
    PlainListing m_listing;
    std::string m_path; // texts that had escapes
    std::string m_id;
    std::string m_checksum;
};

std::string_view TextOf(const VoString& text)
{
    return text.toStdString();
}

void WriteIdentity(PlainWriter& writer, const WrittenListing& listing)
{
    writer.raw("<package");
    if (listing.directory)
        writer.attribute("directory", TextOf(VoDirectoryPath::Serialize(*listing.directory)));
    writer.attribute("packageID", TextOf(listing.package.packageID()))
        .attribute("versionID", TextOf(listing.package.versionID()))
        .attribute("name", TextOf(listing.package.name()))
        .attribute("version", TextOf(VoVersion::Serialize(listing.package.version())))
        .raw(">")
        .endLine();
}

void WritePieces(PlainWriter& writer, const FileTable& files, FileTable::Pieces pieces)
{
    std::uint64_t index = 0;
    for (const FileTable::Piece& piece : pieces)
        writer.raw("\t\t\t<chunkref")
            .attribute("chunkID", files.chunkIDs()[piece.chunk])
            .attribute("offset", piece.offset)
            .attribute("length", piece.length)
            .attribute("index", index++)
            .raw("/>")
            .endLine();
}

void WriteFileLine(PlainWriter& writer, const FileTable& files, FileTable::Number file, bool isAdvertised)
{
    std::string id;
    files.appendID(id, file);
    std::string checksum;
    files.appendChecksum(checksum, file);
    writer.raw("\t\t<file")
        .attribute(isAdvertised ? "target" : "path", files.path(file))
        .attribute("id", id)
        .attribute("checksum", checksum)
        .attribute("size", files.length(file));
    const FileTable::Pieces pieces = isAdvertised ? files.pieces(file) : FileTable::Pieces{};
    if (pieces.size() == 0) {
        writer.raw("/>").endLine();
        return;
    }
    writer.raw(">").endLine();
    WritePieces(writer, files, pieces);
    writer.raw("\t\t</file>").endLine();
}

void WriteChunk(PlainWriter& writer, const ChunkListing& chunk)
{
    writer.raw("\t\t<chunk")
        .attribute("id", TextOf(chunk.id()))
        .attribute("checksum", TextOf(chunk.checksum().toString()))
        .attribute("size", chunk.size().bytes())
        .attribute("path", TextOf(chunk.path()))
        .raw("/>")
        .endLine();
}

// All texts at once, unless some byte is no ASCII: two halves of a character make a whole one then.
bool ArePlain(const FileTable& files)
{
    const std::string_view texts = files.texts();
    const bool isASCII =
        std::all_of(texts.begin(), texts.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    bool arePlain = !isASCII || IsPlainText(texts);
    for (std::size_t i = 0; !isASCII && arePlain && i < files.size(); ++i) {
        std::string id;
        files.appendID(id, static_cast<FileTable::Number>(i));
        arePlain = IsPlainText(id) && IsPlainText(files.path(static_cast<FileTable::Number>(i)));
    }
    return arePlain;
}

std::optional<PlainListing> TryReading(ListingKind kind, Lines lines, std::size_t size)
{
    try {
        return ListingReader(kind, std::move(lines), size).read();
    } catch (const AnotherForm&) {
        return std::nullopt;
    } catch (const VoException&) {
        return std::nullopt; // a value that cannot be read, or a device
    }
}

} // namespace

std::optional<PlainListing> ReadPlainListing(ListingKind kind, std::string_view document)
{
    return TryReading(kind, Lines(document), document.size());
}

std::optional<PlainListing> ReadPlainListing(ListingKind kind, const VoFilePath& path)
{
    try {
        const std::size_t size = std::min<std::uint64_t>(VoFileSystem::FileSize(path), LargestDocument);
        VoFileDevice device(path);
        if (!device.open(VoIODevice::Read))
            return std::nullopt;
        return TryReading(kind, Lines(device), size);
    } catch (const VoException&) {
        return std::nullopt;
    }
}

bool IsPlainListing(const WrittenListing& listing)
{
    if (!ArePlain(listing.files))
        return false;
    std::vector<std::string_view> texts = {TextOf(listing.package.packageID()), TextOf(listing.package.versionID()),
                                           TextOf(listing.package.name())};
    texts.insert(texts.end(), listing.files.chunkIDs().begin(), listing.files.chunkIDs().end());
    if (listing.directory)
        texts.push_back(TextOf(listing.directory->path()));
    for (std::size_t i = 0; listing.chunks && i < listing.chunks->size(); ++i) {
        texts.push_back(TextOf((*listing.chunks)[i].id()));
        texts.push_back(TextOf((*listing.chunks)[i].path()));
    }
    for (std::size_t i = 0; listing.directories && i < listing.directories->size(); ++i)
        texts.push_back(TextOf((*listing.directories)[i].path()));
    return std::all_of(texts.begin(), texts.end(), IsPlainText);
}

void WriteListing(PlainWriter& writer, const WrittenListing& listing)
{
    WriteIdentity(writer, listing);
    WriteItems(writer, "files", listing.files.size(), [&](std::size_t i) {
        WriteFileLine(writer, listing.files, static_cast<FileTable::Number>(i), listing.chunks != nullptr);
    });
    if (listing.chunks)
        WriteItems(writer, "chunks", listing.chunks->size(),
                   [&](std::size_t i) { WriteChunk(writer, (*listing.chunks)[i]); });
    else
        WriteItems(writer, "directories", listing.directories->size(), [&](std::size_t i) {
            writer.raw("\t\t<path>").escaped(TextOf((*listing.directories)[i].path())).raw("</path>").endLine();
        });
    writer.raw("</package>").endLine();
}

bool WritePlainListing(const VoFilePath& path, const WrittenListing& listing)
{
    if (!IsPlainListing(listing))
        return false;
    VoAtomicFileWriter file(path);
    PlainWriter writer(file);
    WriteListing(writer, listing);
    writer.flush();
    file.commit();
    return true;
}

} // namespace vo::updater::detail
