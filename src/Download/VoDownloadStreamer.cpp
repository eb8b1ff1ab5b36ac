#include <Download/VoDownloadStreamer.h>

#include <Core/VoFileException.h>
#include <Download/VoDownloadException.h>

#include <QtCore/QIODevice>

namespace {

// Runs a file operation; whatever the system says, callers know the failure by these words and the path.
template <typename Operation>
void Attempt(Operation operation, const char* failure, const VoFilePath& path)
{
    try {
        operation();
    } catch (const VoException&) {
        throw VoDownloadException(failure + path.toString());
    }
}

} // namespace

VoDownloadStreamer::VoDownloadStreamer(const VoFilePath& path)
    : m_path(path)
{
    Attempt([&] { m_writer.emplace(path); }, "Cannot open file for writing: ", path);
}

std::int64_t VoDownloadStreamer::take(QIODevice& body, std::vector<char>& buffer)
{
    const qint64 count = body.read(buffer.data(), static_cast<qint64>(buffer.size()));
    if (count <= 0)
        return 0; // a failed reply tells that by its own error
    Attempt([&] { m_writer->write(buffer.data(), static_cast<std::size_t>(count)); }, "Cannot write to file: ", m_path);
    return count;
}

void VoDownloadStreamer::finish()
{
    // Not forced to disk: a loss of power may cost the file but never leaves a part of it under the name, and what must
    // be right is checked by its digest.
    Attempt([&] { m_writer->commit(VoAtomicFileWriter::Durability::LeftToSystem); }, "Cannot write to file: ", m_path);
}
