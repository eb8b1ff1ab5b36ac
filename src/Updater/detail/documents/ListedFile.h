#pragma once

// The files of a listing as rows of its table, for work on all of them: values are compared where they stand, and made
// only when one is shown.

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoUUID.h>
#include <Updater/AbstractFileListing.h>
#include <Updater/detail/documents/FileTable.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace vo::updater::detail {

/// One file in its table. A view like its listing.
struct ListedFile
{
    ListedFile(const FileTable& fileTable, FileTable::Number fileNumber)
        : table(&fileTable)
        , number(fileNumber)
    {
    }
    explicit ListedFile(const AbstractFileListing& listing)
        : table(listing.m_table ? listing.m_table : &NoFile())
        , number(listing.m_table ? listing.m_number : 0)
    {
    }

    VoUUID id() const { return table->id(number); }
    VoChecksum checksum() const { return table->checksum(number); }
    std::int64_t length() const { return table->length(number); }
    std::string_view path() const { return table->path(number); }
    FileTable::Pieces pieces() const { return table->pieces(number); }
    bool isEquivalent(const ListedFile& other) const
    {
        return length() == other.length() && table->sameChecksum(number, *other.table, other.number) &&
               hasSameID(other);
    }
    bool hasSameID(const ListedFile& other) const { return table->sameID(number, *other.table, other.number); }
    bool operator<(const ListedFile& other) const { return table->isBefore(number, *other.table, other.number); }

    const FileTable* table;
    FileTable::Number number;

private:
    VOCORE_PRIVATE_EXPORT static const FileTable& NoFile(); // with the values of an empty listing
};

/// A table without files.
VOCORE_PRIVATE_EXPORT const FileTable& NoFiles();

/// The table of all files of a listing.
template <typename Listing>
const FileTable& TableOf(const VoDeque<Listing>& files)
{
    return files.isEmpty() ? NoFiles() : *ListedFile(files.front()).table;
}

/// A table with a listing as a view of each file, in the order of the files.
template <typename Listing>
class ListedFiles
{
public:
    ListedFiles() = default;
    explicit ListedFiles(FileTable table)
        : m_table(std::move(table))
    {
        addViews();
    }
    ListedFiles(const ListedFiles& other)
        : ListedFiles(other.m_table)
    {
    }
    ListedFiles& operator=(const ListedFiles&) = delete; // views point here

    const FileTable& table() const { return m_table; }
    const VoDeque<Listing>& items() const { return m_items; }

    void add(const Listing& item)
    {
        const ListedFile file(item);
        m_table.add(*file.table, file.number);
        addViews();
    }

    // A file of another listing at another path, without its pieces.
    void addAt(std::string_view path, const ListedFile& file)
    {
        m_table.addAt(path, *file.table, file.number);
        addViews();
    }

    const Listing* find(const VoUUID& id) const
    {
        const FileTable::Number number = m_table.find(id);
        return number == FileTable::None ? nullptr : &m_items[number];
    }

    VoDeque<VoUUID> ids() const
    {
        VoDeque<VoUUID> result;
        for (const Listing& item : m_items)
            result.pushBack(item.id());
        return result;
    }

    template <typename Base>
    std::vector<const Base*> pointers() const
    {
        std::vector<const Base*> result;
        result.reserve(m_items.size());
        for (const Listing& item : m_items)
            result.push_back(&item);
        return result;
    }

private:
    void addViews()
    {
        while (m_items.size() < m_table.size())
            m_items.pushBack(Listing(m_table, static_cast<FileTable::Number>(m_items.size())));
    }

    FileTable m_table;
    VoDeque<Listing> m_items; // views of m_table
};

} // namespace vo::updater::detail
