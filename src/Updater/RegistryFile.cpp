#include <Updater/RegistryFile.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <FileSystem/NativePath.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Subsystem/VoLogging.h>
#include <Updater/Attributes.h>
#include <Updater/Containment.h>
#include <Updater/FileActions.h>
#include <Updater/InstalledPackages.h>
#include <Updater/XMLDocument.h>
#include <XML/VoXMLStreamLoader.h>

#include <QtCore/QFile>
#include <QtCore/QLockFile>

#include <algorithm>
#include <string_view>

namespace vo::updater::detail {

namespace {

VoUniquePtr<InstalledPackages> Load(const VoFilePath& path)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::packages, Build<InstalledPackages>);
    return DynamicCast<InstalledPackages>(LoadDocument(loader, path));
}

// "<a document of ours>.tmp<letters>", as the atomic writer names what it has not committed.
bool IsTemporaryDocument(std::string_view name)
{
    constexpr std::string_view mark = ".tmp";
    const std::size_t start = name.rfind('.');
    if (start == std::string_view::npos || start == 0 || name.compare(start, mark.size(), mark) != 0)
        return false;
    const std::string_view document = name.substr(0, start);
    const auto endsWith = [document](std::string_view suffix) {
        return document.size() > suffix.size() && document.substr(document.size() - suffix.size()) == suffix;
    };
    return name.size() > start + mark.size() && (endsWith(".xml") || endsWith(".pending"));
}

} // namespace

VoUniquePtr<InstalledPackages> ReadRegistry(const VoFilePath& path)
{
    if (!VoFileSystem::Exists(path))
        return VoUniquePtr<InstalledPackages>::Make();
    VoString reason = "it is another document";
    try {
        if (VoUniquePtr<InstalledPackages> registry = Load(path))
            return registry;
    } catch (...) {
        reason = CurrentExceptionText();
    }
    vo::logging::Logger::Get("updater").error("Installed packages file cannot be read " + path.path() + ": " + reason);
    return {};
}

void EraseTemporaryDocuments(const VoDirectoryPath& directory)
{
    if (!VoFileSystem::IsDirectory(directory))
        return;
    VoFileSystem::ForEachFile(directory, false, false, [&directory](const VoFilePath& path) {
        if (IsTemporaryDocument(Bytes(path).substr(Bytes(directory).size())))
            EraseFile(path);
    });
}

struct ProcessLock::Private
{
    explicit Private(const QString& name)
        : file(name)
    {
    }

    QLockFile file;
};

ProcessLock::ProcessLock(const VoDirectoryPath& directory)
{
    VoFileSystem::CreateDirectory(directory, true);
    const VoFilePath path = directory.file("updates.lock");
    const auto native = vo::detail::ToNative(path).string();
    m_private = std::make_unique<Private>(QFile::decodeName(QByteArray(native.c_str())));
    QLockFile& file = m_private->file;
    // An installation may take hours; its lock never goes stale while its process lives.
    file.setStaleLockTime(0);
    if (file.tryLock(0))
        return;
    // A process that was killed while it made the file left it empty, so nothing tells that its owner is gone. The
    // system's own lock on the file, which only a living owner holds, still protects it from being taken over.
    qint64 owner = 0;
    QString host;
    QString application;
    if (file.error() == QLockFile::LockFailedError && !file.getLockInfo(&owner, &host, &application)) {
        file.setStaleLockTime(500);
        if (file.tryLock(1500))
            return;
    }
    if (file.error() == QLockFile::LockFailedError)
        throw VoFileLockedException(path.path());
    throw VoCannotOpenFileException(path);
}

ProcessLock::~ProcessLock() = default;

} // namespace vo::updater::detail
