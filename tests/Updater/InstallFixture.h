#pragma once

#include "UpdaterFixture.h"

#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoLocation.h>
#include <Links.h>
#include <Threading/VoStopFlag.h>
#include <Updater/InstalledPackages.h>
#include <Updater/PackageBuilder.h>
#include <Updater/PackageInstaller.h>
#include <Updater/UpdatePackageBuilder.h>
#include <Updater/VoInstallationFailedException.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/files/FileActions.h>

namespace vo::test {

using vo::updater::AbstractMessage;
using vo::updater::AbstractUpdateMessage;
using vo::updater::AdvertisedPackageListing;
using vo::updater::InstallationPlan;
using vo::updater::InstalledPackageListing;
using vo::updater::InstalledPackages;
using vo::updater::PackageInstaller;
using vo::updater::detail::FileStep;

/// Observes the steps on disk as long as it lives.
class StepWatch
{
public:
    explicit StepWatch(vo::updater::detail::StepObserver observer)
    {
        vo::updater::detail::SetStepObserver(std::move(observer));
    }
    ~StepWatch() { vo::updater::detail::SetStepObserver({}); }
    StepWatch(const StepWatch&) = delete;
    StepWatch& operator=(const StepWatch&) = delete;
};

/// @{ In these trees the content of a link is "-> " and where it leads, that of a program begins with "[x]", and
/// folders end with "/".
inline void WriteEntry(const std::filesystem::path& place, const std::string& content)
{
    namespace fs = std::filesystem;
    const bool isProgram = content.compare(0, 3, "[x]") == 0;
    fs::create_directories(place.filename().empty() ? place : place.parent_path());
    if (fs::is_symlink(place))
        fs::remove(place);
    if (content.compare(0, 3, "-> ") == 0)
        MakeLink(content.substr(3), place);
    else if (!place.filename().empty())
        std::ofstream(place, std::ios::binary) << content.substr(isProgram ? 3 : 0);
    if (isProgram)
        fs::permissions(place, fs::perms::owner_exec, fs::perm_options::add);
}

inline Files MarkedTreeOf(const std::filesystem::path& root)
{
    namespace fs = std::filesystem;
    Files files = TreeOf(root);
    for (auto& [name, content] : files) {
        const fs::path path = root / fs::u8path(name);
        if (fs::is_symlink(path))
            content = "-> " + fs::read_symlink(path).generic_string();
        else if (name.back() != '/' && (fs::status(path).permissions() & fs::perms::owner_exec) != fs::perms::none)
            content = "[x]" + content;
    }
    return files;
}
/// @}

/// Publishes releases of one package and installs them into a directory whose parents do not exist at first.
class InstallTest : public UpdaterTest
{
protected:
    InstallTest() { VoUpdater::OverrideUpdateSystemDirectory(updates()); }

    VoDirectoryPath updates() const { return directory("updates"); }
    VoDirectoryPath place() const { return directory("place").directory("of").directory("app"); }
    VoFilePath placed(const char* name) const { return place().appended(VoFilePath(name)); }
    VoFilePath declarations() const { return file("server/releases.xml"); }
    VoDirectoryPath staging() const { return updates().directory("download").directory(packageID.toString()); }
    VoFilePath listingPath() const { return InstalledPackages::InstalledPackageListingPath(packageID); }

    /// Publishes the files as the next release, with patches from so many others; the IDs of known targets are kept.
    VoFilePath publish(const char* version, const Files& files, std::uint64_t chunkSize = 40, std::size_t patched = 0)
    {
        using namespace vo::updater;
        std::unique_ptr<AbstractPackageBuilder> builder;
        if (m_last.isNull())
            builder = std::make_unique<PackageBuilder>(packageID, "Examples", parse(version), chunkSize, 6);
        else
            builder = std::make_unique<UpdatePackageBuilder>(*AdvertisedPackageListing::Open(m_last), parse(version),
                                                             chunkSize, 6);
        builder->makePatches(patched);
        return m_last = publish(*builder, files);
    }

