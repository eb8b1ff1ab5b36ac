#include <XML/VoXMLTemplateFactory.h>

#include <Core/VoException.h>
#include <Core/VoXMLException.h>
#include <XML/VoXMLElementReader.h>

#include <map>

VoXMLTemplateFactory::CreationArgument::CreationArgument() = default;
VoXMLTemplateFactory::CreationArgument::CreationArgument(const CreationArgument& other) = default;
VoXMLTemplateFactory::CreationArgument&
VoXMLTemplateFactory::CreationArgument::operator=(const CreationArgument& other) = default;
VoXMLTemplateFactory::CreationArgument::~CreationArgument() = default;

struct VoXMLTemplateFactory::Private
{
    std::map<VoString, CreationFunction> functions;
    VoList<VoString> errors;
};

VoXMLTemplateFactory::VoXMLTemplateFactory()
    : m_private(std::make_unique<Private>())
{
}

VoXMLTemplateFactory::~VoXMLTemplateFactory() = default;

bool VoXMLTemplateFactory::isRegistered(const VoString& name) const
{
    return m_private->functions.count(name) > 0;
}

VoXMLSerializableObject* VoXMLTemplateFactory::create(VoXMLElementReader& element) const
{
    const CreationArgument argument;
    return create(element, &argument);
}

VoXMLSerializableObject* VoXMLTemplateFactory::create(VoXMLElementReader& element,
                                                      const CreationArgument* argument) const
{
    const auto found = m_private->functions.find(element.name());
    if (found == m_private->functions.end())
        throw VoUnknownXMLElementException(element.name());
    return found->second(element, argument);
}

const VoList<VoString>& VoXMLTemplateFactory::errors() const
{
    return m_private->errors;
}

void VoXMLTemplateFactory::registerClass(const VoString& name, CreationFunction function)
{
    if (!function)
        throw VoNullPointerException("Creation function is null");
    m_private->functions[name] = function;
}

void VoXMLTemplateFactory::addError(const VoException& exception)
{
    m_private->errors.pushBack(exception.message());
}
