#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>

namespace vo::updater {

/// Base of everything the updater keeps in XML: built by the stream loader from an element, and able to write itself.
///
/// The caller opens the element and gives it its name; write() fills it. All subclasses are plain values without
/// locking: a caller that shares one across threads guards it.
class VOCORE_EXPORT XMLObject : public VoAbstractXMLStreamLoaderObject
{
public:
    /// Which class an object has, for code that gets one from a loader. The numbers are fixed.
    enum class Type : int
    {
        AdvertisedFile = 0,     ///< AdvertisedFileListing
        AdvertisedPackage = 1,  ///< AdvertisedPackageListing
        Declaration = 2,        ///< AdvertisedPackages::Declaration
        AdvertisedPackages = 3, ///< AdvertisedPackages
        Chunk = 4,              ///< ChunkListing
        ChunkReference = 5,     ///< ChunkReferenceListing
        InstalledFile = 6,      ///< InstalledFileListing
        InstalledPackage = 7,   ///< InstalledPackageListing
        InstalledPackages = 8,  ///< InstalledPackages
        RunNotes = 9,           ///< What an installation notes about itself; of no use to others.
        ReleaseManifest = 10,   ///< ReleaseManifest
        ReleaseKeys = 11,       ///< ReleaseKeys
        TrustPin = 12,          ///< What is remembered of a package's publisher; of no use to others.
        ReleaseAttributes = 13, ///< ReleaseAttributes
        ReleasePatches = 14,    ///< ReleasePatches
        StagedRelease = 15,     ///< What is noted of a staged release; of no use to others.
    };

    ~XMLObject() override;

    /// The class of this object.
    virtual Type objectType() const = 0;
    /// Writes the attributes of the object's element; a derived class writes its own first, then its base's.
    virtual void writeAttributes(VoXMLElementWriter& element) const;
    /// Writes the child elements of the object's element.
    virtual void writeElements(VoXMLElementWriter& element) const;

    /// Writes all attributes and then all child elements into `element`, as the writer's rules require.
    void write(VoXMLElementWriter& element) const;

    /// objectType() as the loader's number.
    int typeCode() const final;

protected:
    /// @{ Values copy; the base alone cannot be made or assigned.
    XMLObject() = default;
    XMLObject(const XMLObject&) = default;
    XMLObject& operator=(const XMLObject&) = default;
    /// @}
};

} // namespace vo::updater
