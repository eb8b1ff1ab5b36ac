#include <Download/detail/VoDownloadStreamer.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <Download/VoDownloadException.h>

#include <QtCore/QIODevice>
#include <algorithm>

namespace {

// Runs a file operation; whatever the system says, callers know the failure by these words and the path.
template <typename Operation>
void Attempt(Operation operation, const char* failure, const VoFilePath& path)
{
    try {
        operation();
    } catch (const VoException& cause) {
        throw vo::detail::Completed(VoDownloadException(failure + path.toString()), path.path(), cause.reason());
    }
}

} // namespace

VoDownloadStreamer::VoDownloadStreamer(const VoFilePath& path, Coding coding, std::int64_t most)
    : m_path(path)
    , m_most(most)
{
    if (coding == Coding::Gzip)
        m_decoder.emplace();
    Attempt([&] { m_writer.emplace(path); }, "Cannot open file for writing: ", path);
}

std::int64_t VoDownloadStreamer::take(QIODevice& body, std::vector<char>& buffer, std::int64_t limit)
{
    const auto most = std::min(limit, static_cast<std::int64_t>(buffer.size()));
    const qint64 count = most > 0 ? body.read(buffer.data(), most) : 0;
    if (count <= 0)
        return 0; // a failed reply tells that by its own error
    const auto size = static_cast<std::size_t>(count);
    if (!m_decoder) {
        write(buffer.data(), size);
        return count;
    }
    const auto take = [this](const char* data, std::size_t decoded) {
        write(data, decoded);
        return m_most < 0 || m_written <= m_most;
    };
    m_isDamaged = m_isDamaged || !m_decoder->decode(buffer.data(), size, take);
    return count;
}

bool VoDownloadStreamer::isWhole() const noexcept
{
    return !m_decoder || m_decoder->isWhole();
}

void VoDownloadStreamer::write(const char* data, std::size_t size)
{
    Attempt([&] { m_writer->write(data, size); }, "Cannot write to file: ", m_path);
    m_written += static_cast<std::int64_t>(size);
}

void VoDownloadStreamer::finish()
{
    // Not forced to disk: a loss of power may cost the file but never leaves a part of it under the name, and what must
    // be right is checked by its digest.
    Attempt([&] { m_writer->commit(VoAtomicFileWriter::Durability::LeftToSystem); }, "Cannot write to file: ", m_path);
}
