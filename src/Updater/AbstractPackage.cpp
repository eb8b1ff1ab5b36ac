#include <Updater/AbstractPackage.h>

#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

struct AbstractPackage::Private
{
    VoUUID packageID = VoUUID("");
    VoUUID versionID = VoUUID("");
    VoString name;
    VoVersion version;
};

AbstractPackage::AbstractPackage() = default;

AbstractPackage::AbstractPackage(const VoUUID& packageID, const VoUUID& versionID, const VoString& name,
                                 const VoVersion& version)
    : m_private(new Private{packageID, versionID, name, version})
{
}

AbstractPackage::AbstractPackage(VoXMLStreamElementLoader& element)
    : m_private(new Private{ReadAttribute<VoUUID>(element, attribute::PackageID),
                            ReadAttribute<VoUUID>(element, attribute::VersionID), element.attribute(attribute::Name),
                            ReadAttribute<VoVersion>(element, attribute::Version)})
{
}

AbstractPackage::AbstractPackage(const AbstractPackage& other)
    : XMLObject(other)
    , m_private(Copy(other.m_private))
{
}

AbstractPackage::AbstractPackage(AbstractPackage&& other) noexcept = default;

AbstractPackage& AbstractPackage::operator=(const AbstractPackage& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

AbstractPackage& AbstractPackage::operator=(AbstractPackage&& other) noexcept = default;

AbstractPackage::~AbstractPackage() = default;

const VoUUID& AbstractPackage::packageID() const
{
    return Read(m_private).packageID;
}

const VoUUID& AbstractPackage::versionID() const
{
    return Read(m_private).versionID;
}

const VoString& AbstractPackage::name() const
{
    return Read(m_private).name;
}

const VoVersion& AbstractPackage::version() const
{
    return Read(m_private).version;
}

void AbstractPackage::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::PackageID, packageID());
    WriteAttribute(element, attribute::VersionID, versionID());
    element.writeAttribute(attribute::Name, name());
    WriteAttribute(element, attribute::Version, version());
}

} // namespace vo::updater
