#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoStringView.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>

/// Common base of directory paths and fragments: a normalised text and the questions one may ask about it.
///
/// Every path is normalised when it is made: white space at both ends goes, each "/" becomes "\", and runs of
/// separators become one, but for a leading pair, which begins a network root. Comparisons ignore case, also on systems
/// whose file names do not; whether two paths lead to one file on disk is answered by VoFileSystem::Same.
///
/// The text of a native path of a POSIX system begins with a single "\" and has no root name, so by the rules of root
/// names it counts as relative. Whoever decides where a path leads asks isRooted(), not isAbsolute().
///
/// A path is a value. Its views point into it and end with the path; a temporary path gives texts of their own instead.
class VOCORE_EXPORT VoAbstractPath
{
public:
    virtual ~VoAbstractPath();

    /// The normalised text; empty for a null path.
    const VoString& path() const& noexcept { return m_path; }
    /// @copydoc path()
    VoString path() && noexcept { return std::move(m_path); }
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
    /// True when the path has a root name or begins with a separator: it does not depend on a current directory alone.
    bool isRooted() const noexcept;
    /// True when the text ends with the separator. Asks the text, not the disk.
    bool isDirectory() const noexcept;
    /// True when the path is neither null nor a directory by its text.
    bool isFile() const noexcept;
    /// True when the path could be a VoDirectoryPathFragment: relative, not null, and ending with the separator.
    bool isFragment() const noexcept;
    /// Asks the disk whether anything bears this path.
    /// @throws VoFileException "exists: " and the system's text, when the system cannot tell
    bool exists() const;

    /// The root: "\\server" of a network path, else the text up to and including the first ":", else empty.
    VoStringView rootName() const&;
    VoString rootName() const&& { return VoString(rootName()); } ///< As above.
    /// The first chunk behind the root; empty when there is none.
    VoStringView top() const&;
    VoString top() const&& { return VoString(top()); } ///< As above.
    /// The piece at an index, as chunks() gives it.
    /// @throws VoIndexOutOfBoundsException with the index and numberChunks()
    VoStringView chunk(std::size_t index) const&;
    VoString chunk(std::size_t index) const&& { return VoString(chunk(index)); } ///< As above.
    /// The pieces between separators, without the empty ones that leading and trailing separators make.
    /// The first one is the drive, or the server's name, where the path has such a root.
    VoDeque<VoStringView> chunks() const&;
    VoDeque<VoString> chunks() const&&; ///< As above.
    /// The number of pieces that chunks() gives.
    std::size_t numberChunks() const noexcept;

    /// The containing directory: of `C:\a\b\` it is `C:\a\`. Null for a root and for a single relative name.
    VoDirectoryPath parent() const;

    /// Removes each ".." piece together with the piece before it, in place. A text without "..\" is left alone, so a
    /// final ".." stays when it is the only one; "." pieces stay. Unchanged after a failure.
    /// @throws VoPathException "Unable to resolve as relative path is invalid" when nothing but the root stands before
    ///        a ".."
    void resolve();

    /// The text of a path for storage.
    static VoString Serialize(const VoAbstractPath& path);

    /// Comparison of the texts, without regard to case.
    /// @{
    friend bool operator==(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path == right.m_path;
    }
    friend bool operator!=(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path != right.m_path;
    }
    friend bool operator<(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path < right.m_path;
    }
    friend bool operator<=(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path <= right.m_path;
    }
    friend bool operator>(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path > right.m_path;
    }
    friend bool operator>=(const VoAbstractPath& left, const VoAbstractPath& right)
    {
        return left.m_path >= right.m_path;
    }
    friend bool operator==(const VoAbstractPath& left, const VoString& right) { return left.m_path == right; }
    friend bool operator!=(const VoAbstractPath& left, const VoString& right) { return left.m_path != right; }
    friend bool operator==(const VoString& left, const VoAbstractPath& right) { return left == right.m_path; }
    friend bool operator!=(const VoString& left, const VoAbstractPath& right) { return left != right.m_path; }
    /// @}

    /// Writes the text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoAbstractPath& path);

protected:
    VoAbstractPath();
    /// Normalise the text. They do not call assertValid(): each subclass calls its own.
    /// @{
    explicit VoAbstractPath(const VoString& text);
    explicit VoAbstractPath(VoString&& text);
    explicit VoAbstractPath(const char* text);
    /// @}
    /// Copies and moves the text.
    /// @{
    VoAbstractPath(const VoAbstractPath& other);
    VoAbstractPath(VoAbstractPath&& other) noexcept;
    VoAbstractPath& operator=(const VoAbstractPath& other);
    VoAbstractPath& operator=(VoAbstractPath&& other) noexcept;
    /// @}

    /// Refuses a ":" behind the root name.
    /// @throws VoInvalidPathException "Invalid : in path name"
    virtual void assertValid() const;

    /// Appends a path to this directory and resolves the result. A leading separator of the other path is dropped at
    /// the joint. Unchanged after a failure.
    /// @throws VoInvalidPathFileException "Cannot append to file path: " and the other path, when this path is not null
    ///        and does not end with the separator
    /// @throws VoInvalidPathFileException "Cannot append absolute path to path: " and the other path, when that has a
    ///        root name and this path is not null
    /// @throws VoPathException as resolve()
    void append(const VoAbstractPath& other);

private:
    VoString m_path;
};
