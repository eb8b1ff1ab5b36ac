#pragma once

#include <Core/VoException.h>

/// @file
/// Errors of files and paths.

/// A failure that concerns files. Carries up to two paths, which the message need not contain. A path is carried as it
/// is; a text is made a path, which trims blanks: pass the path object where there is one.
class VOCORE_EXPORT VoFileException : public VoException
{
public:
    VoFileException(const VoString& message);                             ///< The message, no paths.
    VoFileException(const VoString& message, const VoString& path);       ///< The message and path1.
    VoFileException(const VoString& message, const char* path);           ///< The message and path1.
    VoFileException(const VoString& message, const VoFilePath& path);     ///< The message and path1.
    VoFileException(const VoString& message, const VoAbstractPath& path); ///< The message and path1.
    VoFileException(const VoString& message, const VoFilePath& path1,
                    const VoFilePath& path2);                 ///< The message and both paths.
    VoFileException(const VoFileException& other);            ///< Copies message and paths.
    VoFileException& operator=(const VoFileException& other); ///< Copies message and paths.
    ~VoFileException() override;

    const char* name() const override;
    const VoFilePath& path1() const; ///< The file concerned, or the first of two; null unless set.
    const VoFilePath& path2() const; ///< The second of two files; null unless set.

private:
    class Paths;
    std::unique_ptr<Paths> m_paths;
};

/// A file that cannot be opened.
class VOCORE_EXPORT VoCannotOpenFileException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoCannotOpenFileException)
public:
    VoCannotOpenFileException(const VoString& path);       ///< "Cannot open file: " + path; path1 is the path.
    VoCannotOpenFileException(const VoFilePath& path);     ///< "Cannot open file: " + path; path1 is the path.
    VoCannotOpenFileException(const VoAbstractPath& path); ///< "Cannot open file: " + path; path1 is the path.
    VoCannotOpenFileException(const char* path);           ///< "Cannot open file: " + path; path1 is the path.
    /// "Cannot open file (" + the device's last error + "): " + its path; path1 is that path, and reason() is the
    /// device's.
    VoCannotOpenFileException(const VoFileDevice& device);
};

/// A file that somebody else has locked.
class VOCORE_EXPORT VoFileLockedException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoFileLockedException)
public:
    VoFileLockedException(const VoString& path); ///< "File already locked: " + path; path1 is the path.
};

/// A file that is not there.
class VOCORE_EXPORT VoFileNotFoundException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoFileNotFoundException)
public:
    VoFileNotFoundException(const VoString& path);       ///< "File not found: " + path; path1 is the path.
    VoFileNotFoundException(const VoFilePath& path);     ///< "File not found: " + path; path1 is the path.
    VoFileNotFoundException(const VoAbstractPath& path); ///< "File not found: " + path; path1 is the path.
    VoFileNotFoundException(const char* path);           ///< "File not found: " + path; path1 is the path.
};

/// A document that cannot be saved.
class VOCORE_EXPORT VoFileSaveException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoFileSaveException)
public:
    VoFileSaveException(const VoString& what,
                        const VoString& path); ///< "Cannot save [" + what + "]"; path1 is the path.
};

/// A path that cannot be used where it is given.
class VOCORE_EXPORT VoInvalidPathFileException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoInvalidPathFileException)
public:
    /// "Invalid path: " and nothing after it; path1 is the path.
    VoInvalidPathFileException(const VoFilePath& path);
    VoInvalidPathFileException(const VoString& message,
                               const VoAbstractPath& path); ///< message + ": " + path; path1 is the path.
    VoInvalidPathFileException(const VoString& message,
                               const VoFilePath& path); ///< message + ": " + path; path1 is the path.
};

/// A path longer than paths may be.
class VOCORE_EXPORT VoPathSizeFileException : public VoFileException
{
    VOCORE_EXCEPTION_CLASS(VoPathSizeFileException)
public:
    VoPathSizeFileException(); ///< "Path size too long"
    /// "Path exceeds maximum length by " + excess + " characters for: " + path, the excess in bytes. Stores no paths.
    VoPathSizeFileException(const VoFilePath& path);
};
