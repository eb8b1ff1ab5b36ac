#include <Updater/XMLDocument.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/VoLogging.h>
#include <Updater/XMLObject.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamLoader.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/VoXMLStreamWriter.h>

namespace vo::updater::detail {

namespace {

// No document of the updater has a document type; entities are the means of most attacks on XML parsers. Only what
// stands before the root element is read.
void RequireNoDocumentType(VoIODevice& device)
{
    VoXMLStreamReader reader(device);
    for (;;) {
        switch (reader.next()) {
        case VoXMLStreamReader::DTD:
            throw VoInvalidXMLException("Document type declarations are not allowed");
        case VoXMLStreamReader::StartElement:
        case VoXMLStreamReader::EndDocument:
            return;
        default:
            break;
        }
    }
}

void LogFailure(const VoFilePath& path, const VoString& text)
{
    vo::logging::Logger::Get("updater").error(path.toString() + ": " + text);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> Load(VoXMLStreamLoader& loader, const VoFilePath& path)
{
    VoFileDevice device(path);
    if (!device.open(VoIODevice::Read))
        throw VoCannotOpenFileException(device);
    RequireNoDocumentType(device);
    device.restart();
    return loader.load(device);
}

} // namespace

VoUniquePtr<VoAbstractXMLStreamLoaderObject> LoadDocument(VoXMLStreamLoader& loader, const VoFilePath& path)
{
    try {
        return Load(loader, path);
    } catch (...) {
        LogFailure(path, CurrentExceptionText());
        throw;
    }
}

void FailLoading(const VoFilePath& path, const char* message)
{
    LogFailure(path, message);
    throw VoNullPointerException(message);
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
