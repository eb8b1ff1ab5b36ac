#include <Updater/detail/documents/XMLDocument.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/VoLogging.h>
#include <Updater/XMLObject.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamLoader.h>
#include <XML/VoXMLStreamWriter.h>

namespace vo::updater::detail {

namespace {

void LogFailure(const VoString& name, const VoString& text)
{
    vo::logging::Logger::Get("updater").error(name + ": " + text);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> Load(VoXMLStreamLoader& loader, const VoFilePath& path)
{
    VoFileDevice device(path);
    if (!device.open(VoIODevice::Read))
        throw VoCannotOpenFileException(device);
    loader.refuseDocumentTypes(); // no document of the updater has one
    return loader.load(device);
}

} // namespace

VoUniquePtr<VoAbstractXMLStreamLoaderObject> LoadDocument(VoXMLStreamLoader& loader, const VoFilePath& path,
                                                          const VoString& name)
{
    const VoString& subject = name.isEmpty() ? path.path() : name;
    try {
        return vo::detail::About(subject, [&] { return Load(loader, path); });
    } catch (...) {
        LogFailure(subject, CurrentExceptionText());
        throw;
    }
}

void FailLoading(const VoString& name, const char* message)
{
    LogFailure(name, message);
    throw vo::detail::Completed(VoNullPointerException(message), name, "it is another kind of document");
}

void WriteDocument(const VoFilePath& path, const VoString& rootName, const XMLObject& root)
{
    VoAtomicFileWriter file(path);
    VoXMLStreamWriter writer(file.device(), VoXMLStreamWriter::AutoFormattingSettings(true));
    writer.startDocument();
    root.write(*writer.createElement(rootName));
    writer.finishDocument();
    file.commit();
}

void WriteChild(VoXMLElementWriter& parent, const VoString& name, const XMLObject& object)
{
    object.write(*parent.createElement(name));
}

} // namespace vo::updater::detail
