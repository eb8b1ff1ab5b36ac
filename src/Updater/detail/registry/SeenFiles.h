#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Updater/detail/files/FileStamp.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vo::updater::detail {

/// What the system told of a package's files when an installation last found them right, so that the next one need not
/// read those of which it tells the same:
///
///     <update directory>\installed\<packageID>.seen    a stamp for each file of the listing beside it
///
/// It counts only together with the very listing that it was written for. Without it, or where in doubt, files are
/// read: it spares work and decides nothing else.
class VOCORE_PRIVATE_EXPORT SeenFiles
{
public:
    using Stamps = std::vector<std::optional<FileStamp>>;

    SeenFiles() = default; ///< Nothing is known of any file.

    /// What is kept for the listing that has that path; never throws for what cannot be used.
    static SeenFiles Of(const VoFilePath& listing);

    /// Keeps the stamps of the files of a listing that has just been written, in its order. They were taken after the
    /// time `begun` (nanoseconds since 1970) and before each file was read and found right, or found unchanged. Failing
    /// is logged only.
    static void Keep(const VoFilePath& listing, const Stamps& stamps, std::int64_t begun);
    /// Forgets what is kept for the listing.
    static void Forget(const VoFilePath& listing);

    /// Whether the file of that number in the listing, which stands at `place`, is surely as it was; `stamp` is its
    /// stamp now, if it has one.
    bool isUnchanged(std::size_t number, const std::optional<FileStamp>& stamp) const;

private:
    std::string m_bytes; // of the stamps that may be relied upon, in their order
};

} // namespace vo::updater::detail
