#include <Updater/XMLObject.h>

namespace vo::updater {

XMLObject::~XMLObject() = default;

void XMLObject::writeAttributes(VoXMLElementWriter&) const {}

void XMLObject::writeElements(VoXMLElementWriter&) const {}

void XMLObject::write(VoXMLElementWriter& element) const
{
    writeAttributes(element);
    writeElements(element);
}

int XMLObject::typeCode() const
{
    return static_cast<int>(objectType());
}

} // namespace vo::updater
