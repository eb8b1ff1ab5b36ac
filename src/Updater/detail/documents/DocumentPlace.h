#pragma once

// Where the documents of a folder of releases are read: each at once and whole, into memory, so that what was checked
// is what is used.

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Download/VoDownloadPolicy.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoLocation.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace vo::updater::detail {

/// A folder of releases on this machine or on a server.
class VOCORE_PRIVATE_EXPORT DocumentPlace
{
public:
    explicit DocumentPlace(const VoDirectoryPath& folder);

    /// The place of a document and the document's name there.
    static std::pair<DocumentPlace, VoFilePath> Of(const VoLocation& document, const VoStopFlag& stop,
                                                   const VoDownloadPolicy& downloads);

    /// The place beside whose declarations a definition was published, with the definition's name there: four names
    /// further up, when these are "packages", an ID, a release and a name; else the place and name as they are.
    std::pair<DocumentPlace, VoFilePath> ofPublication(const VoFilePath& definition) const;

    /// The bytes of a document; none when it is not there: when no file bears its name, or the server says that there
    /// is none for us (403, 404 and 410).
    /// @throws VoDownloadException for more than `most` bytes and whatever else keeps a document from coming; what
    /// ReadDocument throws
    /// @throws VoUserCancelledException
    std::optional<VoString> find(const VoFilePath& relative, std::uint64_t most = LargestDocument) const;
    /// As find(); a document that is not there is a failure like others.
    VoString read(const VoFilePath& relative, std::uint64_t most = LargestDocument) const;

    const VoStopFlag& stop() const { return m_stop; }        ///< What ends fetching.
    VoLocation locationOf(const VoFilePath& relative) const; ///< Where a document here stands.
    /// What a document here is called: its path, or its URL without user name and password.
    VoString nameOf(const VoFilePath& relative) const;

private:
    DocumentPlace(const VoLocation& document, const VoStopFlag& stop, const VoDownloadPolicy& downloads);
    DocumentPlace parent() const;

    VoLocation m_document;   // any one of the folder: the others stand beside it
    VoFilePath m_openedName; // of the document that the place was made of
    VoLocation m_opened;     // where it is, as it was given: with a query, and spelt as the caller does
    VoStopFlag m_stop;
    VoDownloadPolicy m_downloads;
};

/// A name with something added.
inline VoFilePath Suffixed(const VoFilePath& path, const VoString& suffix)
{
    return VoFilePath(path.path() + suffix);
}

} // namespace vo::updater::detail
