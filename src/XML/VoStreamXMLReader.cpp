#include <XML/VoStreamXMLReader.h>

#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <XML/detail/XMLReadEngine.h>

#include <utility>

using vo::detail::XMLDevice;
using vo::detail::XMLReadEngine;

struct VoStreamXMLReader::Private
{
    Private(XMLDevice device, DocumentTypes documentTypes)
        : engine(std::move(device))
    {
        if (documentTypes == DocumentTypes::Refuse)
            engine.refuseDocumentTypes();
    }

    XMLReadEngine engine;
};

VoStreamXMLReader::VoStreamXMLReader(VoIODevice& device, DocumentTypes documentTypes)
    : d(std::make_unique<Private>(XMLDevice(device, XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::VoStreamXMLReader(VoSharedPtr<VoIODevice> device, DocumentTypes documentTypes)
    : d(std::make_unique<Private>(XMLDevice(std::move(device), XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::VoStreamXMLReader(const VoFilePath& file, DocumentTypes documentTypes)
    : d(std::make_unique<Private>(XMLDevice(file, XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::~VoStreamXMLReader() = default;

std::optional<VoStreamXMLElementReader> VoStreamXMLReader::nextElement()
{
    if (!d->engine.nextStart())
        return std::nullopt;
    return currentElement();
}

VoStreamXMLElementReader VoStreamXMLReader::currentElement() const
{
    if (d->engine.stack().empty())
        throw VoNullXMLStreamElementException();
    return VoStreamXMLElementReader(d->engine.stack().back());
}

VoString VoStreamXMLReader::namespaceUri() const
{
    return VoString(d->engine.qt().namespaceUri().toString());
}

void VoStreamXMLReader::finish()
{
    d->engine.finish();
}

VoString VoStreamXMLReader::position() const
{
    return d->engine.position();
}
