#include <Application/VoApplication.h>

#include <Application/VoLayeredProperties.h>
#include <Application/VoSignalWatch.h>
#include <Application/detail/SingleInstance.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoProperties.h>
#include <Core/detail/Callback.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Subsystem/Registry.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>
#include <Threading/detail/CallbackList.h>
#include <Threading/detail/QueuedFunctions.h>

#include <QtCore/QCommandLineOption>
#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtCore/QStringList>

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

namespace {

constexpr int SignalExitCode = 128; // as shells tell it
constexpr char PropertiesName[] = "properties.xml";

std::atomic<VoApplication*> instance{nullptr};

// Callbacks that are logged when they fail.
template <typename Signature>
class Callbacks final : public vo::detail::CallbackList
{
public:
    ~Callbacks() override { release(); }

    VoReceiver addCallback(std::function<Signature> callback)
    {
        vo::detail::RequireCallback(callback);
        auto entry = std::make_shared<CallbackEntry>();
        entry->callback = std::move(callback);
        return add(std::move(entry));
    }

    template <typename... Arguments>
    void callBackwards(const char* what, const Arguments&... arguments)
    {
        callEachBackwards([&](Entry& entry) {
            try {
                static_cast<CallbackEntry&>(entry).callback(arguments...);
            } catch (...) {
                vo::logging::Logger::Get("application")
                    .error(VoString("Exception in ") + what + ": " + vo::CurrentExceptionText());
            }
        });
    }

private:
    struct CallbackEntry final : Entry
    {
        std::function<Signature> callback;
    };
};

// Texts are UTF-8 whatever the locale says: file names are bytes, and the library's paths are UTF-8. On Windows main()
// has them in the system's code page, and the framework reads the wide command line.
QStringList ArgumentsOf(int argc, char** argv)
{
    if constexpr (std::filesystem::path::preferred_separator != '/')
        return QCoreApplication::arguments();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromUtf8(argv[i]);
    return arguments;
}

VoDeque<VoString> ToTexts(const QStringList& list)
{
    VoDeque<VoString> texts;
    for (const QString& text : list)
        texts.push_back(VoString(text));
    return texts;
}

QStringList ToList(const VoDeque<VoString>& texts)
{
    QStringList list;
    for (const VoString& text : texts)
        list << text.toQString();
    return list;
}

VoDirectoryPath Place(const char* name, QStandardPaths::StandardLocation standard)
{
    if (!qEnvironmentVariableIsEmpty("VOAPPDATAPATH"))
        return VoFileSystem::Directory(VoFileSystem::ApplicationData).directory(name);
    return VoDirectoryPath::FromText(VoString(QStandardPaths::writableLocation(standard)));
}

// Where the system keeps the configurations of all users: the first of its places that has one.
VoFilePath MachineFile()
{
    const QString own = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    VoFilePath first;
    for (const QString& place : QStandardPaths::standardLocations(QStandardPaths::AppConfigLocation)) {
        if (place == own)
            continue;
        VoFilePath file = VoDirectoryPath::FromText(VoString(place)).file(PropertiesName);
        if (VoFileSystem::Exists(file))
            return file;
        if (first.isNull())
            first = file;
    }
    return first;
}

std::vector<std::string> TextsToHandOver(const QStringList& arguments)
{
    std::vector<std::string> texts{QDir::currentPath().toStdString()};
    for (const QString& argument : arguments.mid(1))
        texts.push_back(argument.toStdString());
    return texts;
}

} // namespace

struct VoApplication::Private
{
    VoApplicationInformation information;
    VoTimePoint startTime = VoTimePoint::Now();

    // The framework's own wants these as long as it lives.
    int argc = 0;
    char** argv = nullptr;
    std::unique_ptr<QCoreApplication> own;
    QStringList arguments;

    QCommandLineParser parser;
    std::once_flag readOnce;
    std::unique_ptr<VoLayeredProperties> properties;

