#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <ios>
#include <iosfwd>
#include <memory>

/// Base of the typed streams: thin wrappers of the standard library's text streams, whose behaviour is theirs. No
/// member throws for a failure of the stream; ask its state.
class VOCORE_EXPORT VoStream
{
public:
    VoStream(const VoStream&) = delete;
    VoStream& operator=(const VoStream&) = delete;
    virtual ~VoStream();

    bool good() const; ///< No failure and not at the end.
    bool bad() const;  ///< The stream is broken.
    bool fail() const; ///< The last operation failed, or the stream is broken or was never open.
    bool eof() const;  ///< A read met the end.

    /// The position that stands for "not found".
    static std::streampos eof_pos();

protected:
    VoStream();

    virtual const std::ios& standard() const = 0; ///< The standard stream's state.
};

/// Base of the typed streams that are read.
class VOCORE_EXPORT VoInputStream : public VoStream
{
public:
    ~VoInputStream() override;

    /// The text up to the next "\n", which is taken but not given; a "\r" before it stays. Empty at the end.
    VoString getLine();

    /// The position of the next `character` at or behind the current one, eof_pos() when there is none. The current
    /// position stays.
    std::streampos find(char character);

    /// Goes to the next `character`, so that it is the next one read. Without one, false, and the position stays.
    bool seek(char character);

    int get();                      ///< The next byte as 0 to 255; -1 at the end.
    void ignore();                  ///< Passes over one byte.
    void ignore(std::size_t count); ///< Passes over `count` bytes, fewer at the end.

    virtual std::istream& stream() = 0; ///< The standard stream; it stays this object's.

protected:
    VoInputStream();
};

/// Base of the typed streams that are written.
class VOCORE_EXPORT VoOutputStream : public VoStream
{
public:
    ~VoOutputStream() override;

    VoOutputStream& operator<<(const VoString& text); ///< Writes the bytes of `text`.
    void flush();                                     ///< Hands gathered bytes to the target; fail() tells how it went.

    virtual std::ostream& stream() = 0; ///< The standard stream; it stays this object's.

protected:
    VoOutputStream();
};

/// Reads a file as text, bytes unchanged. fail() after making it when the file cannot be opened.
class VOCORE_EXPORT VoFileInputStream : public VoInputStream
{
public:
    explicit VoFileInputStream(
        const VoFilePath& path); ///< Opens the file; VoPathSizeFileException when the path is too long.
    ~VoFileInputStream() override;

    std::istream& stream() override;

protected:
    const std::ios& standard() const override;

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};

/// Reads a string as text.
class VOCORE_EXPORT VoStringInputStream : public VoInputStream
{
public:
    explicit VoStringInputStream(const VoString& text); ///< Reads a copy of `text`.
    ~VoStringInputStream() override;

    std::istream& stream() override;

protected:
    const std::ios& standard() const override;

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};

/// Writes text to a file, which is created or emptied. fail() after making it when the file cannot be opened. The
/// destructor writes what is gathered and keeps silent; call flush() and ask fail() to know.
class VOCORE_EXPORT VoFileOutputStream : public VoOutputStream
{
public:
    explicit VoFileOutputStream(
        const VoFilePath& path); ///< Opens the file; VoPathSizeFileException when the path is too long.
    ~VoFileOutputStream() override;

    std::ostream& stream() override;

protected:
    const std::ios& standard() const override;

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};

/// Writes text to a string in memory.
class VOCORE_EXPORT VoStringOutputStream : public VoOutputStream
{
public:
    VoStringOutputStream();
    ~VoStringOutputStream() override;

    VoString toString() const; ///< What was written so far.

    std::ostream& stream() override;

protected:
    const std::ios& standard() const override;

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
