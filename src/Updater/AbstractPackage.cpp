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
    : m_private(new Private{ReadAttribute<VoUUID>(element, attribute::packageID),
                            ReadAttribute<VoUUID>(element, attribute::versionID), element.attribute(attribute::name),
                            ReadAttribute<VoVersion>(element, attribute::version)})
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
    WriteAttribute(element, attribute::packageID, packageID());
    WriteAttribute(element, attribute::versionID, versionID());
    element.writeAttribute(attribute::name, name());
    WriteAttribute(element, attribute::version, version());
}

} // namespace vo::updater
