#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoStringView.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <utility>

/// The path of a file: a normalised text (see VoAbstractPath), compared without regard to case.
///
/// No text is refused, and none is too long to be a path object: validLength() tells, and what opens, makes, moves or
/// copies files throws VoPathSizeFileException before it touches the disk.
///
/// A path is a value; a moved-from path is null. Its views point into it and end with the path; a temporary path gives
/// texts of their own instead.
class VOCORE_EXPORT VoFilePath
{
public:
    /// Longest valid path, in bytes.
    static constexpr std::size_t MaximumLength = 260;

    /// The null path.
    VoFilePath();
    /// Normalise a text.
    /// @{
    VoFilePath(const VoString& text);
    VoFilePath(VoString&& text);
    VoFilePath(const char* text);
    /// @}
    /// The text of another kind of path.
    explicit VoFilePath(const VoAbstractPath& path);
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoFilePath(const VoFilePath& other);
    VoFilePath(VoFilePath&& other) noexcept;
    VoFilePath& operator=(const VoFilePath& other);
    VoFilePath& operator=(VoFilePath&& other) noexcept;
    /// @}
    ~VoFilePath();

    /// Takes a text as it is, for names that come from the system: they may begin or end with blanks.
    static VoFilePath CreateUnchecked(VoString&& text);
    /// The path of a text as seen from a base: VoFilePath(text).absolute(base).
    static VoFilePath Resolve(VoString text, const VoFilePath& base);

    /// The normalised text; empty for a null path.
    /// @{
    const VoString& path() const& noexcept;
    VoString path() && noexcept;
    const VoString& toString() const& noexcept { return path(); }
    VoString toString() && noexcept { return std::move(*this).path(); }
    operator const VoString&() const noexcept { return path(); }
    /// @}
    /// The text as a wide string.
    std::wstring toWString() const;
    /// The path as the system writes it, for messages, other libraries and programs: vo::NativeName(). For the standard
    /// library see vo::ToStdPath().
    /// @throws VoInvalidPathFileException when the text holds a zero byte
    VoString nativeText() const;

    /// True when the text is empty.
    bool isNull() const noexcept;
    /// True when the path has a root name.
    bool isAbsolute() const noexcept;
    /// True when the path has no root name; also for "\tmp\x", see isRooted().
    bool isRelative() const noexcept;
    /// True when the path has a root name or begins with a separator.
    bool isRooted() const noexcept;
    /// True when the text ends with the separator. Asks the text, not the disk.
    bool isDirectory() const noexcept;
    /// True when the path is neither null nor a directory by its text.
    bool isFile() const noexcept;
    /// True when the text has at most MaximumLength bytes.
    bool validLength() const noexcept;
    /// True when this path is a directory by its text and the other path lies below it, piece by piece.
    /// Both texts are taken as they are: ".." pieces are not resolved and the disk is not asked.
    bool isAncestor(const VoFilePath& other) const;

    /// The root: "\\server" of a network path, else the text up to and including the first ":", else empty.
    VoStringView rootName() const&;
    VoString rootName() const&& { return VoString(rootName()); } ///< As above.
    /// The containing directory: of `C:\a` it is `C:\`, of `C:\a\b\` it is `C:\a\`. Null for a root and for a single
    /// relative name.
    /// @throws VoInvalidPathException "Invalid : in path name" when that is no valid directory path
    VoDirectoryPath parent() const;
    /// The text of the containing directory, with its final separator; empty where parent() is null.
    VoStringView parentPath() const&;
    VoString parentPath() const&& { return VoString(parentPath()); } ///< As above.
    /// The text behind the last separator; empty for a directory.
    VoStringView filename() const&;
    VoString filename() const&& { return VoString(filename()); } ///< As above.
    /// The file name before its last ".". A name without "." and one whose only "." leads it (".profile") are their
    /// own stem, and so are "." and "..".
    VoStringView stem() const&;
    VoString stem() const&& { return VoString(stem()); } ///< As above.
    /// The file name behind its last ".", without the dot; empty where stem() is the whole name, and for "a.".
    VoStringView extension() const&;
    VoString extension() const&& { return VoString(extension()); } ///< As above.

    /// This path if it is rooted, else the base directory with this path appended and resolved. The directory of a
    /// base that is a file by its text is its parent.
    /// @throws VoPathException "Unable to resolve as relative path is invalid"
    VoFilePath absolute(const VoFilePath& base) const;
    /// This path as seen from a base directory: "..\" for each directory to climb, then the rest. Unchanged when the
    /// two have different roots. The directory of a base that is a file by its text is its parent.
    VoFilePath relative(const VoFilePath& base) const;
    /// This directory with another path appended and resolved.
    /// @throws VoInvalidPathFileException "Cannot append to file path: " and the other path
    /// @throws VoInvalidPathFileException "Cannot append absolute path to path: " and the other path
    /// @throws VoPathException "Unable to resolve as relative path is invalid"
    VoFilePath appended(const VoFilePath& other) const;

    /// The text, and the path of a text.
    /// @{
    static VoString Serialize(const VoFilePath& path);
    static VoFilePath Deserialize(const VoString& text);
    /// @}

    /// Comparison of the texts, without regard to case.
    /// @{
    friend bool operator==(const VoFilePath& left, const VoFilePath& right) { return left.path() == right.path(); }
    friend bool operator!=(const VoFilePath& left, const VoFilePath& right) { return left.path() != right.path(); }
    friend bool operator<(const VoFilePath& left, const VoFilePath& right) { return left.path() < right.path(); }
    friend bool operator<=(const VoFilePath& left, const VoFilePath& right) { return left.path() <= right.path(); }
    friend bool operator>(const VoFilePath& left, const VoFilePath& right) { return left.path() > right.path(); }
    friend bool operator>=(const VoFilePath& left, const VoFilePath& right) { return left.path() >= right.path(); }
    // Strings and views are deduced exactly: a path converts to a string, whose own operators would compete.
    template <typename S>
    friend auto operator==(const VoFilePath& left, const S& right) -> vo::detail::IfComparableStrings<S>
    {
        return left.path() == right;
    }
    template <typename S>
    friend auto operator!=(const VoFilePath& left, const S& right) -> vo::detail::IfComparableStrings<S>
    {
        return left.path() != right;
    }
    template <typename S>
    friend auto operator==(const S& left, const VoFilePath& right) -> vo::detail::IfComparableStrings<S>
    {
        return left == right.path();
    }
    template <typename S>
    friend auto operator!=(const S& left, const VoFilePath& right) -> vo::detail::IfComparableStrings<S>
    {
        return left != right.path();
    }
    friend bool operator==(const VoFilePath& left, const char* right) { return left.path() == right; }
    friend bool operator!=(const VoFilePath& left, const char* right) { return left.path() != right; }
    friend bool operator==(const char* left, const VoFilePath& right) { return right.path() == left; }
    friend bool operator!=(const char* left, const VoFilePath& right) { return right.path() != left; }
    /// @}

    /// Writes the text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoFilePath& path);

private:
    struct Private;
    explicit VoFilePath(std::unique_ptr<Private> state) noexcept;

    std::unique_ptr<Private> m_private; // empty in a null path
};

/// Hash that agrees with the comparison without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoFilePath>
{
    /// The hash of the folded text.
    std::size_t operator()(const VoFilePath& path) const noexcept;
};
