#pragma once

#include <Core/VoExport.h>

#include <future>

/// The end of a download: a std::future, and usable as one wherever that is asked for.
///
/// The thread that owns the download service must not wait for a download that it has to carry out itself. This class
/// notices that and throws. Moved into a plain std::future it is an ordinary one, and such a wait never ends.
class VOCORE_EXPORT VoDownloadFuture : public std::future<void>
{
public:
    /// Of no download; valid() is false.
    VoDownloadFuture() noexcept;
    /// Takes over a future of the service.
    explicit VoDownloadFuture(std::future<void>&& end) noexcept;

    /// Waits for the end of the download.
    /// @throws VoDownloadException when it failed
    /// @throws VoInvalidCallException "Cannot wait for a download on the thread that carries it out" there, unless it
    /// has ended; the future stays valid
    void get();
    /// Waits for the end of the download, whichever it is.
    /// @throws VoInvalidCallException as get() does
    void wait() const;

private:
    void requireOtherThread() const;
};
