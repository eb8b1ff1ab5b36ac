#include <Updater/AbstractFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

struct AbstractFileListing::Private
{
    VoUUID id = VoUUID("");
    VoChecksum checksum;
    VoDownloadSize size = VoDownloadSize(0);
};

AbstractFileListing::AbstractFileListing() = default;

AbstractFileListing::AbstractFileListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size)
    : m_private(new Private{id, checksum, size})
{
}

AbstractFileListing::AbstractFileListing(VoXMLStreamElementLoader& element)
    : m_private(new Private{ReadAttribute<VoUUID>(element, attribute::Id),
                            ReadAttribute<VoChecksum>(element, attribute::Checksum),
                            ReadAttribute<VoDownloadSize>(element, attribute::Size)})
{
}

AbstractFileListing::AbstractFileListing(const AbstractFileListing& other)
    : XMLObject(other)
    , m_private(Copy(other.m_private))
{
}

AbstractFileListing::AbstractFileListing(AbstractFileListing&& other) noexcept = default;

AbstractFileListing& AbstractFileListing::operator=(const AbstractFileListing& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

AbstractFileListing& AbstractFileListing::operator=(AbstractFileListing&& other) noexcept = default;

AbstractFileListing::~AbstractFileListing() = default;

const VoUUID& AbstractFileListing::id() const
{
    return Read(m_private).id;
}

const VoChecksum& AbstractFileListing::checksum() const
{
    return Read(m_private).checksum;
}

const VoDownloadSize& AbstractFileListing::size() const
{
    return Read(m_private).size;
}

bool AbstractFileListing::equivalent(const AbstractFileListing& other) const
{
    return size() == other.size() && checksum() == other.checksum() && id() == other.id();
}

void AbstractFileListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Id, id());
    WriteAttribute(element, attribute::Checksum, checksum());
    WriteAttribute(element, attribute::Size, size());
}

} // namespace vo::updater
