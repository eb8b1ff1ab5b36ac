#pragma once

#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/XMLObject.h>

namespace vo::updater {

/// What a release holds besides the bytes of its files: which of them are executable, links, and empty folders.
///
///     <attributes packageID versionID>
///         <executable target/> ...
///         <link target to/> ...
///         <folder target/> ...
///     </attributes>
///
/// It stands beside the definition, named FileName, and only where there is something to say; installations that know
/// nothing of it install the files alone. Targets are relative to the installation directory, like those of files.
/// Where a link leads is relative to the folder that the link lies in and stays in the release, also through other
/// links. A plain value.
class VOCORE_EXPORT ReleaseAttributes : public XMLObject
{
public:
    static constexpr const char* FileName = "attributes.xml"; ///< Beside the definition.

    /// A symbolic link.
    struct VOCORE_EXPORT Link
    {
        VoFilePath target; ///< Its place.
        VoString to;       ///< Where it leads, with backslashes.
    };

    ReleaseAttributes();                                                 ///< Nothing, of no release.
    ReleaseAttributes(const VoUUID& packageID, const VoUUID& versionID); ///< Nothing, of a release.
    /// Reads an `attributes` element.
    /// @throws VoValidationException as Parse()
    explicit ReleaseAttributes(VoXMLStreamElementLoader& element);
    /// @{ Values: copies are deep, a moved-from one is only good for being assigned to.
    ReleaseAttributes(const ReleaseAttributes& other);
    ReleaseAttributes(ReleaseAttributes&& other) noexcept;
    ReleaseAttributes& operator=(const ReleaseAttributes& other);
    ReleaseAttributes& operator=(ReleaseAttributes&& other) noexcept;
    ~ReleaseAttributes() override;
    /// @}

    /// Reads a document from memory; `name` is what errors and the log call it.
    /// @throws VoNullPointerException "Attributes failed to load", for a document of another kind
    /// @throws VoValidationException "Invalid target path: " + target, for a place that could lie outside of the
    /// installation directory; and what malformed documents throw
    static ReleaseAttributes Parse(const VoString& bytes, const VoString& name);
    /// The whole document.
    VoString toDocument() const;

    bool isEmpty() const; ///< Whether there is nothing to say: then there is no document.

    VoUUID packageID{""};            ///< The package.
    VoUUID versionID{""};            ///< The release.
    VoDeque<VoFilePath> executables; ///< The targets of the files that are programs.
    VoDeque<Link> links;             ///< In the order of their targets.
    VoDeque<VoFilePath> folders;     ///< The places of folders in which nothing lies.

    Type objectType() const override;
    void writeAttributes(VoXMLElementWriter& element) const override;
    void writeElements(VoXMLElementWriter& element) const override;
};

} // namespace vo::updater