    VoStopFlag stop;
    std::atomic<bool> quits{false};
    std::atomic<bool> hasRunHandlers{false};
    Callbacks<void()> quitHandlers;
    Callbacks<void(const VoDeque<VoString>&, const VoString&)> argumentsCallbacks;
    QMetaObject::Connection aboutToQuit;
    std::unique_ptr<vo::detail::SingleInstance> single;
    vo::detail::QueuedFunctions loop;       // the application's
    std::unique_ptr<VoSignalWatch> signals; // first to go: its thread calls quit()
};

VoApplication::VoApplication(const VoApplicationInformation& information, int argc, char** argv)
    : m_private(std::make_unique<Private>())
{
    if (!VoValueDefinition::IsValidName(information.name))
        throw VoInvalidParameterException("Invalid application name: " + information.name);
    VoApplication* expected = nullptr;
    if (!instance.compare_exchange_strong(expected, this))
        throw VoInvalidCallException("Application already exists");
    try {
        setUp(information, argc, argv);
    } catch (...) {
        QObject::disconnect(m_private->aboutToQuit);
        instance = nullptr;
        throw;
    }
}

void VoApplication::setUp(const VoApplicationInformation& information, int argc, char** argv)
{
    Private& d = *m_private;
    d.information = information;
    d.argc = argc;
    d.argv = argv;
    if (!QCoreApplication::instance())
        d.own = std::make_unique<QCoreApplication>(d.argc, d.argv);
    d.loop.moveToThread(QCoreApplication::instance()->thread());
    d.arguments = ArgumentsOf(argc, argv);
    QCoreApplication::setApplicationName(information.name.toQString());
    QCoreApplication::setApplicationVersion(information.version.toString().toQString());
    QCoreApplication::setOrganizationName(information.organisation.toQString());
    d.aboutToQuit =
        QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, [this] { runQuitHandlers(); });
    d.parser.setApplicationDescription(displayName().toQString());
    addOption({{"set"}, "Sets a property for this time", "NAME=VALUE"});
    vo::subsystem::RegisterLibrary();
    d.signals = std::make_unique<VoSignalWatch>([this](int signal) { quit(SignalExitCode + signal); });
}

VoApplication::~VoApplication()
{
    m_private->signals.reset();
    QObject::disconnect(m_private->aboutToQuit);
    runQuitHandlers();
    m_private->single.reset();
    m_private->own.reset();
    instance = nullptr;
}

VoApplication* VoApplication::Instance() noexcept
{
    return instance;
}

VoApplication& VoApplication::Get()
{
    if (VoApplication* const application = Instance())
        return *application;
    throw VoInvalidCallException("No application object");
}

const VoString& VoApplication::name() const noexcept
{
    return m_private->information.name;
}

const VoString& VoApplication::displayName() const noexcept
{
    const VoApplicationInformation& information = m_private->information;
    return information.displayName.isEmpty() ? information.name : information.displayName;
}

const VoVersion& VoApplication::version() const noexcept
{
    return m_private->information.version;
}

const VoString& VoApplication::organisation() const noexcept
{
    return m_private->information.organisation;
}

VoTimePoint VoApplication::startTime() const noexcept
{
    return m_private->startTime;
}

VoDirectoryPath VoApplication::dataDirectory() const
{
    return VoFileSystem::Directory(VoFileSystem::ApplicationData);
}

VoDirectoryPath VoApplication::documentsDirectory() const
{
    return VoFileSystem::Directory(VoFileSystem::Documents);
}

VoDirectoryPath VoApplication::configurationDirectory() const
{
    return Place("config", QStandardPaths::AppConfigLocation);
}

VoDirectoryPath VoApplication::cacheDirectory() const
{
    return Place("cache", QStandardPaths::CacheLocation);
}

VoDirectoryPath VoApplication::temporaryDirectory() const
{
    return VoFileSystem::TempDirectory();
}

void VoApplication::addOption(const VoCommandLineOption& option)
{
    const QStringList names = ToList(option.names);
    bool isTaken = names.isEmpty();
    for (const QString& name : names)
        isTaken |= name.isEmpty() || name.startsWith(QLatin1Char('-')) || name.contains(QLatin1Char('='));
    if (!isTaken) {
        QCommandLineOption known(names, option.description.toQString(), option.valueName.toQString());
        if (!option.defaultValue.isEmpty())
            known.setDefaultValue(option.defaultValue.toQString());
        isTaken = !m_private->parser.addOption(known);
    }
    if (isTaken)
        throw VoInvalidParameterException("Invalid option: " + VoString(names.join(QStringLiteral(", "))));
}

