#include <Download/VoGroupedDownloadRequest.h>

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

struct VoGroupedDownloadRequest::Private
{
    VoDeque<VoPair<VoUrl, VoFilePath>> files;
    VoDeque<VoDownloadSize> limits; // one for each file
};

VoGroupedDownloadRequest::VoGroupedDownloadRequest()
    : VoGroupedDownloadRequest(VoUUID())
{
}

VoGroupedDownloadRequest::VoGroupedDownloadRequest(const VoUUID& id)
    : VoAbstractDownloadRequest(id)
    , m_private(std::make_unique<Private>())
{
}

VoGroupedDownloadRequest::~VoGroupedDownloadRequest() = default;

VoAbstractDownloadRequest::Type VoGroupedDownloadRequest::type() const
{
    return Grouped;
}

void VoGroupedDownloadRequest::add(const VoUrl& url, const VoFilePath& path)
{
    add(url, path, VoDownloadSize::Unknown());
}

void VoGroupedDownloadRequest::add(const VoPair<VoUrl, VoFilePath>& file)
{
    add(file.first, file.second);
}

void VoGroupedDownloadRequest::add(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& sizeLimit)
{
    m_private->limits.pushBack(sizeLimit);
    m_private->files.pushBack(VoPair<VoUrl, VoFilePath>(url, path));
}

std::size_t VoGroupedDownloadRequest::numberRequests() const noexcept
{
    return m_private->files.size();
}

const VoDeque<VoPair<VoUrl, VoFilePath>>& VoGroupedDownloadRequest::files() const noexcept
{
    return m_private->files;
}

VoDownloadSize VoGroupedDownloadRequest::sizeLimit(std::size_t index) const
{
    return m_private->limits.at(index);
}
