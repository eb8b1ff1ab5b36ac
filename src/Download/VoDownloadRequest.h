#pragma once

#include <Download/VoAbstractDownloadRequest.h>

/// Asks for one file.
class VOCORE_EXPORT VoDownloadRequest final : public VoAbstractDownloadRequest
{
public:
    /// The file at `url`, with a fresh id. The body replaces the file `path` as a whole when it is complete; the
    /// directory must exist.
    VoDownloadRequest(const VoUrl& url, const VoFilePath& path);
    VoDownloadRequest(const VoUrl& url, const VoFilePath& path, const VoUUID& id); ///< The same with a given id.
    ~VoDownloadRequest() override;

    Type type() const override; ///< Single

    const VoUrl& url() const noexcept;       ///< Where the file is; only http and https are accepted.
    const VoFilePath& path() const noexcept; ///< The local file that receives the body.

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
