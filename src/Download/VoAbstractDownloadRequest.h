#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <memory>

struct VoDownloadPolicy;

/// What a download is asked to do. A request is filled by its maker and not changed any more once it is handed to
/// VoDownloadManager, whose thread reads it.
class VOCORE_EXPORT VoAbstractDownloadRequest
{
public:
    /// The kinds of requests.
    enum Type : std::int32_t
    {
        Single = 0, ///< VoDownloadRequest
        Grouped = 1 ///< VoGroupedDownloadRequest
    };

    VoAbstractDownloadRequest(const VoAbstractDownloadRequest&) = delete;
    VoAbstractDownloadRequest& operator=(const VoAbstractDownloadRequest&) = delete;
    virtual ~VoAbstractDownloadRequest();

    virtual Type type() const = 0; ///< Which kind of request it is.

    const VoUUID& id() const noexcept; ///< Identifies the download in every notification.

    const VoDownloadPolicy& policy() const noexcept; ///< Retries, limits and mirrors; the plain behaviour at first.
    void setPolicy(const VoDownloadPolicy& policy);  ///< Sets policy().

protected:
    VoAbstractDownloadRequest();                          ///< With a fresh id.
    explicit VoAbstractDownloadRequest(const VoUUID& id); ///< With an id, which no running download may have.

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
