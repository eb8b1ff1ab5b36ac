#pragma once

#include <FileSystem/VoAbstractPath.h>

/// A piece of a directory path: relative, ending with the separator, to be appended to a directory.
class VOCORE_EXPORT VoDirectoryPathFragment : public VoAbstractPath
{
public:
    /// The null fragment.
    VoDirectoryPathFragment();
    /// Normalises and checks a text.
    /// @throws VoDirectoryPathException "Not a valid directory path: " and the text, when the text has a root name or
    ///        does not end with the separator
    explicit VoDirectoryPathFragment(const VoString& text);
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoDirectoryPathFragment(const VoDirectoryPathFragment& other);
    VoDirectoryPathFragment(VoDirectoryPathFragment&& other) noexcept;
    VoDirectoryPathFragment& operator=(const VoDirectoryPathFragment& other);
    VoDirectoryPathFragment& operator=(VoDirectoryPathFragment&& other) noexcept;
    /// @}
    ~VoDirectoryPathFragment() override;

    /// The path of a file under the fragment, resolved.
    /// @throws VoInvalidPathFileException "Cannot append absolute path to path: " and the file
    /// @throws VoPathException "Unable to resolve as relative path is invalid"
    /// @{
    VoFilePath file(const char* name) const;
    VoFilePath file(const VoFilePath& file) const;
    /// @}

protected:
    /// @throws VoDirectoryPathException "Not a valid directory path: " and the text
    void assertValid() const override;
};
