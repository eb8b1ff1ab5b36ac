#include <Updater/AbstractFileListing.h>

#include <Core/VoChecksum.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/FileTable.h>
#include <Updater/detail/documents/ListedFile.h>

#include <memory>
#include <utility>

namespace vo::updater {

using namespace detail;

AbstractFileListing::AbstractFileListing() = default;

AbstractFileListing::AbstractFileListing(const VoUUID& id, const VoChecksum& checksum, const VoDownloadSize& size,
                                         const VoFilePath& path)
{
    own().add(id, checksum, size.bytes(), path.path());
}

AbstractFileListing::AbstractFileListing(VoXMLStreamElementLoader& element, const char* pathAttribute)
{
    const VoUUID id = ReadAttribute<VoUUID>(element, attribute::Id);
    const VoChecksum checksum = ReadAttribute<VoChecksum>(element, attribute::Checksum);
    const VoDownloadSize size = ReadAttribute<VoDownloadSize>(element, attribute::Size);
    own().add(id, checksum, size.bytes(), ReadAttribute<VoFilePath>(element, pathAttribute).path());
}

AbstractFileListing::AbstractFileListing(const FileTable& table, std::uint32_t number) noexcept
    : m_table(&table)
    , m_number(number)
{
}

AbstractFileListing::AbstractFileListing(const AbstractFileListing& other)
    : XMLObject(other)
{
    if (other.m_table)
        own().add(*other.m_table, other.m_number);
}

AbstractFileListing::AbstractFileListing(AbstractFileListing&& other) noexcept
    : m_own(std::move(other.m_own))
    , m_table(std::exchange(other.m_table, nullptr))
    , m_number(other.m_number)
{
}

AbstractFileListing& AbstractFileListing::operator=(const AbstractFileListing& other)
{
    if (this == &other)
        return *this;
    auto copy = other.m_table ? std::make_unique<FileTable>() : nullptr;
    if (copy)
        copy->add(*other.m_table, other.m_number);
    m_own = std::move(copy);
    m_table = m_own.get();
    m_number = 0;
    return *this;
}

AbstractFileListing& AbstractFileListing::operator=(AbstractFileListing&& other) noexcept
{
    const auto freed = std::exchange(m_own, std::move(other.m_own)); // last: it may hold `other`'s view
    m_table = std::exchange(other.m_table, nullptr);
    m_number = other.m_number;
    return *this;
}

AbstractFileListing::~AbstractFileListing() = default;

FileTable& AbstractFileListing::own()
{
    if (!m_own)
        m_own = std::make_unique<FileTable>();
    m_table = m_own.get();
    m_number = 0;
    return *m_own;
}

void AbstractFileListing::addPiece(const VoUUID& chunkID, std::uint64_t offset, std::uint64_t length)
{
    m_own->addPiece(chunkID.toString().toStdString(), offset, length);
}

VoUUID AbstractFileListing::id() const
{
    return ListedFile(*this).id();
}

VoChecksum AbstractFileListing::checksum() const
{
    return ListedFile(*this).checksum();
}

VoDownloadSize AbstractFileListing::size() const
{
    return VoDownloadSize(ListedFile(*this).length());
}

std::string_view AbstractFileListing::pathText() const
{
    return ListedFile(*this).path();
}

bool AbstractFileListing::equivalent(const AbstractFileListing& other) const
{
    return ListedFile(*this).isEquivalent(ListedFile(other));
}

void AbstractFileListing::writeAttributes(VoXMLElementWriter& element) const
{
    WriteAttribute(element, attribute::Id, id());
    WriteAttribute(element, attribute::Checksum, checksum());
    WriteAttribute(element, attribute::Size, size());
}

} // namespace vo::updater
