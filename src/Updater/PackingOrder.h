#pragma once

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vo::updater {

class AdvertisedPackageListing;

/// The order in which to pack the files of a release, so that an update fetches as little as possible.
///
///     PackingOrder order(files);
///     for (const VoFilePath& definition : definitions)        // of the earlier releases, the newest first
///         order.addEarlier(*AdvertisedPackageListing::Open(definition));
///     for (const VoFilePath& target : order.targets())
///         builder.add(source.appended(target), target);
///
/// A client fetches whole chunks. In the order of the paths the few files that a release changes lie scattered over all
/// chunks. Here the files that changed last come first: those that are new or changed in this release, then those that
/// changed in the release before, and so on; files of one age in the order of their paths. What a client with release k
/// lacks are the files that changed after k, and these are the beginning of the sequence. So the chunks that it needs
/// hold no more than the bytes of the files that it needs and one chunk's capacity, however old k is; and hardly more
/// than these bytes when a chunk ends where an age ends, as AbstractPackageBuilder::addByAge() has it, but for the
/// sixteenth that may be of no use any more in a chunk which addByAge() takes over from the release before.
///
/// Its limits: when a file goes back to an earlier content, clients that still have that content do not need it, and
/// their chunks hold its bytes all the same. And files are fetched whole: a small edit in a very large file costs the
/// whole file.
///
/// The result depends on what is handed in alone. Not guarded.
class VOCORE_EXPORT PackingOrder
{
public:
    /// A file of the release to pack.
    struct File
    {
        VoFilePath target;      ///< Where it will be installed; as unique in any letter case as in a release.
        VoChecksum checksum;    ///< Of its content; the empty one for a file that is known to be new or changed.
        std::uint64_t size = 0; ///< Its length in bytes.
    };

    explicit PackingOrder(const VoDeque<File>& files); ///< Before any earlier release is known: all are new.
    PackingOrder(const PackingOrder&) = delete;
    PackingOrder& operator=(const PackingOrder&) = delete;
    ~PackingOrder();

    /// Tells of an earlier release, the newest first. The files that it has with the same content, and that all newer
    /// releases have too, are at least as old as it. From the second release on, files are followed by their IDs, which
    /// clients go by.
    void addEarlier(const AdvertisedPackageListing& release);

    /// Whether earlier releases than those told of can change nothing.
    bool isDecided() const;

    /// The targets in packing order.
    VoDeque<VoFilePath> targets() const;
    /// The same, those of each age apart.
    VoDeque<VoDeque<VoFilePath>> targetsByAge() const;
    /// Of each file, in the order in which they were handed in, in how many of the earlier releases, counted from the
    /// newest, it is as it is now: its age.
    std::vector<std::size_t> ages() const;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
