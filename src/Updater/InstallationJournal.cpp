#include <Updater/InstallationJournal.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>
#include <Updater/Containment.h>
#include <Updater/FileActions.h>
#include <Updater/FileContent.h>
#include <Updater/FileInstaller.h>
#include <Updater/InstalledPackageListing.h>

#include <string_view>

namespace vo::updater::detail {

namespace {

constexpr std::string_view ListingSuffix = ".xml";
constexpr const char* JournalSuffix = ".pending";

bool IsBuiltPath(const VoFilePath& path)
{
    const std::string_view text = Bytes(path);
    const std::string_view suffix = BuiltSuffix;
    return text.size() > suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool HasContent(const InstalledFileListing& file)
{
    return KindOf(file.path()) == FileKind::File && file.size() == VoFileSystem::FileSize(file.path()) &&
           HasChecksum(file.path(), file.checksum());
}

template <typename Listings, typename Path>
std::unordered_set<std::string> PathSet(const Listings& listings, Path path)
{
    std::unordered_set<std::string> result;
    for (const auto& listing : listings)
        result.emplace(Bytes(path(listing)));
    return result;
}

} // namespace

InstallationJournal InstallationJournal::OfListing(const VoFilePath& listing)
{
    const std::string_view text = Bytes(listing);
    const std::string stem(text.substr(0, text.size() - ListingSuffix.size()));
    return InstallationJournal(VoFilePath::CreateUnchecked(VoString(stem.c_str()) + JournalSuffix));
}

InstallationJournal::InstallationJournal() = default;

InstallationJournal::InstallationJournal(const VoFilePath& path)
    : m_path(path)
{
}

bool InstallationJournal::exists() const
{
    return !m_path.isNull() && VoFileSystem::Exists(m_path);
}

VoUniquePtr<InstalledPackageListing> InstallationJournal::read() const
{
    if (!exists())
        return {};
    try {
        return InstalledPackageListing::Open(m_path);
    } catch (...) {
        vo::logging::Logger::Get("updater").warning(
            "Journal of an interrupted installation cannot be read: " + m_path.path() + ": " + CurrentExceptionText());
        return {};
    }
}

void InstallationJournal::write(const InstalledPackageListing& notes) const
{
    if (m_path.isNull())
        return;
    VoFileSystem::CreateDirectory(m_path.parent(), true);
    AtStep(FileStep::WriteDocument, m_path.path());
    notes.write(m_path);
}

void InstallationJournal::remove() const
{
    if (!m_path.isNull())
        EraseFile(m_path);
}

void EraseLeftFiles(const InstalledPackageListing& notes,
                    const std::function<bool(const InstalledFileListing&)>& isKept)
{
    Containment containment(notes.installationDirectory());
    for (const InstalledFileListing& file : notes.files()) {
        if (!containment.holds(file.path()))
            continue;
        if (IsBuiltPath(file.path())) {
            EraseFile(file.path());
            continue;
        }
        EraseFile(BuiltPath(file.path()));
        if (!isKept(file) && HasContent(file))
            EraseFile(file.path());
    }
}

bool RollBack(const InstalledPackageListing& notes, const InstalledPackageListing* installed)
{
    std::unordered_set<std::string> files;
    std::unordered_set<std::string> directories;
    if (installed) {
        files = PathSet(
            installed->files(), [](const auto& file) -> const auto& { return file.path(); });
        directories = PathSet(
            installed->directories(), [](const auto& directory) -> const auto& { return directory; });
    }
    EraseLeftFiles(
        notes, [&files](const InstalledFileListing& file) { return files.count(std::string(Bytes(file.path()))) > 0; });

    Containment containment(notes.installationDirectory());
    bool isComplete = true;
    const VoDeque<VoDirectoryPath>& created = notes.directories();
    for (std::size_t i = created.size(); i-- > 0;) {
        if (directories.count(std::string(Bytes(created[i]))) == 0 && containment.mayRemove(created[i]))
            isComplete = EraseDirectoryIfEmpty(created[i]) && isComplete;
    }
    return isComplete;
}

std::unordered_set<std::string> NotedPlaces(const InstalledPackageListing& notes)
{
    std::unordered_set<std::string> places;
    for (const InstalledFileListing& file : notes.files()) {
        std::string_view place = Bytes(file.path());
        if (IsBuiltPath(file.path()))
            place.remove_suffix(std::string_view(BuiltSuffix).size());
        places.emplace(place);
    }
    return places;
}

} // namespace vo::updater::detail
