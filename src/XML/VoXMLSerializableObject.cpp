#include <XML/VoXMLSerializableObject.h>

VoXMLSerializableObject::~VoXMLSerializableObject() = default;

void VoXMLSerializableObject::writeXML(VoXMLElementWriter&) const {}

void VoXMLSerializableObject::writeXML(VoXMLStreamWriter&) const {}

void VoXMLSerializableObject::readXML(VoXMLElementReader&) {}
