#pragma once

#include <FileSystem/VoAbstractPath.h>

#include <functional>

/// The path of a directory: a text that ends with the separator, or the null path.
class VOCORE_EXPORT VoDirectoryPath : public VoAbstractPath
{
public:
    /// The null path.
    VoDirectoryPath();
    /// Normalise and check a text. FromText() takes one that lacks the final separator.
    /// @throws VoInvalidPathException "Invalid : in path name", or "Not a valid directory path" with the text as its
    /// subject and what is missing as its reason
    /// @{
    VoDirectoryPath(const VoString& text);
    VoDirectoryPath(VoString&& text);
    VoDirectoryPath(const char* text);
    /// @}
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoDirectoryPath(const VoDirectoryPath& other);
    VoDirectoryPath(VoDirectoryPath&& other) noexcept;
    VoDirectoryPath& operator=(const VoDirectoryPath& other);
    VoDirectoryPath& operator=(VoDirectoryPath&& other) noexcept;
    /// @}
    ~VoDirectoryPath() override;

    /// A directory from a text whose final separator may be missing, as people and environment variables write it.
    /// @throws VoInvalidPathException "Invalid : in path name"
    static VoDirectoryPath FromText(const VoString& text);

    /// Appends in place; see appended().
    /// @{
    VoDirectoryPath& append(const VoDirectoryPath& other);
    VoDirectoryPath& append(const VoDirectoryPathFragment& other);
    /// @}

    /// This directory with another path appended and resolved. Appending to the null path gives the other one.
    /// ".." pieces of the other path may lead out of this directory: they are not meant for outside text.
    /// @throws VoInvalidPathFileException "Cannot append absolute path to path: " and the other path
    /// @throws VoPathException "Unable to resolve as relative path is invalid"
    /// @{
    VoDirectoryPath appended(const VoDirectoryPath& other) const;
    VoDirectoryPath appended(const VoDirectoryPathFragment& other) const;
    VoFilePath appended(const VoFilePath& other) const;
    /// @}

    /// A directory in this one. A name may lack the final separator. Throws as appended().
    /// @{
    VoDirectoryPath directory(const VoDirectoryPath& name) const;
    VoDirectoryPath directory(const VoString& name) const;
    VoDirectoryPath directory(const char* name) const;
    /// @}

    /// A file in this directory. Throws as appended().
    /// @{
    VoFilePath file(const char* name) const;
    VoFilePath file(const VoString& name) const;
    /// @}

    /// The path of a file as seen from this directory: VoFilePath::relative().
    VoFilePath relativeFile(const VoFilePath& file) const;

    /// The same text as a file path, for interfaces that take one.
    VoFilePath toFilePath() const;

    /// The text, and the path of a text.
    /// @{
    static VoString Serialize(const VoDirectoryPath& path);
    static VoDirectoryPath Deserialize(const VoString& text);
    /// @}

protected:
    /// @throws VoInvalidPathException "Invalid : in path name" or "Not a valid directory path"
    void assertValid() const override;
};

/// Hash that agrees with the comparison without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoDirectoryPath>
{
    /// The hash of the folded text.
    std::size_t operator()(const VoDirectoryPath& path) const noexcept;
};

#include <FileSystem/VoFilePath.h>
