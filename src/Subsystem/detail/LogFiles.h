#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/VoLogging.h>

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>

namespace vo::logging {

/// The files that SetUp() writes: "2024-02-29-0001.log" and so on in one directory, which may hold other files too.
/// Threads may write at the same time.
class VOCORE_PRIVATE_EXPORT LogFiles
{
public:
    static constexpr std::size_t FileCapacity = 10000000; ///< A file that has reached this many bytes is ended.
    static constexpr std::size_t FileCount = 5;           ///< The number of files kept, over all days.

    /// Makes the directory if it is missing.
    explicit LogFiles(const VoFilePath& directory);
    ~LogFiles();
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    void write(const Record& record) noexcept; ///< Adds the record's line; what goes wrong is lost.

private:
    void open(const std::string& day);
    void removeOldFiles();

    std::mutex m_mutex;
    std::filesystem::path m_directory;
    VoFileDevice m_file;
    std::string m_day;
    std::size_t m_size = 0;
};

} // namespace vo::logging
