#include <XML/VoXMLElementWriter.h>

#include <Core/VoString.h>

VoXMLElementWriter::VoXMLElementWriter() = default;
VoXMLElementWriter::VoXMLElementWriter(const VoXMLElementWriter& other) = default;
VoXMLElementWriter& VoXMLElementWriter::operator=(const VoXMLElementWriter& other) = default;
VoXMLElementWriter::~VoXMLElementWriter() = default;

void VoXMLElementWriter::writeAttribute(const VoString& name, const VoString& value, const VoString& namespaceUri)
{
    onWriteAttribute(name, value, namespaceUri);
}

void VoXMLElementWriter::writeAttribute(const VoString& name, const VoString& value)
{
    onWriteAttribute(name, value);
}

void VoXMLElementWriter::writeText(const VoString& text)
{
    onWriteText(text);
}

void VoXMLElementWriter::writeAttributeBase64(const VoString& name, const double& value, const VoString& namespaceUri)
{
    onWriteAttribute(name, VoString::Base64(value), namespaceUri);
}

void VoXMLElementWriter::writeAttributeBase64(const VoString& name, const double& value)
{
    onWriteAttribute(name, VoString::Base64(value));
}

void VoXMLElementWriter::writeTextBase64(const double& value)
{
    onWriteText(VoString::Base64(value));
}
