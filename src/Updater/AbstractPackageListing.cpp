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

/// The files of a listing in one table: their own where they are the views of one, else copies.
class OneTable
{
public:
    explicit OneTable(const std::vector<const AbstractFileListing*>& files)
    {
        if (isTableOf(files)) {
            m_table = ListedFile(*files.front()).table;
            return;
        }
        for (const AbstractFileListing* listing : files) {
            const ListedFile file(*listing);
            m_copies.add(*file.table, file.number);
        }
    }
    OneTable(const OneTable&) = delete;
    OneTable& operator=(const OneTable&) = delete;

    // The files that the other has not or has otherwise, by ID; of several with one ID the first.
    std::vector<ListedFile> differing(const OneTable& other) const
    {
        std::vector<ListedFile> result;
        for (std::size_t i = 0; i < m_table->size(); ++i) {
            const ListedFile file(*m_table, static_cast<FileTable::Number>(i));
            const FileTable::Number counterpart = other.m_table->find(*file.table, file.number);
            const bool isSame =
                counterpart != FileTable::None && ListedFile(*other.m_table, counterpart).isEquivalent(file);
            if (m_table->find(*file.table, file.number) == file.number && !isSame)
                result.push_back(file);
        }
        std::sort(result.begin(), result.end());
        return result;
    }

private:
    static bool isTableOf(const std::vector<const AbstractFileListing*>& files)
    {
        const FileTable* table = files.empty() ? nullptr : ListedFile(*files.front()).table;
        bool isOne = table && table->size() == files.size();
        for (std::size_t i = 0; isOne && i < files.size(); ++i) {
            const ListedFile file(*files[i]);
            isOne = file.table == table && file.number == i;
        }
        return isOne;
    }

    FileTable m_copies;
    const FileTable* m_table = &m_copies;
};

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
    const OneTable sourceTable(listedFiles());
    const OneTable targetTable(target.listedFiles());
    const std::vector<ListedFile> sources = sourceTable.differing(targetTable);
    const std::vector<ListedFile> targets = targetTable.differing(sourceTable);
    auto source = sources.begin();
    auto fresh = targets.begin();
    while (source != sources.end() || fresh != targets.end()) {
        if (source == sources.end() || (fresh != targets.end() && *fresh < *source)) {
            differences->fileAdded((fresh++)->id());
        } else if (fresh == targets.end() || *source < *fresh) {
            differences->fileRemoved((source++)->id());
        } else {
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
