#include <Updater/AbstractPackageListing.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace vo::updater {

namespace {

// Sorted without duplicates. Pointers, because moving IDs about costs more than comparing them.
std::vector<const VoUUID*> Sorted(const VoDeque<VoUUID>& ids)
{
    std::vector<const VoUUID*> result;
    result.reserve(ids.size());
    for (const VoUUID& id : ids)
        result.push_back(&id);
    std::sort(result.begin(), result.end(), [](const VoUUID* a, const VoUUID* b) { return *a < *b; });
    result.erase(std::unique(result.begin(), result.end(), [](const VoUUID* a, const VoUUID* b) { return *a == *b; }),
                 result.end());
    return result;
}

std::vector<const VoUUID*> Union(const std::vector<const VoUUID*>& a, const std::vector<const VoUUID*>& b)
{
    std::vector<const VoUUID*> result;
    result.reserve(a.size() + b.size());
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result),
                   [](const VoUUID* x, const VoUUID* y) { return *x < *y; });
    return result;
}

void Record(PackageDifferences& differences, const VoUUID& id, const AbstractFileListing* source,
            const AbstractFileListing* target)
{
    if (!source)
        differences.fileAdded(id);
    else if (!target)
        differences.fileRemoved(id);
    else if (!source->equivalent(*target))
        differences.fileModified(id);
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
    const VoDeque<VoUUID> sourceIDs = fileIDs();
    const VoDeque<VoUUID> targetIDs = target.fileIDs();
    for (const VoUUID* id : Union(Sorted(sourceIDs), Sorted(targetIDs)))
        Record(*differences, *id, file(*id), target.file(*id));
    return differences;
}

} // namespace vo::updater
