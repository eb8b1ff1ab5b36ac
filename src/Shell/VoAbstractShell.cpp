#include <Shell/VoAbstractShell.h>

#include <Shell/VoShell.h>

#include <mutex>

namespace {

struct Host
{
    std::mutex mutex;
    std::shared_ptr<VoAbstractShell> shell;
};

Host& TheHost()
{
    static Host* const host = new Host; // never destroyed
    return *host;
}

} // namespace

VoAbstractShell::~VoAbstractShell() = default;

std::shared_ptr<VoAbstractShell> VoAbstractShell::Current()
{
    {
        Host& host = TheHost();
        const std::lock_guard<std::mutex> lock(host.mutex);
        if (host.shell)
            return host.shell;
    }
    return std::make_shared<VoShell>();
}

void VoAbstractShell::SetHost(std::shared_ptr<VoAbstractShell> shell)
{
    Host& host = TheHost();
    const std::lock_guard<std::mutex> lock(host.mutex);
    host.shell.swap(shell); // the one before ends without the lock
}
