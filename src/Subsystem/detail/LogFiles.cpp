#include <Subsystem/detail/LogFiles.h>

#include <FileSystem/detail/NativePath.h>

#include <algorithm>
#include <system_error>
#include <vector>

namespace vo::logging {

namespace {

// The pattern of a file's name; "0" stands for any digit.
constexpr char NamePattern[] = "0000-00-00-0000.log";
constexpr std::size_t DayLength = 10;
constexpr int LargestNumber = 9999;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLogName(const std::string& name)
{
    return name.size() == sizeof NamePattern - 1 &&
           std::equal(name.begin(), name.end(), NamePattern,
                      [](char c, char pattern) { return pattern == '0' ? IsDigit(c) : c == pattern; });
}

std::string LogName(const std::string& day, int number)
{
    const std::string digits = std::to_string(number);
    return day + '-' + std::string(4 - digits.size(), '0') + digits + ".log";
}

// The log files of a directory by name, which is by age.
std::vector<std::string> LogNames(const std::filesystem::path& directory)
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    names.erase(std::remove_if(names.begin(), names.end(), [](const std::string& name) { return !IsLogName(name); }),
                names.end());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

LogFiles::LogFiles(const VoFilePath& directory)
    : m_directory(vo::detail::ToNative(directory))
{
    std::error_code ignored;
    std::filesystem::create_directories(m_directory, ignored);
}

LogFiles::~LogFiles() = default;

void LogFiles::write(const Record& record) noexcept
{
    try {
        const std::string day = record.time.toString().toStdString().substr(0, DayLength);
        const VoString line = FormatRecord(record) + "\n";
        const std::lock_guard lock(m_mutex);
        if (!m_file.isOpen() || day != m_day || m_size >= FileCapacity)
            open(day);
        m_size += m_file.write(line);
        if (record.level >= Level::Warning)
            m_file.flush();
    } catch (...) {
        // There is nobody to tell.
    }
}

// Goes on with the day's last file while it has room, else begins the next.
void LogFiles::open(const std::string& day)
{
    m_file = VoFileDevice();
    int number = 1;
    for (const std::string& name : LogNames(m_directory)) {
        if (name.compare(0, DayLength, day) == 0)
            number = std::stoi(name.substr(DayLength + 1, 4));
    }
    std::error_code error;
    std::uintmax_t size = std::filesystem::file_size(m_directory / LogName(day, number), error);
    if (!error && size >= FileCapacity && number < LargestNumber) {
        ++number;
        size = 0;
    }
    m_file = VoFileDevice(vo::detail::FromNative(m_directory / LogName(day, number)));
    if (!m_file.open(VoIODevice::Append))
        return;
    m_day = day;
    m_size = error ? 0 : static_cast<std::size_t>(size);
    removeOldFiles();
}

void LogFiles::removeOldFiles()
{
    const std::vector<std::string> names = LogNames(m_directory);
    for (std::size_t i = 0; i + FileCount < names.size(); ++i) {
        std::error_code ignored;
        std::filesystem::remove(m_directory / names[i], ignored);
    }
}

} // namespace vo::logging
