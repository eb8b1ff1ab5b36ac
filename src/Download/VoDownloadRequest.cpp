#include <Download/VoDownloadRequest.h>

#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

struct VoDownloadRequest::Private
{
    VoUrl url;
    VoFilePath path;
};

VoDownloadRequest::VoDownloadRequest(const VoUrl& url, const VoFilePath& path)
    : VoDownloadRequest(url, path, VoUUID())
{
}

VoDownloadRequest::VoDownloadRequest(const VoUrl& url, const VoFilePath& path, const VoUUID& id)
    : VoAbstractDownloadRequest(id)
    , m_private(std::make_unique<Private>(Private{url, path}))
{
}

VoDownloadRequest::~VoDownloadRequest() = default;

VoAbstractDownloadRequest::Type VoDownloadRequest::type() const
{
    return Single;
}

const VoUrl& VoDownloadRequest::url() const noexcept
{
    return m_private->url;
}

const VoFilePath& VoDownloadRequest::path() const noexcept
{
    return m_private->path;
}
