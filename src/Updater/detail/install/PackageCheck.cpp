#include <Updater/detail/install/PackageCheck.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoFileSystem.h>
#include <Threading/VoStopFlag.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/install/EventReport.h>
#include <Updater/detail/registry/FileOwners.h>

#include <algorithm>
#include <string>
#include <unordered_set>

namespace vo::updater::detail {

namespace {

// Recorded directories from the installation directory downwards that do not lie in another one of them.
VoDeque<VoDirectoryPath> OutermostDirectories(const InstalledPackageListing& listing)
{
    const std::string_view root = Bytes(listing.installationDirectory());
    VoDeque<VoDirectoryPath> result;
    std::unordered_set<std::string> recorded;
    for (const VoDirectoryPath& directory : listing.directories()) {
        if (Bytes(directory).substr(0, root.size()) == root)
            recorded.emplace(Bytes(directory));
    }
    for (const VoDirectoryPath& directory : listing.directories()) {
        if (recorded.count(std::string(Bytes(directory))) > 0 &&
            recorded.count(std::string(Bytes(directory.parent()))) == 0)
            result.pushBack(directory);
    }
    return result;
}

// Files that the package did not bring, in the directories that were made for it.
class ExtraFiles
{
public:
    ExtraFiles(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop)
        : m_owners(owners)
        , m_stop(stop)
    {
        for (const InstalledFileListing& file : listing.files())
            m_listed.emplace(Bytes(file.path()));
        for (const LinkPlace& link : LinkPlacesOf(listing))
            m_listed.emplace(Bytes(link.place));
    }

    void findIn(const VoDirectoryPath& directory, VoDeque<VoFilePath>& extra)
    {
        if (!VoFileSystem::IsDirectory(directory))
            return;
        try {
            VoFileSystem::ForEachFile(directory, true, false, [&](const VoFilePath& path) {
                m_stop.throwIfStopped();
                if (m_listed.count(std::string(Bytes(path))) == 0 && !m_owners.find(path))
                    extra.pushBack(path);
            });
        } catch (const VoFileException& failure) {
            Log().warning("Directory cannot be searched for extra files: " + directory.path() + ": " +
                          failure.message());
        }
    }

private:
    FileOwners& m_owners;
    const VoStopFlag& m_stop;
    std::unordered_set<std::string> m_listed;
};

VoDeque<VoFilePath> FindExtra(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop)
{
    VoDeque<VoFilePath> extra;
    ExtraFiles files(listing, owners, stop);
    for (const VoDirectoryPath& directory : OutermostDirectories(listing))
        files.findIn(directory, extra);
    std::sort(extra.begin(), extra.end(), [](const VoFilePath& a, const VoFilePath& b) { return Bytes(a) < Bytes(b); });
    return extra;
}

AttributePlaces PlacesOf(const InstalledPackageListing& listing)
{
    AttributePlaces places;
    places.links = LinkPlacesOf(listing);
    if (const auto& attributes = listing.attributes()) {
        for (const VoFilePath& program : attributes->executables)
            places.programs.push_back(listing.installationDirectory().appended(program));
        for (const VoFilePath& folder : attributes->folders)
            places.folders.push_back(AsDirectory(listing.installationDirectory().appended(folder)));
    }
    return places;
}

FileState StateOf(const LinkPlace& link, const VoStopFlag& stop)
{
    if (link.copy)
        return Examine(*link.copy, Links::Kept, stop);
    if (KindOf(link.place) == FileKind::None)
        return FileState::Missing;
    return IsInPlace(link) ? FileState::Sound : FileState::Changed;
}

} // namespace

VoDeque<FileFinding> VerifyFiles(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected,
                                 const EventReport& report, const VoStopFlag& stop)
{
    VoDeque<FileFinding> findings;
    report.report(AbstractMessage::VerificationStarted, "Starting installation verification");
    ExamineAll(count, expected, Links::Followed, stop, [&](std::size_t number, FileState state) {
        if (state != FileState::Sound) {
            const VoString path = expected(number).path.path();
            if (state == FileState::Missing)
                report.report(AbstractMessage::FileMissing, "File missing: " + path, "File missing " + path);
            else
                report.report(AbstractMessage::FileMismatch, "File checksum mismatch: " + path);
            findings.pushBack({number, state});
        }
        report.send<VerificationProgressMessage>(number + 1, count);
    });
    return findings;
}

void VerifyAttributes(const AttributePlaces& places, VerificationReport& report, const EventReport& events,
                      const VoStopFlag& stop)
{
    for (const LinkPlace& link : places.links) {
        stop.throwIfStopped();
        const FileState state = StateOf(link, stop);
        if (state == FileState::Sound)
            continue;
        const VoString& path = link.place.path();
        if (state == FileState::Missing)
            events.report(AbstractMessage::FileMissing, "Link missing: " + path);
        else
            events.report(AbstractMessage::FileMismatch, "Link leads elsewhere: " + path);
        (state == FileState::Missing ? report.missing : report.changed).pushBack(link.place);
    }
    for (const VoFilePath& program : places.programs) {
        stop.throwIfStopped();
        if (KindOf(program, Links::Followed) != FileKind::File || IsExecutable(program))
            continue;
        events.report(AbstractMessage::FileMismatch, "File not executable: " + program.path());
        report.notExecutable.pushBack(program);
    }
    for (const VoDirectoryPath& folder : places.folders) {
        if (VoFileSystem::IsDirectory(folder))
            continue;
        events.report(AbstractMessage::FileMissing, "Folder missing: " + folder.path());
        report.missingFolders.pushBack(folder);
    }
}

void ReportVerified(bool isIntact, const EventReport& report)
{
    if (isIntact)
        report.report(AbstractMessage::VerificationSuccess, "Installation verification success");
    else
        report.report(AbstractMessage::VerificationFailed, "Installation verification failed");
}

PackageCheck CheckPackage(const InstalledPackageListing& listing, FileOwners& owners, const VoStopFlag& stop,
                          const EventReport& events)
{
    const VoDeque<InstalledFileListing>& files = listing.files();
    PackageCheck check;
    check.report.packageID = listing.packageID();
    check.report.versionID = listing.versionID();
    const auto expected = [&files](std::size_t i) { return Expected(files[i].path(), files[i]); };
    for (const FileFinding& finding : VerifyFiles(files.size(), expected, events, stop)) {
        const InstalledFileListing& file = files[finding.number];
        (finding.state == FileState::Missing ? check.report.missing : check.report.changed).pushBack(file.path());
        check.damaged.pushBack(file.id());
    }
    check.report.filesChecked = files.size();
    VerifyAttributes(PlacesOf(listing), check.report, events, stop);
    check.report.extra = FindExtra(listing, owners, stop);
    ReportVerified(check.report.isIntact(), events);
    return check;
}

} // namespace vo::updater::detail
