#include <Updater/detail/documents/DocumentCache.h>

#include <Core/VoChecksum.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoUrl.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoWholeFile.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/Log.h>

#include <QtCore/QByteArray>
#include <QtCore/QUrl>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::size_t MostDocuments = 32;
constexpr std::uint64_t MostBytes = std::uint64_t{64} << 20;

VoDirectoryPath Directory()
{
    return VoUpdater::UpdateSystemDirectory().directory("documents");
}

VoChecksum ChecksumOf(const std::string& bytes)
{
    return VoChecksum(QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size())));
}

// Whatever goes wrong, the document is fetched as if there were no cache.
template <typename Action>
void Quietly(const char* what, Action action) noexcept
{
    try {
        action();
    } catch (...) {
        Log().diagnostic(what + CurrentExceptionText());
    }
}

// The oldest go until few enough are left. Another process may do the same.
void Prune()
{
    namespace fs = std::filesystem;
    struct Kept
    {
        fs::file_time_type time;
        std::uint64_t size;
        fs::path path;
    };
    std::vector<Kept> all;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(vo::detail::ToNative(Directory()), error))
        all.push_back({entry.last_write_time(error), entry.file_size(error), entry.path()});
    std::sort(all.begin(), all.end(), [](const Kept& a, const Kept& b) { return a.time > b.time; });
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        bytes += all[i].size;
        if (i > 0 && (i >= MostDocuments || bytes > MostBytes))
            fs::remove(all[i].path, error);
    }
}

} // namespace

DocumentCache::DocumentCache(const VoUrl& url)
{
    if (!url.toQUrl().userInfo().isEmpty())
        return;
    m_path = Directory().file(ChecksumOf(url.toString().toStdString()).toString());
    Quietly("Kept document cannot be read: ", [this] { m_entry = read(); });
}

std::optional<DocumentCache::Entry> DocumentCache::read() const
{
    if (!VoFileSystem::Exists(m_path))
        return std::nullopt;
    const std::string bytes = ReadWholeFile(m_path, 2 * MostBytes).value_or(std::string());
    const std::size_t tagEnd = bytes.find('\n');
    const std::size_t digestEnd = tagEnd == std::string::npos ? tagEnd : bytes.find('\n', tagEnd + 1);
    if (digestEnd == std::string::npos)
        return std::nullopt;
    std::string document = bytes.substr(digestEnd + 1);
    if (ChecksumOf(document).toString().toStdString() != bytes.substr(tagEnd + 1, digestEnd - tagEnd - 1))
        return std::nullopt;
    return Entry{VoString(bytes.substr(0, tagEnd)), VoString(std::move(document))};
}

VoString DocumentCache::tag() const
{
    return m_entry ? m_entry->tag : VoString();
}

bool DocumentCache::copyTo(const VoFilePath& target) const
{
    if (!m_entry)
        return false;
    VoAtomicFileWriter writer(target);
    writer.write(m_entry->document.c_str(), m_entry->document.size());
    writer.commit(VoAtomicFileWriter::Durability::LeftToSystem);
    return true;
}

void DocumentCache::keep(const VoString& tag, const VoFilePath& document) const
{
    if (m_path.isNull() || tag.isEmpty())
        return;
    Quietly("Document cannot be kept: ", [&] {
        const auto bytes = ReadWholeFile(document, MostBytes);
        if (!bytes)
            return;
        const std::string head = tag.toStdString() + "\n" + ChecksumOf(*bytes).toString().toStdString() + "\n";
        VoFileSystem::CreateDirectory(m_path.parent(), true);
        VoAtomicFileWriter writer(m_path);
        writer.write(head.data(), head.size());
        writer.write(bytes->data(), bytes->size());
        writer.commit(VoAtomicFileWriter::Durability::LeftToSystem);
        Prune();
    });
}

} // namespace vo::updater::detail
