#include <FileSystem/detail/PathText.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoPathException.h>

#include <string>
#include <vector>

namespace vo::detail {

namespace {

constexpr std::string_view Climb = "..";
constexpr std::string_view ClimbPiece = "..\\";

std::vector<PathChunk> Chunks(std::string_view text, std::size_t position)
{
    std::vector<PathChunk> chunks;
    for (PathChunk chunk = NextChunk(text, position); chunk.length != 0;
         chunk = NextChunk(text, chunk.position + chunk.length))
        chunks.push_back(chunk);
    return chunks;
}

std::string_view ChunkText(std::string_view text, PathChunk chunk)
{
    return text.substr(chunk.position, chunk.length);
}

bool EqualRanges(const VoString& a, PathChunk chunkOfA, const VoString& b, PathChunk chunkOfB)
{
    return VoStringView(a, chunkOfA.position, chunkOfA.length) == VoStringView(b, chunkOfB.position, chunkOfB.length);
}

// The text keeps the locale of the string it is written into.
VoString WithText(VoString carrier, std::string&& text)
{
    carrier.toStdString() = std::move(text);
    return carrier;
}

} // namespace

VoString NormalisedPath(VoString text)
{
    text.trim();
    std::string& bytes = text.toStdString();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char byte = bytes[i] == '/' ? PathSeparator : bytes[i];
        const bool repeats = byte == PathSeparator && kept > 1 && bytes[kept - 1] == PathSeparator;
        if (!repeats)
            bytes[kept++] = byte;
    }
    bytes.resize(kept);
    return text;
}

std::size_t RootNameLength(std::string_view text) noexcept
{
    if (text.substr(0, 2) == "\\\\")
        return std::min(text.find(PathSeparator, 2), text.size());
    const std::size_t colon = text.find(':');
    return colon == std::string_view::npos ? 0 : colon + 1;
}

std::size_t AnchorLength(std::string_view text) noexcept
{
    const bool network = text.substr(0, 2) == "\\\\";
    if (!network && !text.empty() && text.front() == PathSeparator)
        return 1;
    const std::size_t separator = text.find(PathSeparator, network ? 2 : 0);
    const std::size_t end = separator == std::string_view::npos ? text.size() : separator + 1;
    const bool drive = text.substr(0, end).find(':') != std::string_view::npos;
    return network || drive ? end : 0;
}

std::size_t ParentLength(std::string_view text) noexcept
{
    if (text.size() <= AnchorLength(text))
        return 0;
    const std::string_view withoutEnd = text.substr(0, text.size() - (EndsWithSeparator(text) ? 1 : 0));
    const std::size_t separator = withoutEnd.rfind(PathSeparator);
    return separator == std::string_view::npos ? 0 : separator + 1;
}

PathChunk NextChunk(std::string_view text, std::size_t position) noexcept
{
    const std::size_t begin = std::min(text.find_first_not_of(PathSeparator, position), text.size());
    const std::size_t end = std::min(text.find(PathSeparator, begin), text.size());
    return {begin, end - begin};
}

VoString ResolvedPath(VoString text)
{
    const std::string_view bytes = Bytes(text);
    if (bytes.find(ClimbPiece) == std::string_view::npos)
        return text;
    const std::size_t anchor = AnchorLength(bytes);
    std::vector<PathChunk> kept;
    for (const PathChunk& chunk : Chunks(bytes, anchor)) {
        if (ChunkText(bytes, chunk) != Climb) {
            kept.push_back(chunk);
            continue;
        }
        if (kept.empty())
            throw VoPathException("Unable to resolve as relative path is invalid");
        kept.pop_back();
    }
    std::string result(bytes.substr(0, anchor));
    for (const PathChunk& chunk : kept) {
        result += ChunkText(bytes, chunk);
        result += PathSeparator;
    }
    if (!kept.empty() && !EndsWithSeparator(bytes))
        result.pop_back();
    return WithText(std::move(text), std::move(result));
}

VoString AppendedPath(const VoString& base, const VoString& other)
{
    if (base.isEmpty())
        return ResolvedPath(other);
    if (!EndsWithSeparator(Bytes(base)))
        throw VoInvalidPathFileException("Cannot append to file path", VoFilePath::CreateUnchecked(VoString(other)));
    if (RootNameLength(Bytes(other)) != 0)
        throw VoInvalidPathFileException("Cannot append absolute path to path",
                                         VoFilePath::CreateUnchecked(VoString(other)));
    // A native absolute path of a POSIX system has no root name; without its leading separator it lands inside the
    // base.
    std::string_view tail = Bytes(other);
    tail.remove_prefix(AnchorLength(tail));
    std::string text;
    text.reserve(base.size() + tail.size());
    text += Bytes(base);
    text += tail;
    return ResolvedPath(WithText(base, std::move(text)));
}

VoString RelativePath(const VoString& path, const VoString& base)
{
    const std::string_view from =
        Bytes(base).substr(0, EndsWithSeparator(Bytes(base)) ? base.size() : ParentLength(Bytes(base)));
    const std::size_t anchor = AnchorLength(Bytes(path));
    if (!EqualRanges(path, {0, anchor}, base, {0, AnchorLength(from)}))
        return path;

    const std::vector<PathChunk> baseChunks = Chunks(from, AnchorLength(from));
    std::vector<PathChunk> directories = Chunks(Bytes(path), anchor);
    if (!directories.empty() && !EndsWithSeparator(Bytes(path)))
        directories.pop_back();
    std::size_t common = 0;
    while (common < baseChunks.size() && common < directories.size() &&
           EqualRanges(path, directories[common], base, baseChunks[common]))
        ++common;

    std::string result;
    for (std::size_t i = common; i < baseChunks.size(); ++i) {
        if (ChunkText(from, baseChunks[i]) == Climb)
            return path; // nobody knows which directory leads back down
        result += ClimbPiece;
    }
    const std::size_t restPosition =
        common == 0 ? anchor : directories[common - 1].position + directories[common - 1].length + 1;
    result += Bytes(path).substr(std::min(restPosition, path.size()));
    return WithText(path, std::move(result));
}

} // namespace vo::detail