void VoApplication::parseCommandLine()
{
    if (!m_private->parser.parse(m_private->arguments))
        throw VoInvalidParameterException(VoString(m_private->parser.errorText()));
    for (const VoString& setting : values("set")) {
        const std::string& text = setting.toStdString();
        const std::size_t sign = text.find('=');
        if (sign == std::string::npos)
            throw VoInvalidParameterException("Invalid --set: " + setting);
        properties().setOverride(VoString(text.substr(0, sign)), VoString(text.substr(sign + 1)));
    }
}

bool VoApplication::isSet(const VoString& option) const
{
    return m_private->parser.isSet(option.toQString());
}

VoString VoApplication::value(const VoString& option) const
{
    return VoString(m_private->parser.value(option.toQString()));
}

VoDeque<VoString> VoApplication::values(const VoString& option) const
{
    return ToTexts(m_private->parser.values(option.toQString()));
}

VoDeque<VoString> VoApplication::positionalArguments() const
{
    return ToTexts(m_private->parser.positionalArguments());
}

VoDeque<VoString> VoApplication::arguments() const
{
    return ToTexts(m_private->arguments.mid(1));
}

VoString VoApplication::helpText() const
{
    return VoString(m_private->parser.helpText());
}

VoLayeredProperties& VoApplication::properties()
{
    std::call_once(m_private->readOnce, [this] {
        VoLayeredProperties::Sources sources;
        sources.machine = MachineFile();
        sources.user = configurationDirectory().file(PropertiesName);
        auto properties = std::make_unique<VoLayeredProperties>(sources);
        properties->define({"log", "", "What is logged, and where it goes"});
        m_private->properties = std::move(properties);
    });
    return *m_private->properties;
}

int VoApplication::exec()
{
    const int code = QCoreApplication::exec();
    runQuitHandlers();
    return code;
}

void VoApplication::quit(int exitCode)
{
    if (m_private->quits.exchange(true))
        return;
    m_private->stop.stop();
    // Queued, so that it also ends a loop that has not begun yet.
    m_private->loop.post([exitCode] { QCoreApplication::exit(exitCode); });
}

VoStopFlag VoApplication::stopFlag() const
{
    return m_private->stop;
}

VoReceiver VoApplication::atQuit(std::function<void()> handler)
{
    return m_private->quitHandlers.addCallback(std::move(handler));
}

void VoApplication::runQuitHandlers() noexcept
try {
    if (m_private->hasRunHandlers.exchange(true))
        return;
    m_private->stop.stop();
    m_private->quitHandlers.callBackwards("quit handler");
    vo::subsystem::Registry::Global().stopAll();
    if (m_private->properties)
        m_private->properties->save();
} catch (...) {
    vo::logging::Logger::Get("application").error("Quitting: " + vo::CurrentExceptionText());
}

bool VoApplication::claimSingleInstance(const VoTimeDuration& patience)
{
    if (!m_private->single)
        m_private->single = std::make_unique<vo::detail::SingleInstance>(
            configurationDirectory(), [this](const std::vector<std::string>& texts) {
                VoDeque<VoString> arguments;
                for (std::size_t i = 1; i < texts.size(); ++i)
                    arguments.push_back(VoString(texts[i]));
                m_private->argumentsCallbacks.callBackwards("arguments callback", arguments, VoString(texts.at(0)));
            });
    const std::optional<bool> isFirst = m_private->single->claim(TextsToHandOver(m_private->arguments), patience);
    if (!isFirst)
        throw VoInvalidCallException("The running " + displayName() + " does not answer");
    return *isFirst;
}

VoReceiver VoApplication::onArguments(ArgumentsCallback callback)
{
    return m_private->argumentsCallbacks.addCallback(std::move(callback));
}
