#pragma once

#include <Download/VoAbstractDownloadRequest.h>

#include <cstddef>

/// Asks for several files as one download, reported as one. It is complete when all files are; the first file that
/// fails ends it. Files that were complete before stay.
class VOCORE_EXPORT VoGroupedDownloadRequest final : public VoAbstractDownloadRequest
{
public:
    VoGroupedDownloadRequest();                          ///< No files yet, with a fresh id.
    explicit VoGroupedDownloadRequest(const VoUUID& id); ///< The same with a given id.
    ~VoGroupedDownloadRequest() override;

    Type type() const override; ///< Grouped

    void add(const VoUrl& url, const VoFilePath& path); ///< Adds the file at `url`, to be put at `path`.
    void add(const VoPair<VoUrl, VoFilePath>& file);    ///< Adds a file.
    /// Adds a file of at most `sizeLimit` bytes, which takes the place of the policy's limit unless it is unknown.
    void add(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& sizeLimit);

    std::size_t numberRequests() const noexcept;                      ///< How many files were added.
    const VoDeque<VoPair<VoUrl, VoFilePath>>& files() const noexcept; ///< Those files, in the order of adding.
    VoDownloadSize sizeLimit(std::size_t index) const;                ///< The own limit of a file; may be unknown.

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
