#pragma once

#include <Core/VoExport.h>
#include <Download/detail/BodyDecoder.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>

#include <cstdint>
#include <optional>
#include <vector>

class QIODevice;

/// Writes the body of a reply to its target file as it arrives. The target is replaced by finish(); without that it
/// stays as it was.
class VOCORE_PRIVATE_EXPORT VoDownloadStreamer
{
public:
    /// How the bytes come.
    enum class Coding
    {
        None,
        Gzip
    };

    /// Opens a file beside the target, which is written to until it has more than `most` bytes (-1: no limit).
    /// @throws VoDownloadException "Cannot open file for writing: " + path
    VoDownloadStreamer(const VoFilePath& path, Coding coding, std::int64_t most);

    /// Takes what `body` has, at most `limit` bytes and as much as `buffer` holds, and gives the number of bytes as
    /// they came: 0 when nothing is there.
    /// @throws VoDownloadException "Cannot write to file: " + path
    std::int64_t take(QIODevice& body, std::vector<char>& buffer, std::int64_t limit);

    std::int64_t written() const noexcept { return m_written; } ///< The bytes of the file so far.
    bool isDamaged() const noexcept { return m_isDamaged; }     ///< What came is not in the coding.
    bool isWhole() const noexcept;                              ///< Whether the coding lets the body end here.

    /// Puts the body in the target's place.
    /// @throws VoDownloadException "Cannot write to file: " + path
    void finish();

private:
    void write(const char* data, std::size_t size);

    const VoFilePath m_path;
    const std::int64_t m_most;
    std::int64_t m_written = 0;
    bool m_isDamaged = false;
    std::optional<vo::detail::BodyDecoder> m_decoder;
    std::optional<VoAtomicFileWriter> m_writer;
};
