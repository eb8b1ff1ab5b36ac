#include <vo/screen/Console.h>

#include <vo/screen/Terminal.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

namespace vo::tool {
namespace {

/// Drawing more often would cost more than the work.
constexpr std::int64_t DrawInterval = 50 * 1000 * 1000; // nanoseconds
/// Where the texts behind the labels begin.
constexpr std::size_t LabelWidth = 18;

constexpr const char* Yellow = "\x1b[33m";
constexpr const char* Red = "\x1b[31m";

void Write(std::FILE* file, const VoString& text)
{
    std::fwrite(text.c_str(), 1, text.size(), file);
}

// JSON with the escapes for what Printable() shows by its own: it is read on terminals too.
std::string PrintableJson(const QString& json)
{
    QString text;
    for (const QChar unit : json) {
        if (unit.unicode() >= 0x7f && IsUnprintable(unit.unicode()))
            text += QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
        else
            text += unit;
    }
    return text.toStdString();
}

const char* StatusName(ExitCode code)
{
    switch (code) {
    case ExitCode::Done:
        return "done";
    case ExitCode::Failed:
        return "failed";
    case ExitCode::WrongUsage:
        return "wrong usage";
    case ExitCode::NothingToDo:
        return "nothing to do";
    case ExitCode::Differences:
        return "differences";
    case ExitCode::Cancelled:
        return "cancelled";
    case ExitCode::Unsafe:
        return "refused";
    case ExitCode::NotProven:
        return "not proven";
    }
    return "failed";
}

} // namespace

Console::~Console()
{
    endProgress();
}

void Console::line(const VoString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_settings.json)
        return;
    erase();
    Write(stdout, Printable(text) + "\n");
}

void Console::labelled(const char* label, const VoString& text)
{
    VoString shown(label);
    if (shown.size() < LabelWidth)
        shown.resize(LabelWidth, ' ');
    line(shown + text);
}

void Console::list(const char* key)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lists[QString::fromLatin1(key)];
}

void Console::row(const char* key, const VoString& text, const QJsonObject& record)
{
    line(text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_settings.json)
        m_lists[QString::fromLatin1(key)].append(record);
}

void Console::message(const VoString& text, const char* colour)
{
    erase();
    const VoString shown = "vo: " + Printable(text);
    if (colour != nullptr && m_settings.colours)
        Write(stderr, colour + shown + "\x1b[0m\n");
    else
        Write(stderr, shown + "\n");
}

void Console::note(const VoString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_settings.quiet)
        message(text, text.find("warning: ") == 0 ? Yellow : nullptr);
}

void Console::detail(const VoString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_settings.verbose)
        message(text);
}

void Console::error(const VoString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_error = text;
    message(text, Red);
}

void Console::error(const CommandError& failure)
{
    error(failure.text);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_told.insert(m_told.end(), failure.tells.begin(), failure.tells.end());
}

bool Console::hasTold(const VoString& logged)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_told.begin(), m_told.end(), [&](const VoString& text) { return logged.contains(text); });
}

void Console::progress(const VoString& label, ProgressLine::Unit unit, std::uint64_t done, std::uint64_t total)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_settings.progress)
        return;
    const bool begins = !m_line || m_line->label() != label;
    if (begins)
        m_line.emplace(label, unit);
    m_line->update(done, total, VoTimePoint::Now());
    draw(begins || done >= total);
}

void Console::draw(bool force)
{
    const VoTimePoint now = VoTimePoint::Now();
    const std::int64_t elapsed = (now - m_drawnAt).count();
    if (!force && elapsed >= 0 && elapsed < DrawInterval)
        return;
    m_drawnAt = now;
    const VoString text = Printable(m_line->text(TerminalWidth() - 1));
    VoString blank;
    if (text.size() < m_drawn)
        blank = VoString(' ', m_drawn - text.size());
    Write(stderr, "\r" + text + blank);
    std::fflush(stderr);
    m_drawn = text.size();
}

void Console::erase()
{
    if (m_drawn == 0)
        return;
    Write(stderr, "\r" + VoString(' ', m_drawn) + "\r");
    std::fflush(stderr);
    m_drawn = 0;
}

void Console::endProgress()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    erase();
    m_line.reset();
}

ExitCode Console::finish(const VoString& command, ExitCode code)
{
    endProgress();
    if (m_settings.json) {
        for (const auto& [key, rows] : m_lists)
            m_document.insert(key, rows);
        m_document("command", command)("status", StatusName(code))("exitCode", static_cast<int>(code));
        if (!m_error.isEmpty())
            m_document("error", m_error);
        Write(stdout, VoString(PrintableJson(QString::fromUtf8(QJsonDocument(m_document.object()).toJson()))));
    }
    const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (written)
        return code;
    error("the result cannot be written to standard output");
    return code == ExitCode::Done ? ExitCode::Failed : code;
}

} // namespace vo::tool