    /// Publishes the files with a new ID for each of them.
    VoFilePath publishWithNewIDs(const char* version, const Files& files)
    {
        vo::updater::PackageBuilder builder(packageID, "Examples", parse(version), 40, 6);
        return publish(builder, files);
    }

    VoFilePath publish(vo::updater::AbstractPackageBuilder& builder, const Files& files)
    {
        const VoDirectoryPath source = sourceOf(builder.version().toString());
        for (const auto& [name, content] : files)
            WriteEntry(vo::detail::ToNative(source) / std::filesystem::u8path(name), content);
        builder.keepAttributes();
        builder.addByAge(source, declarations());
        builder.finalise(declarations());
        return declarations()
            .parent()
            .directory("packages")
            .directory(builder.packageID().toString())
            .directory(builder.version().toString())
            .file("package.xml");
    }

    VoDirectoryPath sourceOf(const VoString& version) const { return directory("source").directory(version); }

    void install(const VoFilePath& definition, const VoStopFlag& stop = VoStopFlag())
    {
        InstalledPackages::Install(definition, place(), stop, options);
    }

    /// What is installed, with the folders in which nothing lies.
    Files installedTree() const
    {
        Files result;
        const auto root = vo::detail::ToNative(place());
        for (auto& [name, content] : MarkedTreeOf(root)) {
            if (name.back() != '/' || std::filesystem::is_empty(root / std::filesystem::u8path(name)))
                result[name] = std::move(content);
        }
        return result;
    }

    /// Everything below "place" and the update directory: files with their content, directories with a "/" behind. But
    /// not what the system told of files, which is something else each time.
    Files snapshot() const
    {
        Files result;
        for (const char* top : {"place", "updates"}) {
            const auto root = vo::detail::ToNative(directory(top));
            if (!std::filesystem::exists(root))
                continue;
            result[std::string(top) + "/"];
            for (auto& [name, content] : MarkedTreeOf(root)) {
                if (VoString(name).endsWith(".seen"))
                    continue;
                result[top + ("/" + name)] = std::move(content);
            }
        }
        return result;
    }

    void wipe()
    {
        VoFileSystem::RemoveAll(directory("place"));
        VoFileSystem::RemoveAll(updates());
    }

    /// The steps that the work makes on disk.
    template <typename Work>
    static std::vector<FileStep> StepsOf(Work work)
    {
        std::vector<FileStep> steps;
        const StepWatch watch([&steps](FileStep step, const VoString&) { steps.push_back(step); });
        work();
        return steps;
    }

    static auto Count(const std::vector<FileStep>& steps, FileStep step)
    {
        return std::count(steps.begin(), steps.end(), step);
    }

    vo::updater::InstallationOptions options; // of install()
    const VoUUID packageID{VoString("a1b2-") + VoUpdater::GenerateID().toString()};

private:
    static VoVersion parse(const char* version) { return VoVersion::Deserialize(version); }

    VoFilePath m_last;
};

/// The messages of the registry while it lives.
class ReceivedMessages
{
public:
    ReceivedMessages()
        : m_receiver(InstalledPackages::Connect(
              [this](const VoSharedPtr<AbstractMessage>& message) { m_messages.push_back(message); }))
    {
    }

    /// The codes in order, each run of one code once.
    std::vector<int> codes() const
    {
        std::vector<int> result;
        for (const auto& message : m_messages)
            result.push_back(message->type());
        result.erase(std::unique(result.begin(), result.end()), result.end());
        return result;
    }

    /// The text of the first update message of a code.
    std::string text(int code) const
    {
        for (const auto& message : m_messages) {
            const auto* update = dynamic_cast<const AbstractUpdateMessage*>(message.get());
            if (message->type() == code && update)
                return update->message().toStdString();
        }
        return {};
    }

    const std::vector<VoSharedPtr<AbstractMessage>>& all() const { return m_messages; }

private:
    std::vector<VoSharedPtr<AbstractMessage>> m_messages;
    VoReceiver m_receiver;
};

} // namespace vo::test
