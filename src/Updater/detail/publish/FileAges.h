#pragma once

#include <Core/VoExport.h>
#include <Updater/detail/documents/FileTable.h>

#include <cstddef>
#include <vector>

namespace vo::updater::detail {

/// In how many earlier releases, counted from the newest, each file of the next one is as it is now.
class VOCORE_PRIVATE_EXPORT FileAges
{
public:
    /// `newest` has the files that are as the newest release has them, and must outlive this; `numbers` are those of
    /// the next release's files there, FileTable::None for what is new or changed.
    FileAges(const FileTable& newest, std::vector<FileTable::Number> numbers);

    /// Tells of the next earlier release. Files are followed by their IDs.
    void addEarlier(const FileTable& release);

    /// Whether releases earlier still can change nothing.
    bool isDecided() const { return m_followed.empty(); }

    const std::vector<std::size_t>& ages() const { return m_ages; }

private:
    const FileTable& m_newest;
    std::vector<FileTable::Number> m_numbers;
    std::vector<FileTable::Number> m_followed; // files that every release so far has with the same content
    std::vector<std::size_t> m_ages;
};

} // namespace vo::updater::detail
