#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

#include <cstddef>
#include <functional>
#include <iosfwd>

/// Where a document stands: in a file of this machine, or behind a URL.
///
/// A path or a URL is one as it stands, so that functions that read from either take a location:
///
///     InstalledPackages::Install(VoLocation::FromText(typed), folder, stop);
class VOCORE_EXPORT VoLocation
{
public:
    /// The null location: a file whose path is null.
    VoLocation();
    VoLocation(const VoFilePath& file); ///< A file.
    VoLocation(const VoUrl& url);       ///< What is behind a URL.
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoLocation(const VoLocation& other);
    VoLocation(VoLocation&& other) noexcept;
    VoLocation& operator=(const VoLocation& other);
    VoLocation& operator=(VoLocation&& other) noexcept;
    /// @}
    ~VoLocation();

    /// The location that a text means: one with "://" in it is a URL, any other one a path.
    /// @throws VoInvalidParameterException ("Invalid URL: " + text) for a URL without scheme or host
    static VoLocation FromText(const VoString& text);

    bool isNull() const noexcept; ///< Whether the path or the URL is null.
    bool isUrl() const noexcept;  ///< Whether it is a URL, else it is a file.
    /// The file's path.
    /// @throws VoInvalidCallException ("Not a file: " + text) for a URL
    const VoFilePath& file() const;
    /// The URL.
    /// @throws VoInvalidCallException ("Not a URL: " + path) for a file
    const VoUrl& url() const;

    /// The text of the path or URL, of which FromText makes the same location. A URL's may hold a password.
    const VoString& toString() const noexcept;
    /// The location without the user name and password that a URL may hold: what may be shown or kept.
    VoLocation withoutUser() const;

    /// The location of a file that is named relative to the folder of this document. For a URL each piece of the path
    /// is percent-encoded and appended to the parent, never resolved: "//other/x" must not lead to another server.
    /// Whether the path climbs out of the folder of a file is for the caller to check.
    /// @throws VoInvalidPathFileException what VoUrl::appended throws, for a URL
    VoLocation beside(const VoFilePath& relative) const;

    /// The text, and the location of a text, as FromText().
    /// @{
    static VoString Serialize(const VoLocation& location);
    static VoLocation Deserialize(const VoString& text);
    /// @}

    /// Equal are two files or two URLs that compare as equal, without regard to case.
    /// @{
    friend bool operator==(const VoLocation& left, const VoLocation& right)
    {
        return left.m_isUrl == right.m_isUrl && left.m_file == right.m_file && left.m_url == right.m_url;
    }
    friend bool operator!=(const VoLocation& left, const VoLocation& right) { return !(left == right); }
    /// @}

    /// Writes the text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoLocation& location);

private:
    VoFilePath m_file; // null for a URL
    VoUrl m_url;       // null for a file
    bool m_isUrl = false;
};

/// Hash that agrees with the comparison without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoLocation>
{
    /// The hash of the path or URL.
    std::size_t operator()(const VoLocation& location) const noexcept;
};
