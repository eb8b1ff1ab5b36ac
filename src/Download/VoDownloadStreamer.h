#pragma once

#include <Core/VoExport.h>
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
    /// Opens a file beside the target. Throws VoDownloadException("Cannot open file for writing: " + path).
    explicit VoDownloadStreamer(const VoFilePath& path);

    /// Takes what @p body has, at most as much as @p buffer holds, and gives the number of bytes: 0 when nothing is
    /// there. Throws VoDownloadException("Cannot write to file: " + path).
    std::int64_t take(QIODevice& body, std::vector<char>& buffer);

    /// Puts the body in the target's place. Throws VoDownloadException("Cannot write to file: " + path).
    void finish();

private:
    const VoFilePath m_path;
    std::optional<VoAtomicFileWriter> m_writer;
};
