#include <vo/line/LineHistory.h>

#include <Core/VoFileException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoWholeFile.h>

#include <optional>
#include <sstream>
#include <string>

namespace vo::tool {
namespace {

constexpr std::size_t MostLines = 1000;
constexpr std::size_t MostBytes = std::size_t(64) << 20; // of a file that others may have written

} // namespace

std::vector<VoString> LineHistory::read() const
{
    std::vector<VoString> lines;
    try {
        std::istringstream text(ReadWholeFile(m_file, MostBytes).value_or(std::string()));
        for (std::string line; std::getline(text, line);)
            lines.emplace_back(line);
    } catch (const VoFileNotFoundException&) { // nothing was ever typed
    }
    return lines;
}

void LineHistory::save()
{
    if (m_added.empty())
        return;
    VoFileSystem::CreateDirectory(m_file.parent(), true);
    const VoFileLock lock(VoFilePath(m_file.path() + ".lock"), [] {});
    std::vector<VoString> lines = read();
    lines.insert(lines.end(), m_added.begin(), m_added.end());
    VoAtomicFileWriter writer(m_file);
    for (std::size_t i = lines.size() > MostLines ? lines.size() - MostLines : 0; i < lines.size(); ++i) {
        const VoString line = lines[i] + "\n";
        writer.write(line.c_str(), line.size());
    }
    writer.commit();
    m_added.clear();
}

} // namespace vo::tool
