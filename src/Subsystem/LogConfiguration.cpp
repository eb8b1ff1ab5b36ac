#include <Subsystem/LogConfiguration.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoPrintable.h>
#include <Core/VoProperties.h>
#include <Core/detail/NumberText.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/detail/CrashHandler.h>
#include <Subsystem/detail/LogFiles.h>
#include <Subsystem/detail/LogLevels.h>
#include <Subsystem/detail/SystemLog.h>
#include <Threading/VoReceiver.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QtGlobal>

#include <limits>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vo::logging {

namespace {

constexpr std::size_t LongestFile = 1000000;
constexpr char Levels[] = "diagnostic, information, warning, error, critical or off";

// One setting of a text, and where the text came from, for messages.
struct Setting
{
    VoString text;
    VoString source; // with " in " before it, or empty

    [[noreturn]] void refuse(const VoString& why) const
    {
        throw VoInvalidParameterException("Invalid log setting " + vo::Printable(text) + source + ": " + why);
    }
};

std::optional<Level> LevelOf(const VoString& word, const Setting& setting)
{
    for (int level = 0; level < NoLevel; ++level) {
        if (word == LevelName(static_cast<Level>(level)))
            return static_cast<Level>(level);
    }
    if (word != "off")
        setting.refuse(VoString("the level is ") + Levels);
    return std::nullopt;
}

std::size_t NumberOf(const VoString& word, std::size_t smallest, std::size_t largest, const Setting& setting)
{
    const std::optional<long long> number = vo::detail::ParseInteger(word.toStdString());
    if (!number || *number < 0 || static_cast<std::size_t>(*number) < smallest ||
        static_cast<std::size_t>(*number) > largest)
        setting.refuse("expected a whole number from " + VoString(smallest) + " to " + VoString(largest));
    return static_cast<std::size_t>(*number);
}

// "512K": letters stand for powers of 1024.
std::size_t BytesOf(VoString word, const Setting& setting)
{
    std::size_t unit = 1;
    if (!word.isEmpty()) {
        const std::size_t power = std::string_view("kmg").find(static_cast<char>(word[word.size() - 1] | 0x20));
        if (power != std::string_view::npos) {
            unit <<= 10 * (power + 1);
            word.resize(word.size() - 1, ' ');
        }
    }
    constexpr std::size_t largest = std::size_t{1} << 40;
    return unit * NumberOf(word, 1, largest / unit, setting);
}

Colours ColoursOf(const VoString& word, const Setting& setting)
{
    if (word == "auto")
        return Colours::Automatic;
    if (word == "always")
        return Colours::Always;
    if (word != "never")
        setting.refuse("expected auto, always or never");
    return Colours::Never;
}

VoFilePath PathOf(const VoString& word, const Setting& setting)
{
    if (word.isEmpty())
        setting.refuse("expected a path");
    return VoFilePath(word);
}

// Reads settings into a configuration.
class Reader
{
public:
    explicit Reader(VoString source)
        : m_source(std::move(source))
    {
    }

    void read(const VoString& text)
    {
        const Setting setting{VoString(text.trimmed()), m_source};
        const std::string& whole = setting.text.toStdString();
        if (whole.empty() || whole.front() == '#')
            return;
        const std::size_t sign = whole.find('=');
        const auto piece = [&](std::size_t from, std::size_t to) {
            return VoString(VoString(whole.substr(from, to - from)).trimmed());
        };
        if (whole.front() == '@')
            readOption(piece(1, std::min(sign, whole.size())),
                       sign == std::string::npos ? VoString() : piece(sign + 1, whole.size()), setting);
        else if (sign == std::string::npos)
            addRule("*", setting.text, setting);
        else
            addRule(piece(0, sign), piece(sign + 1, whole.size()), setting);
    }

    void readOption(const VoString& name, const VoString& value, const Setting& setting);

    Configuration take()
    {
        if (!m_configuration.levels.isEmpty() && !m_saysStandardError)
            m_configuration.standardError = Level::Diagnostic;
        return std::move(m_configuration);
    }

