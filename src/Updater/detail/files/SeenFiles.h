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

/// What the system told of a package's files when they were last found to be those of a listing, so that the next run
/// need not read those of which it tells the same:
///
///     <update directory>\installed\<packageID>.seen    installed files, for the listing beside it
///     <directory of the declarations>\.packages.seen   files that were published, for the release's definition
///
/// A stamp for each file. It counts only together with the very listing that it was written for. Without it, or where
/// in doubt, files are read: it spares work and decides nothing else.
class VOCORE_PRIVATE_EXPORT SeenFiles
{
public:
    using Stamps = std::vector<std::optional<FileStamp>>;

    SeenFiles() = default; ///< Nothing is known of any file.

    /// Where it is kept for a listing of installed files.
    static VoFilePath PlaceOf(const VoFilePath& listing);
    /// The name of the file beside the declarations.
    static constexpr const char* PublishedName = ".packages.seen";

    /// What is kept at a place for a listing; never throws for what cannot be used.
    static SeenFiles At(const VoFilePath& place, const VoFilePath& listing);

    /// Keeps the stamps of the files of a listing that has just been written, in its order. They were taken after the
    /// time `begun` and before each file was read and found right, or found unchanged. Failing is logged only.
    static void Keep(const VoFilePath& place, const VoFilePath& listing, const Stamps& stamps, std::int64_t begun);
    /// Forgets what is kept at a place.
    static void Forget(const VoFilePath& place);

    /// The time by the clock, in the unit of stamps.
    static std::int64_t Now();

    /// Whether the file of that number in the listing is surely as it was; `stamp` is its stamp now, if it has one.
    bool isUnchanged(std::size_t number, const std::optional<FileStamp>& stamp) const;

private:
    std::string m_bytes; // of the stamps that may be relied upon, in their order
};

} // namespace vo::updater::detail
