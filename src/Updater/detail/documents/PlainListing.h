#pragma once

// The documents of listings in the one form in which this library writes them: a line for each element. Read and
// written without an object or a parser's step for each; the general rules (XMLDocument) read whatever else is XML, and
// would write the same bytes.

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Updater/ChunkListing.h>
#include <Updater/detail/documents/FileTable.h>

#include <optional>
#include <string_view>

namespace vo::updater {
class AbstractPackage;
}

namespace vo::updater::detail {

class PlainWriter;

enum class ListingKind
{
    Advertised, ///< AdvertisedPackageListing
    Installed,  ///< InstalledPackageListing
};

/// What the document of a listing holds.
struct PlainListing
{
    VoUUID packageID = VoUUID("");
    VoUUID versionID = VoUUID("");
    VoString name;
    VoVersion version;
    FileTable files;
    VoDeque<ChunkListing> chunks;         ///< Of an advertised one.
    VoDirectoryPath directory;            ///< Of an installed one.
    VoDeque<VoDirectoryPath> directories; ///< Of an installed one.
};

/// @{ Reads a document; nothing for one in another form, also one that is damaged or cannot be read: the general rules
/// tell what is wrong with it.
VOCORE_PRIVATE_EXPORT std::optional<PlainListing> ReadPlainListing(ListingKind kind, const VoFilePath& path);
VOCORE_PRIVATE_EXPORT std::optional<PlainListing> ReadPlainListing(ListingKind kind, std::string_view document);
/// @}

/// What is to be written of a listing: chunks of an advertised one, directories of an installed one.
struct WrittenListing
{
    const AbstractPackage& package;
    const VoDirectoryPath* directory;
    const FileTable& files;
    const VoDeque<ChunkListing>* chunks;
    const VoDeque<VoDirectoryPath>* directories;
};

/// Whether all texts can be written without the general rules.
VOCORE_PRIVATE_EXPORT bool IsPlainListing(const WrittenListing& listing);
/// Writes the element of the listing into a document. REQUIRES IsPlainListing().
VOCORE_PRIVATE_EXPORT void WriteListing(PlainWriter& writer, const WrittenListing& listing);

/// Replaces a file by the document, atomically. False, and nothing is done, for texts that need the general rules.
/// @throws VoException as VoAtomicFileWriter
VOCORE_PRIVATE_EXPORT bool WritePlainListing(const VoFilePath& path, const WrittenListing& listing);

} // namespace vo::updater::detail
