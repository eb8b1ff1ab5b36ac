#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/VoLogging.h>

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace vo::logging {

/// The files that SetUp() writes: "2024-02-29-0001.log" and so on in one directory, which may hold other files too.
/// Threads may write at the same time.
class VOCORE_PRIVATE_EXPORT LogFiles
{
public:
    static constexpr std::size_t FileCapacity = 10000000; ///< A file that has reached this many bytes is ended.
    static constexpr std::size_t FileCount = 5;           ///< The number of files kept, over all days.

    /// What is written and kept; as SetUp() has it at first.
    struct Settings
    {
        std::size_t capacity = FileCapacity; ///< As FileCapacity.
        std::size_t count = FileCount;       ///< As FileCount.
        std::size_t days = 0;                ///< Files of more days ago are removed; 0: none.
        bool json = false;                   ///< Whether records are JSON objects, in files with the ending ".jsonl".
        /// Whether other processes write to the files too: each record is handed over at once, and what others have
        /// written or removed is looked at.
        bool shared = false;
    };

    /// Makes the directory if it is missing.
    explicit LogFiles(const VoFilePath& directory);
    /// The same with other settings.
    LogFiles(const VoFilePath& directory, const Settings& settings);
    ~LogFiles();
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    /// Opens the file of a day.
    /// @throws VoCannotOpenFileException with its path
    void prepare(VoTimePoint time);
    void write(const Record& record) noexcept; ///< Adds the record's line; what goes wrong is lost.

private:
    void openFor(const std::string& day);
    bool hasRoom();
    void open(const std::string& day);
    void removeOldFiles(const std::string& day);
    std::vector<std::string> names() const;
    std::filesystem::path file(const std::string& day, int number) const;

    std::mutex m_mutex;
    const Settings m_settings;
    std::filesystem::path m_directory;
    VoFileDevice m_file;
    std::string m_day;
    std::size_t m_size = 0;
};

} // namespace vo::logging
