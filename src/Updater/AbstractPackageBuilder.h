#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoSharedPtr.h>
#include <Threading/VoReceiver.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleaseSigning.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vo::updater {

class AdvertisedPackages;
class ReleaseAttributes;
class ReleasePatches;

namespace detail {
class IndexedRelease;
class Publication;
class SourceFiles;
struct SourceFile;
} // namespace detail

/// Turns local files into a published release: packs their bytes one after another into chunks of a fixed size,
/// compresses each chunk into a file of its own, and lays the release out beside a declarations file.
///
///     PackageBuilder builder(VoUpdater::GenerateID(), "Examples", VoVersion(1, 0, 0, VoVersion::Release), 4 << 20, 6);
///     builder.add(VoDirectoryPath("/data/examples/"), declarations);
///     builder.finalise(declarations);
///
/// One builder builds one release: add files, then finalise once. Nothing shows at the place of publication before
/// finalise. A builder is not guarded, only connecting to its messages is; it calls back on the calling
/// thread only, and has no work under way between two calls. A call made
/// from within one of its messages throws VoInvalidCallException.
class VOCORE_EXPORT AbstractPackageBuilder
{
public:
    /// One line of progress for a user interface.
    class VOCORE_EXPORT Message
    {
    public:
        /// What a line tells of, for a display that counts.
        enum Kind
        {
            Step,     ///< Anything else.
            FileAdded ///< A file begins to be added: one such line for each of filesListed().
        };

        explicit Message(const VoString& message, Kind kind = Step); ///< The line and what it tells of.
        Message(const Message&) = delete;
        Message& operator=(const Message&) = delete;
        ~Message();

        const VoString& message() const; ///< The line, without a line break at its end.
        Kind kind() const;               ///< What it tells of.

    private:
        struct Private;
        std::unique_ptr<Private> m_private;
    };

    virtual ~AbstractPackageBuilder();
    AbstractPackageBuilder(const AbstractPackageBuilder&) = delete;
    AbstractPackageBuilder& operator=(const AbstractPackageBuilder&) = delete;

    /// The ID to give the file that is installed at `target`.
    virtual VoUUID fileID(const VoFilePath& target) const = 0;

    /// Adds the file `source`, to be installed at `target`, relative to the installation directory.
    ///
    /// A target longer than 160 bytes only warns. A failure leaves the package without the file; bytes that went into a
    /// finished chunk before it stay there, unused.
    /// @throws VoValidationException ("Invalid target path: " + target + ": " + the rule that it breaks) for a target
    /// that no client installs
    /// @throws VoInvalidParameterException ("File already added to package: " + target; " and " + the other one +
    /// " differ only in letter case" follows when they do) for a target that was added before
    /// @throws VoFileNotFoundException for a missing source
    /// @throws VoFileException ("File changed while being added: ", source) when the bytes read are not as many as the
    /// file has
    /// @throws VoIOException when reading or writing fails
    /// @throws VoInvalidCallException ("Package has already been finalised") after finalise
    void add(const VoFilePath& source, const VoFilePath& target);
    /// Adds every regular file below `directory`, at its path relative to it, in the sorted order of the targets, so
    /// that two builds of one tree pack alike. Symbolic links to directories are not followed; links to files are
    /// added as files; anything else is skipped. Targets are checked and sources opened before the first byte is
    /// packed; two targets that differ in letter case only, or of which one is the directory of the other, are refused
    /// as above. Chunks are compressed and written on all processors, and a failure to
    /// write one is thrown by this call for a later file or at its end; finalise tries again.
    void add(const VoDirectoryPath& directory);
    /// As above, but leaves out what publishing to `declarationsFile` writes (that file, and "packages" and
    /// ".packages.seen" beside it) when it lies inside `directory`, with a warning: a release must not swallow its own
    /// output. Before anything is packed all that finalise would refuse is refused: a place that cannot be written, a
    /// document that is none, an ID or a release that is not approved (setApproval).
    void add(const VoDirectoryPath& directory, const VoFilePath& declarationsFile);

    /// As above, in the order of PackingOrder after the releases of this package that `declarationsFile` declares, so
    /// that updates fetch little. Chunks end where an age ends, but ages that have less than a sixteenth of a chunk
    /// together share one. Reads the files that may be unchanged once more, on all processors; messages
    /// "Comparing file: " + target come before. Those of which the system tells the same as when the newest release was
    /// published (number on the volume, size, time of writing and of change), as ".packages.seen" beside the
    /// declarations has it, are known to be unchanged. A declared release that cannot be read is left out, with a
    /// warning. Chunks of the newest declared release that hold hardly anything but files which have not changed are
    /// used as they are, when their digests are those of its definition: both releases then have the same file, where
    /// the volume has links. Throws also what opening the declarations throws.
    void addByAge(const VoDirectoryPath& directory, const VoFilePath& declarationsFile);

    /// Has addByAge() compress all files, and use no chunks of earlier releases.
    void packAnew();
    std::size_t chunksShared() const; ///< How many chunks of the package an earlier release has as well.

    /// Has finalise() make patches from the newest `releases` declared releases of the package, for those of the files
    /// added from now on that they have with another content, where a patch comes to at most 0.7 of the file's bytes in
    /// chunks. The messages "Making patch: " + target tell of it. What cannot be had of an earlier release only warns.
    void makePatches(std::size_t releases);
    /// The patches that finalise() has published.
    const ReleasePatches& patches() const;

