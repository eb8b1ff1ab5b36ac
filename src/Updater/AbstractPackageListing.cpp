#include <Updater/AbstractPackageListing.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vo::updater {

namespace {

// A file by its ID. The first bytes of the ID are kept as a number that sorts as they do, since following the pointer
// to the text is what sorting a hundred thousand of them costs.
struct Entry
{
    std::uint64_t prefix;
    const AbstractFileListing* file;

    const std::string& id() const { return file->id().toString().toStdString(); }
};

// Identifiers sort by their bytes as signed characters, the shorter first.
std::uint64_t Prefix(const std::string& id)
{
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < sizeof(prefix); ++i)
        prefix = prefix << 8 | (i < id.size() ? static_cast<unsigned char>(id[i]) ^ 0x80u : 0u);
    return prefix;
}

bool Before(const Entry& a, const Entry& b)
{
    return a.prefix != b.prefix ? a.prefix < b.prefix : a.file->id() < b.file->id();
}

bool SameID(const Entry& a, const Entry& b)
{
    return a.prefix == b.prefix && a.id() == b.id();
}

// By ID; of several with one ID the first.
std::vector<Entry> Sorted(const std::vector<const AbstractFileListing*>& files)
{
    std::vector<Entry> entries;
    entries.reserve(files.size());
    for (const AbstractFileListing* file : files)
        entries.push_back({Prefix(file->id().toString().toStdString()), file});
    std::stable_sort(entries.begin(), entries.end(), Before);
    entries.erase(std::unique(entries.begin(), entries.end(), SameID), entries.end());
    return entries;
}

} // namespace

AbstractPackageListing::AbstractPackageListing() = default;

AbstractPackageListing::AbstractPackageListing(const VoUUID& packageID, const VoUUID& versionID, const VoString& name,
                                               const VoVersion& version)
    : AbstractPackage(packageID, versionID, name, version)
{
}

AbstractPackageListing::AbstractPackageListing(VoXMLStreamElementLoader& element)
    : AbstractPackage(element)
{
}

AbstractPackageListing::AbstractPackageListing(const AbstractPackageListing& other) = default;
AbstractPackageListing::AbstractPackageListing(AbstractPackageListing&& other) noexcept = default;
AbstractPackageListing& AbstractPackageListing::operator=(const AbstractPackageListing& other) = default;
AbstractPackageListing& AbstractPackageListing::operator=(AbstractPackageListing&& other) noexcept = default;
AbstractPackageListing::~AbstractPackageListing() = default;

VoUniquePtr<PackageDifferences> AbstractPackageListing::compare(const AbstractPackageListing& target) const
{
    // IDs are exact elsewhere; here letter case is forgiven, as it is in the names of their directories.
    if (!packageID().toString().equal(target.packageID().toString(), VoString::CaseInsensitive))
        throw VoInvalidParameterException("Cannot compare different base packages");

    auto differences = VoUniquePtr<PackageDifferences>::Make(packageID(), versionID(), target.versionID());
    const std::vector<Entry> sources = Sorted(listedFiles());
    const std::vector<Entry> targets = Sorted(target.listedFiles());
    auto source = sources.begin();
    auto fresh = targets.begin();
    while (source != sources.end() || fresh != targets.end()) {
        if (source == sources.end() || (fresh != targets.end() && Before(*fresh, *source))) {
            differences->fileAdded((fresh++)->file->id());
        } else if (fresh == targets.end() || Before(*source, *fresh)) {
            differences->fileRemoved((source++)->file->id());
        } else {
            if (!source->file->equivalent(*fresh->file))
                differences->fileModified(source->file->id());
            ++source;
            ++fresh;
        }
    }
    return differences;
}

std::vector<const AbstractFileListing*> AbstractPackageListing::listedFiles() const
{
    std::vector<const AbstractFileListing*> files;
    for (const VoUUID& id : fileIDs()) {
        if (const AbstractFileListing* listing = file(id))
            files.push_back(listing);
    }
    return files;
}

} // namespace vo::updater
