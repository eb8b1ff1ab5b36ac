#pragma once

#include <Updater/XMLObject.h>

#include <memory>

namespace vo::updater {

/// The identity of one release of a package: the package's ID, which all its releases share, the release's own ID, the
/// display name and the version.
class VOCORE_EXPORT AbstractPackage : public XMLObject
{
public:
    ~AbstractPackage() override;

    const VoUUID& packageID() const;  ///< The same for all releases of the package.
    const VoUUID& versionID() const;  ///< A new one for each build.
    const VoString& name() const;     ///< For people to read.
    const VoVersion& version() const; ///< Major, minor, revision and build type.

    void writeAttributes(VoXMLElementWriter& element) const override;

protected:
    /// Empty IDs and name, version 0.0.0.
    AbstractPackage();
    /// A release of the given identity.
    AbstractPackage(const VoUUID& packageID, const VoUUID& versionID, const VoString& name, const VoVersion& version);
    /// Reads the attributes `packageID`, `versionID`, `name` and `version`.
    explicit AbstractPackage(VoXMLStreamElementLoader& element);

    /// @{ Copies are deep; a moved-from package reads as empty.
    AbstractPackage(const AbstractPackage& other);
    AbstractPackage(AbstractPackage&& other) noexcept;
    AbstractPackage& operator=(const AbstractPackage& other);
    AbstractPackage& operator=(AbstractPackage&& other) noexcept;
    /// @}

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty in a moved-from object
};

} // namespace vo::updater