    const VoString& source() const { return m_source; }

private:
    void addRule(const VoString& pattern, const VoString& level, const Setting& setting)
    {
        if (pattern.isEmpty())
            setting.refuse("the category is missing");
        m_configuration.levels.push_back({pattern, LevelOf(level, setting)});
    }

    const VoString m_source;
    Configuration m_configuration;
    bool m_saysStandardError = false;
};

void Reader::readOption(const VoString& name, const VoString& value, const Setting& setting)
{
    Configuration& c = m_configuration;
    if (name == "stderr") {
        c.standardError = LevelOf(value, setting);
        m_saysStandardError = true;
    } else if (name == "colour") {
        c.colours = ColoursOf(value, setting);
    } else if (name == "folder") {
        c.folder = PathOf(value, setting);
    } else if (name == "json") {
        c.jsonFolder = PathOf(value, setting);
    } else if (name == "size") {
        c.fileSize = BytesOf(value, setting);
    } else if (name == "files") {
        c.files = NumberOf(value, 1, 1000, setting);
    } else if (name == "days") {
        c.days = NumberOf(value, 0, 36500, setting);
    } else if (name == "system") {
        c.systemLog = LevelOf(value, setting);
    } else if (name == "crash") {
        c.crashFile = PathOf(value, setting);
    } else {
        setting.refuse("unknown; there are @stderr, @colour, @folder, @json, @size, @files, @days, @system and @crash");
    }
}

// Calls with each piece between separators.
template <typename Function>
void ForEachPiece(const std::string& text, const char* separators, const Function& function)
{
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t to = std::min(text.find_first_of(separators, from), text.size());
        function(VoString(text.substr(from, to - from)));
        from = to + 1;
    }
}

Configuration Parsed(const std::string& text, const char* separators, VoString source)
{
    Reader reader(std::move(source));
    ForEachPiece(text, separators, [&](const VoString& piece) { reader.read(piece); });
    return reader.take();
}

std::shared_ptr<LogFiles> FilesIn(const VoFilePath& folder, bool json, const Configuration& configuration)
{
    const VoDirectoryPath directory = VoDirectoryPath::FromText(folder.path());
    VoFileSystem::CreateDirectory(directory, true);
    LogFiles::Settings settings;
    settings.capacity = configuration.fileSize;
    settings.count = configuration.files;
    settings.days = configuration.days;
    settings.json = json;
    settings.shared = true;
    auto files = std::make_shared<LogFiles>(folder, settings);
    files->prepare(VoTimePoint::Now());
    return files;
}

Sink FileSink(const VoFilePath& folder, bool json, const Configuration& configuration)
{
    return [files = FilesIn(folder, json, configuration)](const Record& record) { files->write(record); };
}

CrashRing& TheCrashRing()
{
    static CrashRing& ring = *new CrashRing; // never destroyed: a crash may come last of all
    return ring;
}

Sink CrashSink()
{
    CrashRing& ring = TheCrashRing();
    return [&ring](const Record& record) { ring.add(FormatRecord(record).toStdString()); };
}

struct Output
{
    Level minimum;
    Sink sink;
};
using Outputs = std::vector<Output>;

// What the process is configured with. Never destroyed: static objects log while the process ends.
struct State
{
    std::mutex mutex; // held while a configuration is made that of the process
    VoReceiver receiver;

    std::mutex outputsMutex;
    std::shared_ptr<const Outputs> outputs;
};

State& TheState()
{
    static State& state = *new State;
    return state;
}

// One sink for all configurations: were one sink to take another's place, a record between the two would be lost.
void SendToOutputs(const Record& record)
{
    std::shared_ptr<const Outputs> outputs;
    {
        const std::lock_guard lock(TheState().outputsMutex);
        outputs = TheState().outputs;
    }
    for (const Output& output : *outputs) {
        if (record.level >= output.minimum)
            output.sink(record);
    }
}

