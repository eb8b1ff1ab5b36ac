#include <Updater/AbstractPackageListing.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Updater/detail/documents/ListedFile.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace vo::updater {

using namespace detail;

namespace {

// By ID; of several with one ID the first.
std::vector<ListedFile> Sorted(const std::vector<const AbstractFileListing*>& files)
{
    std::vector<ListedFile> sorted;
    sorted.reserve(files.size());
    for (const AbstractFileListing* file : files)
        sorted.emplace_back(*file);
    std::stable_sort(sorted.begin(), sorted.end());
    const auto isSame = [](const ListedFile& a, const ListedFile& b) { return a.hasSameID(b); };
    sorted.erase(std::unique(sorted.begin(), sorted.end(), isSame), sorted.end());
    return sorted;
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
    const std::vector<ListedFile> sources = Sorted(listedFiles());
    const std::vector<ListedFile> targets = Sorted(target.listedFiles());
    auto source = sources.begin();
    auto fresh = targets.begin();
    while (source != sources.end() || fresh != targets.end()) {
        if (source == sources.end() || (fresh != targets.end() && *fresh < *source)) {
            differences->fileAdded((fresh++)->id());
        } else if (fresh == targets.end() || *source < *fresh) {
            differences->fileRemoved((source++)->id());
        } else {
            if (!source->isEquivalent(*fresh))
                differences->fileModified(source->id());
            ++source;
            ++fresh;
        }
    }
    return differences;
}

const std::shared_ptr<const ReleaseAttributes>& AbstractPackageListing::attributes() const noexcept
{
    return m_attributes;
}

void AbstractPackageListing::setAttributes(std::shared_ptr<const ReleaseAttributes> attributes) noexcept
{
    m_attributes = std::move(attributes);
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
