#include <Updater/PackageDifferences.h>

#include <Updater/detail/documents/HiddenState.h>

namespace vo::updater {

using namespace detail;

FileDifference::FileDifference(Type type, const VoUUID& fileID)
    : m_fileID(fileID)
    , m_type(type)
{
}

FileDifference::Type FileDifference::type() const
{
    return m_type;
}

const VoUUID& FileDifference::fileID() const
{
    return m_fileID;
}

struct PackageDifferences::Private
{
    VoUUID packageID = VoUUID("");
    VoUUID sourceVersionID = VoUUID("");
    VoUUID targetVersionID = VoUUID("");
    VoDeque<FileDifference> fileDifferences;
};

PackageDifferences::PackageDifferences(const VoUUID& packageID, const VoUUID& sourceVersionID,
                                       const VoUUID& targetVersionID)
    : m_private(new Private{packageID, sourceVersionID, targetVersionID, {}})
{
}

PackageDifferences::PackageDifferences(const PackageDifferences& other)
    : m_private(Copy(other.m_private))
{
}

PackageDifferences::PackageDifferences(PackageDifferences&& other) noexcept = default;

PackageDifferences& PackageDifferences::operator=(const PackageDifferences& other)
{
    m_private = Copy(other.m_private);
    return *this;
}

PackageDifferences& PackageDifferences::operator=(PackageDifferences&& other) noexcept = default;

PackageDifferences::~PackageDifferences() = default;

void PackageDifferences::fileAdded(const VoUUID& id)
{
    Write(m_private).fileDifferences.pushBack(FileDifference(FileDifference::Added, id));
}

void PackageDifferences::fileModified(const VoUUID& id)
{
    Write(m_private).fileDifferences.pushBack(FileDifference(FileDifference::Modified, id));
}

void PackageDifferences::fileRemoved(const VoUUID& id)
{
    Write(m_private).fileDifferences.pushBack(FileDifference(FileDifference::Removed, id));
}

const VoUUID& PackageDifferences::packageID() const
{
    return Read(m_private).packageID;
}

const VoUUID& PackageDifferences::sourceVersionID() const
{
    return Read(m_private).sourceVersionID;
}

const VoUUID& PackageDifferences::targetVersionID() const
{
    return Read(m_private).targetVersionID;
}

const VoDeque<FileDifference>& PackageDifferences::fileDifferences() const
{
    return Read(m_private).fileDifferences;
}

} // namespace vo::updater