std::shared_ptr<const Outputs> OutputsOf(const Configuration& configuration)
{
    Outputs outputs;
    if (!configuration.folder.isNull())
        outputs.push_back({Level::Diagnostic, FileSink(configuration.folder, false, configuration)});
    if (!configuration.jsonFolder.isNull())
        outputs.push_back({Level::Diagnostic, FileSink(configuration.jsonFolder, true, configuration)});
    if (configuration.systemLog)
        outputs.push_back({*configuration.systemLog, WriteToSystemLog});
    if (!configuration.crashFile.isNull())
        outputs.push_back({Level::Diagnostic, CrashSink()});
    return std::make_shared<const Outputs>(std::move(outputs));
}

void ConfigureStandardError(const Configuration& configuration)
{
    if (configuration.standardError)
        EnableStandardError(*configuration.standardError);
    else
        DisableStandardError();
    ColourStandardError(configuration.colours == Colours::Always ||
                        (configuration.colours == Colours::Automatic && StandardErrorShowsColours()));
}

void ConfigureCrashes(const VoFilePath& file)
{
    if (file.isNull())
        RemoveCrashHandler();
    else
        InstallCrashHandler(TheCrashRing(), vo::detail::ToNative(file));
}

} // namespace

Configuration Configuration::FromText(const VoString& text)
{
    return Parsed(text.toStdString(), ",\r\n", {});
}

Configuration Configuration::FromEnvironment()
{
    return Parsed(qgetenv("VO_LOG").toStdString(), ",\r\n", " in VO_LOG");
}

Configuration Configuration::FromFile(const VoFilePath& path)
{
    if (VoFileSystem::FileSize(path) > LongestFile)
        throw VoInvalidParameterException("Log settings too long: " + path.path());
    VoFileDevice file(path);
    if (!file.open(VoIODevice::Read))
        throw VoCannotOpenFileException(file);
    return Parsed(file.read(LongestFile).toStdString(), "\r\n", " in " + vo::Printable(path.path()));
}

Configuration Configuration::FromProperties(const VoProperties& properties, const VoString& name)
{
    Reader reader("");
    const VoString prefix = name + ".";
    for (const VoProperty& property : properties) {
        const VoString value = property.value().toString();
        if (property.name() == name) {
            ForEachPiece(value.toStdString(), ",\r\n", [&](const VoString& piece) { reader.read(piece); });
        } else if (property.name().size() > prefix.size() &&
                   VoString(property.name().substring(0, prefix.size())) == prefix) {
            const VoString option(property.name().substring(prefix.size()));
            reader.readOption(option, value, {property.name() + "=" + value, ""});
        }
    }
    return reader.take();
}

void Configure(const Configuration& configuration)
{
    State& state = TheState();
    VoReceiver unused; // ends without the lock: a receiver may wait for a sink
    const std::lock_guard lock(state.mutex);
    std::shared_ptr<const Outputs> outputs = OutputsOf(configuration);
    const bool isUsed = !outputs->empty();
    ConfigureCrashes(configuration.crashFile);
    ApplyLevelRules(configuration.levels);
    ConfigureStandardError(configuration);
    {
        const std::lock_guard outputsLock(state.outputsMutex);
        state.outputs.swap(outputs);
    }
    if (!isUsed)
        unused.swap(state.receiver);
    else if (!state.receiver.isReceiving())
        state.receiver = AddSink(SendToOutputs);
}

VoString FormatJSON(const Record& record)
{
    std::ostringstream thread;
    thread.imbue(std::locale::classic());
    thread << record.thread;
    const QJsonObject object{{QStringLiteral("time"), record.time.toString().toQString()},
                             {QStringLiteral("level"), QString::fromLatin1(LevelName(record.level))},
                             {QStringLiteral("category"), record.category.toQString()},
                             {QStringLiteral("thread"), QString::fromStdString(thread.str())},
                             {QStringLiteral("text"), record.text.toQString()}};
    return VoString(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString());
}

} // namespace vo::logging
