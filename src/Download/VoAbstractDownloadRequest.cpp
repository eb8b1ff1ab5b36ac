#include <Download/VoAbstractDownloadRequest.h>

#include <Core/VoUUID.h>
#include <Download/VoDownloadPolicy.h>

struct VoAbstractDownloadRequest::Private
{
    VoUUID id;
    VoDownloadPolicy policy;
};

VoAbstractDownloadRequest::VoAbstractDownloadRequest()
    : VoAbstractDownloadRequest(VoUUID())
{
}

VoAbstractDownloadRequest::VoAbstractDownloadRequest(const VoUUID& id)
    : m_private(std::make_unique<Private>(Private{id, {}}))
{
}

VoAbstractDownloadRequest::~VoAbstractDownloadRequest() = default;

const VoUUID& VoAbstractDownloadRequest::id() const noexcept
{
    return m_private->id;
}

const VoDownloadPolicy& VoAbstractDownloadRequest::policy() const noexcept
{
    return m_private->policy;
}

void VoAbstractDownloadRequest::setPolicy(const VoDownloadPolicy& policy)
{
    m_private->policy = policy;
}
