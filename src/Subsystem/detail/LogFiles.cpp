#include <Subsystem/detail/LogFiles.h>

#include <Core/VoFileException.h>
#include <FileSystem/detail/NativePath.h>
#include <Subsystem/LogConfiguration.h>

#include <QtCore/QDate>
#include <QtCore/QString>

#include <algorithm>
#include <system_error>
#include <utility>
#include <vector>

namespace vo::logging {

namespace {

// The pattern of a file's name without its ending; "0" stands for any digit.
constexpr char NamePattern[] = "0000-00-00-0000";
constexpr std::size_t NameLength = sizeof NamePattern - 1;
constexpr std::size_t DayLength = 10;
constexpr int LargestNumber = 9999;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLogName(const std::string& name, const std::string& ending)
{
    return name.size() == NameLength + ending.size() && name.compare(NameLength, ending.size(), ending) == 0 &&
           std::equal(name.begin(), name.begin() + NameLength, NamePattern,
                      [](char c, char pattern) { return pattern == '0' ? IsDigit(c) : c == pattern; });
}

// Names of log files are ASCII. The others need not be text at all, so anything stands for their letters.
std::string ASCIIName(const std::filesystem::path& name)
{
    std::string text;
    for (const auto c : name.native())
        text += static_cast<char32_t>(c) < 0x80 ? static_cast<char>(c) : '?';
    return text;
}

std::string EndingOf(const LogFiles::Settings& settings)
{
    return settings.json ? ".jsonl" : ".log";
}

std::string DayOf(VoTimePoint time)
{
    return time.toString().toStdString().substr(0, DayLength);
}

// The day that is a number of days before a day, "" for one before all days that a name may have.
std::string DayBefore(const std::string& day, std::size_t days)
{
    const QDate date = QDate::fromString(QString::fromStdString(day), Qt::ISODate).addDays(-static_cast<qint64>(days));
    return date.isValid() && date.year() > 0 ? date.toString(Qt::ISODate).toStdString() : std::string();
}

} // namespace

LogFiles::LogFiles(const VoFilePath& directory)
    : LogFiles(directory, Settings())
{
}

LogFiles::LogFiles(const VoFilePath& directory, const Settings& settings)
    : m_settings(settings)
    , m_directory(vo::detail::ToNative(directory))
{
    std::error_code ignored;
    std::filesystem::create_directories(m_directory, ignored);
}

LogFiles::~LogFiles() = default;

void LogFiles::prepare(VoTimePoint time)
{
    const std::lock_guard lock(m_mutex);
    openFor(DayOf(time));
    if (!m_file.isOpen()) {
        VoCannotOpenFileException failure(m_file.path());
        failure.complete(m_file.path().path(), m_file.reason());
        throw failure;
    }
}

void LogFiles::write(const Record& record) noexcept
{
    try {
        const VoString line = (m_settings.json ? FormatJSON(record) : FormatRecord(record)) + "\n";
        const std::lock_guard lock(m_mutex);
        openFor(DayOf(record.time));
        m_size += m_file.write(line);
        if (m_settings.shared || record.level >= Level::Warning)
            m_file.flush();
    } catch (...) {
        // There is nobody to tell.
    }
}

void LogFiles::openFor(const std::string& day)
{
    if (!m_file.isOpen() || day != m_day || !hasRoom())
        open(day);
}

bool LogFiles::hasRoom()
{
    if (m_settings.shared) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(vo::detail::ToNative(m_file.path()), error);
        if (error) // removed by another process, or by a person
            return false;
        m_size = static_cast<std::size_t>(size);
    }
    return m_size < m_settings.capacity;
}

// Goes on with the day's last file while it has room, else begins the next.
void LogFiles::open(const std::string& day)
{
    m_file = VoFileDevice();
    int number = 1;
    for (const std::string& name : names()) {
        if (name.compare(0, DayLength, day) == 0)
            number = std::stoi(name.substr(DayLength + 1, 4));
    }
    std::error_code error;
    std::uintmax_t size = std::filesystem::file_size(file(day, number), error);
    if (!error && size >= m_settings.capacity && number < LargestNumber) {
        ++number;
        size = 0;
    }
    m_file = VoFileDevice(vo::detail::FromNative(file(day, number)));
    if (!m_file.open(VoIODevice::Append))
        return;
    m_day = day;
    m_size = error ? 0 : static_cast<std::size_t>(size);
    removeOldFiles(day);
}

// The log files of the directory by name, which is by age.
std::vector<std::string> LogFiles::names() const
{
    std::vector<std::string> names;
    const std::string ending = EndingOf(m_settings);
    std::error_code error;
    for (std::filesystem::directory_iterator entry(m_directory, error), end; !error && entry != end;
         entry.increment(error)) {
        if (std::string name = ASCIIName(entry->path().filename()); IsLogName(name, ending))
            names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::filesystem::path LogFiles::file(const std::string& day, int number) const
{
    const std::string digits = std::to_string(number);
    return m_directory / (day + '-' + std::string(4 - digits.size(), '0') + digits + EndingOf(m_settings));
}

void LogFiles::removeOldFiles(const std::string& day)
{
    const std::vector<std::string> all = names();
    const std::string oldest = m_settings.days > 0 ? DayBefore(day, m_settings.days) : std::string();
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::error_code ignored;
        if (i + m_settings.count < all.size() || all[i] < oldest)
            std::filesystem::remove(m_directory / all[i], ignored);
    }
}

} // namespace vo::logging
