#include <Updater/detail/registry/RegistryFile.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/TemporaryName.h>
#include <Updater/detail/documents/Attributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/Containment.h>
#include <Updater/detail/files/FileActions.h>
#include <XML/VoXMLStreamLoader.h>

#include <algorithm>
#include <string_view>

namespace vo::updater::detail {

namespace {

VoUniquePtr<Registry> Load(const VoFilePath& path)
{
    VoXMLStreamLoader loader;
    loader.addGlobalRule(tag::Packages, Build<Registry>);
    return DynamicCast<Registry>(LoadDocument(loader, path, VoString()));
}

// Whether the atomic writer has begun it for a document of ours.
bool IsTemporaryDocument(std::string_view name, std::initializer_list<std::string_view> suffixes)
{
    const std::string_view document = vo::detail::SiblingOf(name);
    return std::any_of(suffixes.begin(), suffixes.end(), [document](std::string_view suffix) {
        return document.size() > suffix.size() && document.substr(document.size() - suffix.size()) == suffix;
    });
}

} // namespace

VoUniquePtr<Registry> ReadRegistry(const VoFilePath& path, VoString& whyNot)
{
    if (!VoFileSystem::Exists(path))
        return VoUniquePtr<Registry>::Make();
    whyNot = "it is another kind of document";
    try {
        if (VoUniquePtr<Registry> registry = Load(path))
            return registry;
    } catch (const VoException& exception) {
        whyNot = exception.reason().isEmpty() ? exception.message() : exception.reason();
    } catch (...) {
        whyNot = CurrentExceptionText();
    }
    Log().error("Installed packages file cannot be read " + path.path() + ": " + whyNot);
    return {};
}

bool WriteRegistry(const VoFilePath& path, const Registry& registry)
{
    try {
        AtStep(FileStep::WriteDocument, path.path());
        WriteDocument(path, tag::Packages, registry);
        return true;
    } catch (...) {
        Log().error("Installed packages file cannot be updated " + path.path() + ": " + CurrentExceptionText());
        return false;
    }
}

void EraseTemporaryDocuments(const VoDirectoryPath& directory, std::initializer_list<std::string_view> suffixes)
{
    if (!VoFileSystem::IsDirectory(directory))
        return;
    VoFileSystem::ForEachFile(directory, false, false, [&](const VoFilePath& path) {
        if (IsTemporaryDocument(Bytes(path).substr(Bytes(directory).size()), suffixes))
            EraseFile(path);
    });
}

ProcessLock::ProcessLock(const VoDirectoryPath& directory)
{
    VoFileSystem::CreateDirectory(directory, true);
    const VoFilePath path = directory.file("updates.lock");
    m_lock = std::make_unique<VoFileLock>(path);
    if (!m_lock->isHeld())
        throw VoFileLockedException(path.path());
}

ProcessLock::~ProcessLock() = default;

} // namespace vo::updater::detail
