#include <Application/VoApplication.h>
#include <Application/VoLayeredProperties.h>
#include <Core/VoProperties.h>
#include <Download/VoDownloadManager.h>
#include <Subsystem/LogConfiguration.h>
#include <Subsystem/Registry.h>

#include <mutex>

namespace vo::subsystem {

namespace {

void StartLogging()
{
    VoApplication* const application = VoApplication::Instance();
    logging::Configure(application ? logging::Configuration::FromProperties(application->properties().properties())
                                   : logging::Configuration::FromEnvironment());
}

void StopLogging()
{
    logging::Configure({});
}

void StartDownloads()
{
    VoDownloadManager::Get();
}

void RequireApplication()
{
    VoApplication::Get();
}

} // namespace

void RegisterLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Registry& registry = Registry::Global();
        registry.add({"logging", {}, StartLogging, StopLogging});
        registry.add({"download", {"logging"}, StartDownloads, {}});
        registry.add({"updater", {"download"}, {}, {}});
        registry.add({"application", {"logging"}, RequireApplication, {}});
    });
}

} // namespace vo::subsystem
