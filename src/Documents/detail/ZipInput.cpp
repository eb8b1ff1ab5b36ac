#include <Documents/detail/ZipInput.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <utility>

namespace vo::detail {

ZipInput::ZipInput(std::unique_ptr<ArchiveFile> file, const VoFilePath& path)
    : m_file(std::move(file))
    , m_end(FindZipEnd(*m_file, path))
{
}

std::size_t ZipInput::count()
{
    return directory().entries.size();
}

bool ZipInput::complete()
{
    return directory().complete;
}

std::string_view ZipInput::name(std::size_t index) const
{
    return m_directory->name(index);
}

const ZipDirectory& ZipInput::directory()
{
    if (!m_directory)
        m_directory = ReadZipDirectory(*m_file, m_end);
    return *m_directory;
}

const std::unordered_map<std::string, std::size_t>& ZipInput::places()
{
    if (m_places.empty()) {
        m_places.reserve(count());
        for (std::size_t i = 0; i < count(); ++i)
            m_places.emplace(VoFilePath(VoString(std::string(name(i)))).path().toStdString(), i);
    }
    return m_places;
}

std::size_t ZipInput::find(const std::string& path)
{
    const auto found = places().find(path);
    return found == places().end() ? count() : found->second;
}

int ZipInput::open(std::size_t index)
{
    m_open = None;
    m_remaining = 0;
    m_failure = ZipDone;
    if (index >= count())
        return ZipEndOfList;
    if (entry(index).problem != ZipEntry::Problem::None)
        return ZipBadFile;
    m_usesLibrary = libraryReads(index);
    const int code = m_usesLibrary ? m_library->open() : m_reader.open(*m_file, entry(index));
    if (code == ZipDone) {
        m_open = index;
        m_remaining = entry(index).size;
    }
    return code;
}

// The library looks for the directory on its own, and a comment can lead it astray.
bool ZipInput::libraryReads(std::size_t index)
{
    if (entry(index).isLarge)
        return false;
    if (!m_library)
        m_library.emplace(*m_file);
    return m_library->goTo(entry(index), index);
}

std::size_t ZipInput::read(char* data, std::size_t size, int& code)
{
    code = m_failure;
    if (atEnd() || size == 0)
        return 0;
    size = static_cast<std::size_t>(std::min<std::uint64_t>(size, m_remaining));
    const int taken = m_usesLibrary ? m_library->read(data, size) : m_reader.read(data, size);
    if (taken <= 0) {
        // An entry that ends before its claimed size would never end for who waits for that size.
        code = m_failure = taken == 0 ? static_cast<int>(ZipBadFile) : taken;
        return 0;
    }
    m_remaining -= static_cast<std::uint64_t>(taken);
    if (m_remaining == 0)
        code = m_failure = m_usesLibrary ? m_library->finishEntry() : m_reader.finish(); // compares the checksums
    return code == ZipDone ? static_cast<std::size_t>(taken) : 0;
}

std::string_view ZipInput::openName() const
{
    return m_open == None ? std::string_view() : name(m_open);
}

int ZipInput::close()
{
    m_open = None;
    m_remaining = 0;
    m_library.reset();
    return m_file->close() ? static_cast<int>(ZipDone) : static_cast<int>(ZipSystemError);
}

} // namespace vo::detail
