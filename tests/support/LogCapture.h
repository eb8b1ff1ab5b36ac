#pragma once

#include <Subsystem/VoLogging.h>
#include <Threading/VoReceiver.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace vo::test {

/// Captures what is logged on any thread while it exists.
class LogCapture
{
public:
    LogCapture()
        : m_receiver(vo::logging::AddSink([this](const vo::logging::Record& record) { keep(record); }))
    {
    }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Everything captured so far.
    std::vector<vo::logging::Record> records() const
    {
        const std::lock_guard lock(m_mutex);
        return m_records;
    }

    /// The texts of one category, in order.
    std::vector<std::string> texts(const VoString& category) const
    {
        std::vector<std::string> texts;
        for (const vo::logging::Record& record : records()) {
            if (record.category == category)
                texts.push_back(record.text.toStdString());
        }
        return texts;
    }

    /// Whether a text of one category has that part.
    bool contains(const VoString& category, const std::string& part) const
    {
        const std::vector<std::string> all = texts(category);
        return std::any_of(all.begin(), all.end(),
                           [&part](const std::string& text) { return text.find(part) != std::string::npos; });
    }

    /// How many records have exactly this level, category and text.
    std::size_t count(vo::logging::Level level, const VoString& category, const VoString& text) const
    {
        const std::vector<vo::logging::Record> all = records();
        return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [&](const vo::logging::Record& record) {
            return record.level == level && record.category == category &&
                   record.text.equal(text, VoString::CaseSensitive);
        }));
    }

    /// Forgets what was captured.
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_records.clear();
    }

private:
    void keep(const vo::logging::Record& record)
    {
        const std::lock_guard lock(m_mutex);
        m_records.push_back(record);
    }

    mutable std::mutex m_mutex;
    std::vector<vo::logging::Record> m_records;
    VoReceiver m_receiver; // last: no record arrives once the rest is being destroyed
};

} // namespace vo::test
