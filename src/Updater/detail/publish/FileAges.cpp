#include <Updater/detail/publish/FileAges.h>

#include <Updater/detail/documents/ListedFile.h>

#include <algorithm>
#include <utility>

namespace vo::updater::detail {

FileAges::FileAges(const FileTable& newest, std::vector<FileTable::Number> numbers)
    : m_newest(newest)
    , m_numbers(std::move(numbers))
    , m_ages(m_numbers.size())
{
    for (std::size_t i = 0; i < m_numbers.size(); ++i) {
        if (m_numbers[i] == FileTable::None)
            continue;
        m_followed.push_back(static_cast<FileTable::Number>(i));
        m_ages[i] = 1;
    }
}

void FileAges::addEarlier(const FileTable& release)
{
    const auto hasChanged = [&](FileTable::Number file) {
        const ListedFile now(m_newest, m_numbers[file]);
        const FileTable::Number then = release.find(m_newest, now.number);
        return then == FileTable::None || !now.isEquivalent(ListedFile(release, then));
    };
    m_followed.erase(std::remove_if(m_followed.begin(), m_followed.end(), hasChanged), m_followed.end());
    for (const FileTable::Number file : m_followed)
        ++m_ages[file];
}

} // namespace vo::updater::detail
