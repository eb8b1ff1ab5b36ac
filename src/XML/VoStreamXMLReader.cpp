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
    : m_private(std::make_unique<Private>(XMLDevice(device, XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::VoStreamXMLReader(VoSharedPtr<VoIODevice> device, DocumentTypes documentTypes)
    : m_private(std::make_unique<Private>(XMLDevice(std::move(device), XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::VoStreamXMLReader(const VoFilePath& file, DocumentTypes documentTypes)
    : m_private(std::make_unique<Private>(XMLDevice(file, XMLDevice::Reading), documentTypes))
{
}

VoStreamXMLReader::~VoStreamXMLReader() = default;

std::optional<VoStreamXMLElementReader> VoStreamXMLReader::nextElement()
{
    if (!m_private->engine.nextStart())
        return std::nullopt;
    return currentElement();
}

VoStreamXMLElementReader VoStreamXMLReader::currentElement() const
{
    if (m_private->engine.stack().empty())
        throw VoNullXMLStreamElementException();
    return VoStreamXMLElementReader(m_private->engine.stack().back());
}

VoString VoStreamXMLReader::namespaceUri() const
{
    return VoString(m_private->engine.qt().namespaceUri().toString());
}

void VoStreamXMLReader::finish()
{
    m_private->engine.finish();
}

VoString VoStreamXMLReader::position() const
{
    return m_private->engine.position();
}
