#pragma once

#include <Core/VoString.h>

#include <cstddef>
#include <string_view>

/// The rules of path texts, shared by all path classes. Lengths count bytes from the start of the text.
namespace vo::detail {

inline constexpr char PathSeparator = '\\';

inline std::string_view Bytes(const VoString& text) noexcept
{
    return text.toStdString();
}

inline bool EndsWithSeparator(std::string_view text) noexcept
{
    return !text.empty() && text.back() == PathSeparator;
}

/// Trims white space, turns "/" into the separator, and reduces runs of separators to one, except a leading pair.
VoString NormalisedPath(VoString text);

/// Length of the root name: a network server with its two separators, or everything up to the first ":".
std::size_t RootNameLength(std::string_view text) noexcept;

/// Length of what no ".." removes and nothing is relative to: the server, the drive (with what stands in one piece with
/// it) or the leading separator, each with the separator behind it. Unlike the root name it never reaches over several
/// pieces: on POSIX systems ":" is an ordinary character and "\tmp\a:b" hangs on the leading separator.
std::size_t AnchorLength(std::string_view text) noexcept;

/// Length of the containing directory, its final separator included; 0 when there is none.
std::size_t ParentLength(std::string_view text) noexcept;

/// A piece of a path between separators.
struct PathChunk
{
    std::size_t position = 0;
    std::size_t length = 0;
};

/// The next piece that is not empty, at or behind a position; of length 0 at the end.
PathChunk NextChunk(std::string_view text, std::size_t position) noexcept;

/// The text without its ".." pieces, as VoAbstractPath::resolve() describes it.
VoString ResolvedPath(VoString text);

/// The text of a path appended to a directory, resolved, as VoAbstractPath::append() describes it.
VoString AppendedPath(const VoString& base, const VoString& other);

/// The text of a path as seen from a base, as VoFilePath::relative() describes it.
VoString RelativePath(const VoString& path, const VoString& base);

} // namespace vo::detail
