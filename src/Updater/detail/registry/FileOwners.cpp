#include <Updater/detail/registry/FileOwners.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/LinkPlaces.h>
#include <Updater/detail/registry/InstallationJournal.h>
#include <Updater/detail/registry/PackageRecords.h>

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace vo::updater::detail {

namespace {

// The folder that a listing names in its first element, so that most listings need not be read: they have a line for
// each file. Empty when it has none; reading the listing will tell why.
std::optional<VoDirectoryPath> InstallationDirectory(const VoFilePath& listing)
{
    const std::filesystem::path native = vo::detail::ToNative(listing);
    constexpr bool namesAreBytes = std::filesystem::path::preferred_separator == '/';
    QFile file(namesAreBytes ? QFile::decodeName(native.string().c_str()) : QString::fromStdU16String(native.u16string()));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QXmlStreamReader reader(&file);
    if (!reader.readNextStartElement())
        return std::nullopt;
    const VoString text(reader.attributes().value(QLatin1String(attribute::Directory)).toString());
    try {
        return text.isEmpty() ? std::nullopt : std::make_optional(VoDirectoryPath::Deserialize(text));
    } catch (const VoException&) {
        return std::nullopt;
    }
}

bool Holds(const std::string& outer, const std::string& inner)
{
    const auto isSeparator = [](char c) { return c == '/' || c == '\\'; };
    return outer == inner ||
           (!outer.empty() && inner.size() > outer.size() && inner.compare(0, outer.size(), outer) == 0 &&
            (isSeparator(inner[outer.size()]) || isSeparator(outer.back())));
}

/// Folders, by their real names without regard to case.
class Folders
{
public:
    explicit Folders(std::initializer_list<VoDirectoryPath> directories)
    {
        for (const VoDirectoryPath& directory : directories) {
            if (!directory.isNull())
                m_names.push_back(nameOf(directory));
        }
    }

    bool overlap(const VoDirectoryPath& other) const
    {
        const std::string name = nameOf(other);
        return std::any_of(m_names.begin(), m_names.end(),
                           [&name](const std::string& known) { return Holds(known, name) || Holds(name, known); });
    }

private:
    static std::string nameOf(const VoDirectoryPath& directory)
    {
        std::string name = FoldedName(VoString(RealDirectory(directory))).toStdString();
        while (name.size() > 1 && (name.back() == '/' || name.back() == '\\'))
            name.pop_back();
        return name;
    }

    std::vector<std::string> m_names;
};

// Empty, with a warning, for what is no listing.
VoUniquePtr<InstalledPackageListing> ReadListing(const VoFilePath& path)
{
    try {
        return OpenInstalled(path);
    } catch (const VoFileException&) {
        throw;
    } catch (const VoException& exception) {
        Log().warning("Installed listing " + path.path() +
                      " cannot be used, so its files belong to nobody: " + exception.message());
        return {};
    }
}

} // namespace

FileOwners FileOwners::Others(const VoUUID& packageID, std::initializer_list<VoDirectoryPath> directories)
{
    FileOwners owners;
    const Folders folders(directories);
    for (const VoUUID& other : PackagesWith({".xml", ".pending", ".placed"})) {
        if (other == packageID)
            continue;
        const VoFilePath path = ListingPath(other);
        if (KindOf(path) != FileKind::None) {
            const auto directory = InstallationDirectory(path);
            const auto listing =
                !directory || folders.overlap(*directory) ? ReadListing(path) : VoUniquePtr<InstalledPackageListing>();
            if (listing && folders.overlap(listing->installationDirectory()))
                owners.add(*listing);
        }
        const InstallationJournal journal = JournalOf(other);
        for (const auto phase : {InstallationJournal::Phase::Pending, InstallationJournal::Phase::Placed}) {
            const auto notes = journal.read(phase);
            if (notes && folders.overlap(notes->result.installationDirectory()))
                owners.add(notes->result);
        }
    }
    return owners;
}

void FileOwners::add(const InstalledPackageListing& listing)
{
    for (const InstalledFileListing& file : listing.files()) {
        m_index.add(file.path(), m_owned.size());
        m_owned.pushBack({listing.packageID(), listing.name(), file});
    }
    for (const LinkPlace& link : LinkPlacesOf(listing)) {
        m_index.add(link.place, m_owned.size());
        const ExpectedFile content = link.copy.value_or(ExpectedFile{link.place, VoChecksum(), VoDownloadSize()});
        const InstalledFileListing file(link.place, VoUUID(""), content.checksum, content.size);
        m_owned.pushBack({listing.packageID(), listing.name(), file, link.to});
    }
}

const FileOwners::Owned* FileOwners::find(const VoFilePath& path)
{
    const auto number = m_index.find(path);
    return number ? &m_owned[*number] : nullptr;
}

} // namespace vo::updater::detail
