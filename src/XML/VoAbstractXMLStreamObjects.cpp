#include <XML/VoAbstractXMLStreamLoaderObject.h>
#include <XML/VoAbstractXMLStreamReadWriteObject.h>
#include <XML/VoAbstractXMLStreamWriterObject.h>

VoAbstractXMLStreamWriterObject::~VoAbstractXMLStreamWriterObject() = default;

VoAbstractXMLStreamLoaderObject::~VoAbstractXMLStreamLoaderObject() = default;

VoAbstractXMLStreamReadWriteObject::~VoAbstractXMLStreamReadWriteObject() = default;

void VoAbstractXMLStreamReadWriteObject::write(VoXMLElementWriter& element) const
{
    writeAttributes(element);
    writeElements(element);
}

void VoAbstractXMLStreamReadWriteObject::writeAttributes(VoXMLElementWriter&) const {}

void VoAbstractXMLStreamReadWriteObject::writeElements(VoXMLElementWriter&) const {}
