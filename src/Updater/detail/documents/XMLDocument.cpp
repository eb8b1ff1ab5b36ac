#include <Updater/detail/documents/XMLDocument.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileDevice.h>
#include <IO/VoStringDevice.h>
#include <Updater/XMLObject.h>
#include <Updater/detail/documents/Log.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamLoader.h>
#include <XML/VoXMLStreamWriter.h>

namespace vo::updater::detail {

namespace {

void LogFailure(const VoString& name, const VoString& text)
{
    Log().error(name + ": " + text);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> Load(VoXMLStreamLoader& loader, VoIODevice& device)
{
    loader.refuseDocumentTypes(); // no document of the updater has one
    return loader.load(device);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> Load(VoXMLStreamLoader& loader, const VoFilePath& path)
{
    VoFileDevice device(path);
    if (!device.open(VoIODevice::Read))
        throw VoCannotOpenFileException(device);
    return Load(loader, device);
}

template <typename Work>
auto Logged(const VoString& subject, Work work)
{
    try {
        return vo::detail::About(subject, work);
    } catch (...) {
        LogFailure(subject, CurrentExceptionText());
        throw;
    }
}

void WriteDocument(VoIODevice& device, const VoString& rootName, const XMLObject& root)
{
    VoXMLStreamWriter writer(device, VoXMLStreamWriter::AutoFormattingSettings(true));
    writer.startDocument();
    root.write(*writer.createElement(rootName));
    writer.finishDocument();
}

} // namespace

VoUniquePtr<VoAbstractXMLStreamLoaderObject> LoadDocument(VoXMLStreamLoader& loader, const VoFilePath& path,
                                                          const VoString& name)
{
    return Logged(name.isEmpty() ? path.path() : name, [&] { return Load(loader, path); });
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> ParseDocument(VoXMLStreamLoader& loader, const VoString& bytes,
                                                           const VoString& name)
{
    return Logged(name, [&] {
        VoStringDevice device(bytes);
        device.open(VoIODevice::Read);
        return Load(loader, device);
    });
}

VoString ReadDocument(const VoFilePath& path, std::uint64_t most)
{
    VoFileDevice device(path);
    if (!device.open(VoIODevice::Read))
        throw VoCannotOpenFileException(device);
    if (VoFileSystem::FileSize(path) > most)
        throw VoValidationException("Document larger than allowed: " + path.path());
    return device.readAll();
}

void WriteBytes(const VoFilePath& path, const VoString& bytes)
{
    VoAtomicFileWriter file(path);
    file.write(bytes.c_str(), bytes.size());
    file.commit();
}

void FailLoading(const VoString& name, const char* message)
{
    LogFailure(name, message);
    throw vo::detail::Completed(VoNullPointerException(message), name, "it is another kind of document");
}

void WriteDocument(const VoFilePath& path, const VoString& rootName, const XMLObject& root)
{
    VoAtomicFileWriter file(path);
    WriteDocument(file.device(), rootName, root);
    file.commit();
}

VoString DocumentText(const VoString& rootName, const XMLObject& root)
{
    VoStringDevice device;
    device.open(VoIODevice::Write);
    WriteDocument(device, rootName, root);
    return device.content();
}

void WriteChild(VoXMLElementWriter& parent, const VoString& name, const XMLObject& object)
{
    object.write(*parent.createElement(name));
}

} // namespace vo::updater::detail
