#pragma once

#include <Core/VoDeque.h>
#include <Core/VoUUID.h>
#include <Core/VoUniquePtr.h>
#include <Updater/AbstractFileListing.h>
#include <Updater/AbstractPackage.h>
#include <Updater/PackageDifferences.h>

#include <memory>
#include <vector>

namespace vo::updater {

class ReleaseAttributes;

/// A release together with its files, advertised or installed, that can be compared with another release of the same
/// package.
class VOCORE_EXPORT AbstractPackageListing : public AbstractPackage
{
public:
    ~AbstractPackageListing() override;

    /// The file with that ID, or null; owned by this listing and valid until the listing changes. When a document lists
    /// an ID twice, the first one.
    virtual const AbstractFileListing* file(const VoUUID& fileID) const = 0;
    /// The IDs of all files, in the order of the files.
    virtual VoDeque<VoUUID> fileIDs() const = 0;

    /// What has to happen to come from this release to `target`, in the sorted order of the file IDs.
    ///
    /// A file is modified when both have its ID and the listings are not equivalent(). The cost grows with n log n of
    /// the files.
    /// @throws VoInvalidParameterException with "Cannot compare different base packages" when the package IDs differ in
    /// more than letter case
    VoUniquePtr<PackageDifferences> compare(const AbstractPackageListing& target) const;

    /// What the release holds besides the bytes of its files. It stands in a document of its own, and this listing's
    /// does not have it. Null for an advert while nobody has looked whether there is such a document (an empty one says
    /// that there is none), and for an installed release of which nothing of that kind is recorded.
    const std::shared_ptr<const ReleaseAttributes>& attributes() const noexcept;
    /// Sets what the release holds besides; an installation takes it from here.
    void setAttributes(std::shared_ptr<const ReleaseAttributes> attributes) noexcept;

protected:
    AbstractPackageListing();
    /// A release of the given identity.
    AbstractPackageListing(const VoUUID& packageID, const VoUUID& versionID, const VoString& name,
                           const VoVersion& version);
    /// Reads the identity of a `package` element.
    explicit AbstractPackageListing(VoXMLStreamElementLoader& element);

    /// The files themselves, in their order, for comparing without a copy of each ID and a look-up. The default asks
    /// fileIDs() and file().
    virtual std::vector<const AbstractFileListing*> listedFiles() const;

    /// @{ Copies are deep; a moved-from listing reads as empty.
    AbstractPackageListing(const AbstractPackageListing& other);
    AbstractPackageListing(AbstractPackageListing&& other) noexcept;
    AbstractPackageListing& operator=(const AbstractPackageListing& other);
    AbstractPackageListing& operator=(AbstractPackageListing&& other) noexcept;
    /// @}

private:
    std::shared_ptr<const ReleaseAttributes> m_attributes;
};

} // namespace vo::updater
