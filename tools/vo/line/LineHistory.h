#pragma once

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <vector>

namespace vo::tool {

/// The lines that were typed, kept in a file. Several programs may add to it; none loses what another has added.
class LineHistory
{
public:
    explicit LineHistory(VoFilePath file)
        : m_file(std::move(file))
    {
    }

    /// The lines of the file, the oldest first; none where there is no file. Throws as ReadWholeFile().
    std::vector<VoString> read() const;
    void add(const VoString& line) { m_added.push_back(line); } ///< Keeps a line for save().
    /// Adds the new lines behind what the file holds by now; the oldest ones go. Throws as read() and
    /// VoAtomicFileWriter.
    void save();

private:
    const VoFilePath m_file;
    std::vector<VoString> m_added;
};

} // namespace vo::tool