    /// Leaves files and folders out of the directories that are added from now on: `pattern` is a path with the signs
    /// *, ? and **, as in the lists that version control knows ("*.pdb", "/build/", "!keep.pdb"). Letter case does not
    /// count.
    /// @throws VoInvalidParameterException ("Invalid pattern: " + pattern)
    void exclude(const VoString& pattern);
    /// The same with each line of a text file; empty lines and those that begin with "#" say nothing. Throws as above,
    /// and what reading the file throws.
    void excludeListed(const VoFilePath& list);

    /// Has the release hold more than the bytes of its files, from the next call of add on: links as links, empty
    /// folders, and which files are executable. They stand in a document of their own beside the definition
    /// (ReleaseAttributes), and installations that know nothing of it install the files alone.
    ///
    /// A link has to lead to something that was added before or by the same call; add then also throws
    /// VoValidationException ("Invalid link: " + target + " -> " + where it leads + ": " + the rule that it breaks),
    /// and ("Invalid attributes: " + what is wrong) for places that clash, before anything is packed.
    void keepAttributes();

    /// Has add refuse, from its next call on, the names that other systems than Windows can have, as it refuses targets
    /// that no client installs: "Invalid target path: " + target + ": it holds one of ? * | \" < >, which Windows takes
    /// in no name". Without this call such a release is published, and cannot be installed on Windows.
    void requirePortableNames();

    /// Told what is declared, to refuse the release by throwing.
    using Approval = std::function<void(const AdvertisedPackages&)>;
    /// Sets who approves of the release: asked before files are packed, by the forms of add that name the declarations,
    /// and again by finalise while nobody else can declare anything there, before it changes anything. Without one any
    /// release is published.
    void setApproval(Approval approval);

    /// Sets to whom the release is offered, and with what the manifest of the folder is signed (ReleaseSigner). A
    /// folder without a manifest gets one by signing only.
    void setTerms(const ReleaseTerms& terms, const ReleaseSigning& signing = ReleaseSigning());
    /// How the folder's manifest stands after finalise.
    const ManifestState& manifestState() const;

    /// Publishes the release: writes the last chunk, moves the chunks to the release directory, writes "package.xml"
    /// there and enters the release in `declarationsFile` (created when missing) and, where there is one, in the
    /// manifest as the last step, so that a crash at any point leaves the old declarations valid. Others who publish in
    /// the same directory, also in other processes, are waited for, with messages "Waiting for another publication to:
    /// " now and then.
    ///
    ///     <directory of declarationsFile>\packages\<packageID>\<version>\package.xml
    ///                                                                   \chunks\<chunkID>.vochk
    ///
    /// A release directory of the same version is reused with a warning, and declarations of this package that name it
    /// are dropped, before the new definition is written. After a failure everything is as it was, and it may be called
    /// again.
    /// @throws VoNullPointerException when `declarationsFile` is no declarations document, before anything is moved;
    /// file-system and stream exceptions
    /// @throws VoInvalidCallException ("Package has already been finalised") when called again after success
    void finalise(const VoFilePath& declarationsFile);

    /// Receives the messages, on the thread that adds or finalises. A callback that throws VoUserCancelledException
    /// ends the running call with it; whatever else a callback throws is logged and ignored.
    [[nodiscard]] VoReceiver connect(std::function<void(const VoSharedPtr<Message>&)> callback);

    const AdvertisedPackageListing& package() const; ///< The release as built so far.
    const VoUUID& packageID() const;                 ///< package().packageID()
    const VoUUID& versionID() const;                 ///< package().versionID(), new for each builder
    const VoVersion& version() const;                ///< package().version()
    /// How many files the directories have that were added so far, the one that is being added included.
    std::size_t filesListed() const;

protected:
    /// `chunkSize` is the capacity of one chunk in bytes; `compressionLevel` is -1 (default) or 0 to 9.
    /// @throws VoInvalidParameterException with "Chunk size must be greater than zero"
    /// @throws VoOverflowException for a chunk size that cannot be compressed (2147483648 bytes or more)
    /// @throws VoValidationException ("Invalid identifier: " + packageID) for a package ID that cannot be a directory's
    /// name, and ("Invalid package name: " + name) for a name that is not UTF-8 or holds control characters
    AbstractPackageBuilder(const VoUUID& packageID, const VoString& name, const VoVersion& version,
                           std::uint64_t chunkSize, int compressionLevel);

    /// @{ Logs the text, followed by the package and version IDs, in the category "update builder".
    void diagnostic(const VoString& text) const;
    void warning(const VoString& text) const;
    void error(const VoString& text) const;
    /// @}

private:
    class Session;
    struct Private;

    virtual std::shared_ptr<const detail::IndexedRelease> base() const; // null: the package's first release

    void addFile(const detail::SourceFile& file, bool isAlone);
    void requireTarget(const VoFilePath& target) const;
    void addDirectory(const VoDirectoryPath& directory, const VoFilePath& declarationsFile, bool byAge = false);
    AdvertisedFileListing packFile(const VoFilePath& source, const VoFilePath& target);
    const AdvertisedFileListing* keptFile(const detail::SourceFile& file);

    void writeChunk();
    void publishPatches(detail::Publication& publication, const VoFilePath& declarationsFile,
                        const VoDirectoryPath& release);

    void requireDeclarable(const AdvertisedPackages& declarations) const;
    void requirePublishable(const VoFilePath& declarationsFile);
    void requireSound(const ReleaseAttributes& attributes, const detail::SourceFiles& sources) const;
    void requirePackable(const detail::SourceFiles& sources) const;
    void requireNew(const VoFilePath& target) const;
    void waitForOthers(const VoFilePath& declarationsFile);
    void warnOfOwnOutput(const VoFilePath& declarationsFile) const;

    void announce(const VoString& text, Message::Kind kind = Message::Step);
    VoString labelled(const VoString& text) const;

    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater
