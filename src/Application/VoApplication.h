#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Time/VoTimeDuration.h>
#include <Time/VoTimePoint.h>

#include <functional>
#include <memory>

class VoLayeredProperties;

/// Who an application is.
struct VOCORE_EXPORT VoApplicationInformation
{
    VoString name;           ///< For files, directories and sockets; a name as of VoValueDefinition::IsValidName().
    VoString displayName{};  ///< For people; empty: the name.
    VoVersion version{};     ///< The application's own version.
    VoString organisation{}; ///< Whose application it is, for directories; may be empty.
};

/// An option of the command line.
struct VOCORE_EXPORT VoCommandLineOption
{
    VoDeque<VoString> names; ///< Without dashes: "output" is given as --output, "o" as -o.
    VoString description{};  ///< For helpText().
    VoString valueName{};    ///< What the help calls the option's value; empty: the option has none.
    VoString defaultValue{}; ///< The value where the option is not given; empty: none.
};

/// The application: who it is, how it was started, where its files are, and how it ends.
///
///     int main(int argc, char** argv)
///     {
///         VoApplication application({"workbench", "Workbench", VoVersion(1, 2, 0, VoVersion::Release), "Acme"}, argc,
///                                   argv);
///         application.addOption({{"open", "o"}, "Opens a file", "file"});
///         application.parseCommandLine();
///         const VoReceiver saving = application.atQuit([&] { saveAll(); });
///         return application.exec();
///     }
///
/// There is one in a process. It works over the framework's application object, with or without windows, that is there
/// when it is made and that must outlive it; where there is none it makes one without windows. It is made and destroyed
/// on the thread of that object, which also runs exec(), parseCommandLine() and claimSingleInstance(); any thread may
/// call the other members.
///
/// It quits by quit(), when the framework's loop is left, by SIGTERM, SIGINT and SIGHUP (unless they were ignored when
/// the process was started), and by Ctrl-C and the closing of the console of Windows. The stop flag is raised first, so
/// that work can end; handlers then run on the application's thread when its loop has been left, or at the latest in
/// the destructor. A second signal of one kind ends the process at once.
class VOCORE_EXPORT VoApplication
{
public:
    /// The arguments are those of main(), the program's name first; their texts are UTF-8 (on Windows the system's own
    /// text is asked).
    /// @throws VoInvalidCallException "Application already exists"
    /// @throws VoInvalidParameterException "Invalid application name: " and the name
    VoApplication(const VoApplicationInformation& information, int argc, char** argv);
    /// As at quit(): runs the handlers where they have not run, stops the subsystems, saves the properties.
    ~VoApplication();
    VoApplication(const VoApplication&) = delete;
    VoApplication& operator=(const VoApplication&) = delete;

    /// The application of the process; null where there is none.
    static VoApplication* Instance() noexcept;
    /// The same.
    /// @throws VoInvalidCallException "No application object"
    static VoApplication& Get();

    /// @name Who it is
    /// @{
    const VoString& name() const noexcept;         ///< The name.
    const VoString& displayName() const noexcept;  ///< The name for people.
    const VoVersion& version() const noexcept;     ///< The version.
    const VoString& organisation() const noexcept; ///< The organisation.
    VoTimePoint startTime() const noexcept;        ///< When the object was made.
    /// @}

    /// @name Directories, which need not exist
    /// Where VOAPPDATAPATH is set, configuration and cache are "config" and "cache" in that directory.
    /// @{
    VoDirectoryPath dataDirectory() const;          ///< VoFileSystem::ApplicationData.
    VoDirectoryPath documentsDirectory() const;     ///< VoFileSystem::Documents.
    VoDirectoryPath configurationDirectory() const; ///< For settings of this user.
    VoDirectoryPath cacheDirectory() const;         ///< For what can be made again.
    VoDirectoryPath temporaryDirectory() const;     ///< VoFileSystem::TempDirectory().
    /// @}

    /// @name Command line
    /// There is always `--set NAME=VALUE`, which sets a property of this process and may be given several times.
    /// @{
    /// Makes an option known.
    /// @throws VoInvalidParameterException "Invalid option: " and its names, for names that are taken or no names
    void addOption(const VoCommandLineOption& option);
    /// Reads the command line.
    /// @throws VoInvalidParameterException with what is wrong, as "Unknown option 'x'.", "Invalid --set: " and the text
    /// for one that lacks "=", and as VoLayeredProperties::setOverride()
    void parseCommandLine();
    bool isSet(const VoString& option) const;               ///< Whether the option was given.
    VoString value(const VoString& option) const;           ///< The last value given, else the default.
    VoDeque<VoString> values(const VoString& option) const; ///< All values given, else the default.
    VoDeque<VoString> positionalArguments() const;          ///< What is no option, in order.
    VoDeque<VoString> arguments() const;                    ///< All arguments, without the program's name.
    VoString helpText() const;                              ///< Usage and options, for people.
    /// @}

    /// The application's properties: of the user in "properties.xml" in the configuration directory, of the machine in
    /// the same file where the system keeps configurations for all users. Read with the first call; saved at quit. The
    /// property "log", the text of a vo::logging::Configuration, is defined and has the variable VO_LOG.
    VoLayeredProperties& properties();

    /// @name The end
    /// @{
    /// Runs the framework's loop until quit() or the last window is closed, then the handlers. Returns the code for
    /// main(): that of quit(), or 128 and the signal's number.
    int exec();
    /// Raises the stop flag and leaves the framework's loop, also one that begins later. The first code counts.
    void quit(int exitCode = 0);
    /// Raised when the application is to end.
    VoStopFlag stopFlag() const;
    /// Calls `handler` once when the application quits, those that were added last first, unless the receiver has been
    /// destroyed before. What it throws is logged in the category "application", and the next is called.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver atQuit(std::function<void()> handler);
    /// @}

    /// @name One instance for each user
    /// @{
    /// Makes this process the only instance of the application for this user, until it ends, however it ends: true.
    /// Where another process is that already, hands it the arguments and the working directory: false; this process had
    /// better end then. That process must run its loop. Other users can neither see nor send what is handed over.
    /// @throws VoInvalidCallException "The running " + display name + " does not answer" when it has not answered
    /// within `patience`
    /// @throws VoInvalidParameterException "Command line too long to hand over" beyond a million bytes
    bool claimSingleInstance(const VoTimeDuration& patience = VoTimeDuration(VoSeconds(5)));
    /// Called with arguments, without the program's name, and a working directory.
    using ArgumentsCallback = std::function<void(const VoDeque<VoString>& arguments, const VoString& directory)>;
    /// Calls `callback`, on the application's thread, with what later starts hand over. What it throws is logged.
    /// @throws VoInvalidParameterException "Invalid callback" when it is empty
    [[nodiscard]] VoReceiver onArguments(ArgumentsCallback callback);
    /// @}

private:
    struct Private;

    void setUp(const VoApplicationInformation& information, int argc, char** argv);
    void runQuitHandlers() noexcept;

    std::unique_ptr<Private> m_private;
};

namespace vo::subsystem {

/// Makes the library's own services known to Registry::Global(), as every VoApplication does:
///
/// | subsystem | needs | starts |
/// |---|---|---|
/// | logging | | the configuration of the application's properties, without an application that of VO_LOG |
/// | download | logging | the download service, owned by the thread that starts it |
/// | updater | download | nothing more |
/// | application | logging | nothing; throws as VoApplication::Get() without an application |
///
/// Calling it again does nothing; any thread may. None of them must be started to be used: what works without still
/// does.
VOCORE_EXPORT void RegisterLibrary();

} // namespace vo::subsystem
