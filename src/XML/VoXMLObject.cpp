#include <XML/VoXMLObject.h>

#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoPoint.h>
#include <Core/VoPointD.h>
#include <Core/VoProperties.h>
#include <Core/VoStringConverter.h>
#include <Core/VoUUID.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <Time/VoDateTime.h>
#include <XML/detail/XMLNamespaceBase.h>
#include <XML/detail/XMLTypeNames.h>

#include <charconv>
#include <cstddef>
#include <optional>
#include <system_error>
#include <utility>

using vo::detail::WriteTypedChild;
using vo::detail::XMLTypeNames;

const XMLTypeNames& XMLTypeNames::Get()
{
    static const auto* const names = new XMLTypeNames;
    return *names;
}

const VoString& VoXMLTypesNamespace()
{
    static const auto* const uri =
        new VoString(VoString(vo::detail::XMLNamespaceBase) + "/schemas/application/votypes/");
    return *uri;
}

namespace {

template <typename T>
void WriteItems(VoXMLElementWriter& element, const VoString& name, const T& items)
{
    for (const auto& item : items)
        WriteTypedChild(element, name, item);
}

template <typename T>
VoDeque<T> ReadItems(VoXMLElementReader& element)
{
    const VoString& name = XMLTypeNames::Get().item;
    VoDeque<T> items;
    for (const auto& child : element.children()) {
        if (child->name() == name)
            items.pushBack(VoXMLObject<T>::Read(*child));
    }
    return items;
}

template <typename A, typename B>
void WriteTwo(VoXMLElementWriter& element, const VoString& firstName, const A& first, const VoString& secondName,
              const B& second)
{
    WriteTypedChild(element, firstName, first);
    WriteTypedChild(element, secondName, second);
}

// Children pass by once and may come in any order.
template <typename Result, typename A, typename B>
Result ReadTwo(VoXMLElementReader& element, const VoString& firstName, const VoString& secondName)
{
    std::optional<A> first;
    std::optional<B> second;
    for (const auto& child : element.children()) {
        if (!first && child->name() == firstName)
            first = VoXMLObject<A>::Read(*child);
        else if (!second && child->name() == secondName)
            second = VoXMLObject<B>::Read(*child);
    }
    if (!first || !second)
        throw VoNullXMLStreamElementException();
    return Result(std::move(*first), std::move(*second));
}

template <typename T>
void WritePair(VoXMLElementWriter& element, const VoPair<T, T>& pair)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    WriteTwo(element, names.first, pair.first, names.second, pair.second);
}

template <typename T>
VoPair<T, T> ReadPair(VoXMLElementReader& element)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    return ReadTwo<VoPair<T, T>, T, T>(element, names.first, names.second);
}

// The names of the kinds, as strings, in the order of their numbers.
const VoString& KindName(VoVariant::Type type)
{
    static const auto* const names = [] {
        auto* all = new VoDeque<VoString>;
        for (int kind = VoVariant::Null; kind <= VoVariant::StringPair; ++kind)
            all->pushBack(VoVariant::TypeString(static_cast<VoVariant::Type>(kind)));
        return all;
    }();
    return (*names)[static_cast<std::size_t>(type)];
}

VoVariant ReadKind(VoVariant::Type type, VoXMLElementReader& element)
{
    switch (type) {
    case VoVariant::Boolean:
        return VoXMLObject<bool>::Read(element);
    case VoVariant::FilePath:
        return VoXMLObject<VoFilePath>::Read(element);
    case VoVariant::FilePathPair:
        return VoXMLObject<VoPair<VoFilePath, VoFilePath>>::Read(element);
    case VoVariant::Integer:
        return VoXMLObject<int>::Read(element);
    case VoVariant::Double:
        return VoXMLObject<double>::Read(element);
    case VoVariant::Size:
        return VoXMLObject<std::size_t>::Read(element);
    case VoVariant::String:
        return VoXMLObject<VoString>::Read(element);
    case VoVariant::StringPair:
        return VoXMLObject<VoPair<VoString, VoString>>::Read(element);
    case VoVariant::Null:
        break;
    }
    throw VoUnknownXMLElementException(element.name());
}

} // namespace

void VoXMLObject<bool>::Write(VoXMLElementWriter& element, const bool& value)
{
    element.writeText(value ? "true" : "false");
}

bool VoXMLObject<bool>::Read(VoXMLElementReader& element)
{
    const VoString text = element.readText();
    if (text == "true")
        return true;
    if (text == "false")
        return false;
    throw VoInvalidConversionException(text, "Boolean");
}

void VoXMLObject<int>::Write(VoXMLElementWriter& element, const int& value)
{
    element.writeText(VoString(value));
}

int VoXMLObject<int>::Read(VoXMLElementReader& element)
{
    const VoString text = element.readText();
    if (!text.isInteger())
        throw VoInvalidConversionException(text, "Integer");
    return text.toInt();
}

void VoXMLObject<std::size_t>::Write(VoXMLElementWriter& element, const std::size_t& value)
{
    element.writeText(VoString(value));
}

std::size_t VoXMLObject<std::size_t>::Read(VoXMLElementReader& element)
{
    const VoString text = element.readText();
    const std::string& digits = text.toStdString();
    std::size_t value = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size())
        throw VoInvalidConversionException(text, "Size");
    return value;
}

void VoXMLObject<double>::Write(VoXMLElementWriter& element, const double& value)
{
    element.writeTextBase64(value);
}

double VoXMLObject<double>::Read(VoXMLElementReader& element)
{
    return element.readTextBase64();
}

void VoXMLObject<VoString>::Write(VoXMLElementWriter& element, const VoString& value)
{
    element.writeText(value);
}

VoString VoXMLObject<VoString>::Read(VoXMLElementReader& element)
{
    return element.readText();
}

void VoXMLObject<VoFilePath>::Write(VoXMLElementWriter& element, const VoFilePath& value)
{
    element.writeText(value.path());
}

VoFilePath VoXMLObject<VoFilePath>::Read(VoXMLElementReader& element)
{
    return VoFilePath(element.readText());
}

void VoXMLObject<VoUUID>::Write(VoXMLElementWriter& element, const VoUUID& value)
{
    element.writeText(value.toString());
}

VoUUID VoXMLObject<VoUUID>::Read(VoXMLElementReader& element)
{
    return VoUUID(element.readText());
}

void VoXMLObject<VoTimeDuration>::Write(VoXMLElementWriter& element, const VoTimeDuration& value)
{
    element.writeText(VoStringLongLongConverter().convert(static_cast<long long>(value.count())));
}

VoTimeDuration VoXMLObject<VoTimeDuration>::Read(VoXMLElementReader& element)
{
    return VoNanoseconds(VoStringLongLongConverter().convert(element.readText()));
}

void VoXMLObject<VoTimePoint>::Write(VoXMLElementWriter& element, const VoTimePoint& value)
{
    VoXMLObject<VoTimeDuration>::Write(element, value.timeSinceEpoch());
}

VoTimePoint VoXMLObject<VoTimePoint>::Read(VoXMLElementReader& element)
{
    return VoTimePoint(VoXMLObject<VoTimeDuration>::Read(element));
}

void VoXMLObject<VoDateTime>::Write(VoXMLElementWriter& element, const VoDateTime& value)
{
    element.writeAttribute(XMLTypeNames::Get().representation, value.isUtc() ? "utc" : "local");
    element.writeText(value.toString());
}

VoDateTime VoXMLObject<VoDateTime>::Read(VoXMLElementReader& element)
{
    const VoString representation = element.readAttribute(XMLTypeNames::Get().representation);
    const bool isUtc = representation == "utc";
    if (!isUtc && representation != "local")
        throw VoInvalidConversionException(representation, "VoDateTime");
    const VoDateTime instant = VoDateTime::Deserialize(element.readText());
    if (isUtc)
        return instant.toUtc();
    return instant.isUtc() ? instant.toLocal() : instant; // a named zone stays
}

// A member of the date, defined here because time knows nothing of XML.
VoUniquePtr<VoDateTime> VoDateTime::XMLLoader(VoXMLElementReader& element)
{
    return VoUniquePtr<VoDateTime>::Make(VoXMLObject<VoDateTime>::Read(element));
}

void VoXMLObject<VoPair<VoString, VoString>>::Write(VoXMLElementWriter& element,
                                                    const VoPair<VoString, VoString>& value)
{
    WritePair(element, value);
}

VoPair<VoString, VoString> VoXMLObject<VoPair<VoString, VoString>>::Read(VoXMLElementReader& element)
{
    return ReadPair<VoString>(element);
}

void VoXMLObject<VoPair<VoFilePath, VoFilePath>>::Write(VoXMLElementWriter& element,
                                                        const VoPair<VoFilePath, VoFilePath>& value)
{
    WritePair(element, value);
}

VoPair<VoFilePath, VoFilePath> VoXMLObject<VoPair<VoFilePath, VoFilePath>>::Read(VoXMLElementReader& element)
{
    return ReadPair<VoFilePath>(element);
}

void VoXMLObject<VoDeque<int>>::Write(VoXMLElementWriter& element, const VoDeque<int>& value)
{
    WriteItems(element, XMLTypeNames::Get().item, value);
}

VoDeque<int> VoXMLObject<VoDeque<int>>::Read(VoXMLElementReader& element)
{
    return ReadItems<int>(element);
}

void VoXMLObject<VoDeque<double>>::Write(VoXMLElementWriter& element, const VoDeque<double>& value)
{
    WriteItems(element, XMLTypeNames::Get().item, value);
}

VoDeque<double> VoXMLObject<VoDeque<double>>::Read(VoXMLElementReader& element)
{
    return ReadItems<double>(element);
}

void VoXMLObject<VoDeque<VoString>>::Write(VoXMLElementWriter& element, const VoDeque<VoString>& value)
{
    WriteItems(element, XMLTypeNames::Get().item, value);
}

VoDeque<VoString> VoXMLObject<VoDeque<VoString>>::Read(VoXMLElementReader& element)
{
    return ReadItems<VoString>(element);
}

void VoXMLObject<VoPoint>::Write(VoXMLElementWriter& element, const VoPoint& value)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    WriteTwo(element, names.x, value.x, names.y, value.y);
}

VoPoint VoXMLObject<VoPoint>::Read(VoXMLElementReader& element)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    return ReadTwo<VoPoint, int, int>(element, names.x, names.y);
}

void VoXMLObject<VoPointD>::Write(VoXMLElementWriter& element, const VoPointD& value)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    WriteTwo(element, names.x, value.x, names.y, value.y);
}

VoPointD VoXMLObject<VoPointD>::Read(VoXMLElementReader& element)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    return ReadTwo<VoPointD, double, double>(element, names.x, names.y);
}

void VoXMLObject<VoProperty>::Write(VoXMLElementWriter& element, const VoProperty& value)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    WriteTwo(element, names.name, value.name(), names.value, value.value());
}

VoProperty VoXMLObject<VoProperty>::Read(VoXMLElementReader& element)
{
    const XMLTypeNames& names = XMLTypeNames::Get();
    return ReadTwo<VoProperty, VoString, VoVariant>(element, names.name, names.value);
}

void VoXMLObject<VoProperties>::Write(VoXMLElementWriter& element, const VoProperties& value)
{
    WriteItems(element, XMLTypeNames::Get().property, value);
}

VoProperties VoXMLObject<VoProperties>::Read(VoXMLElementReader& element)
{
    const VoString& name = XMLTypeNames::Get().property;
    VoDeque<VoProperty> properties;
    for (const auto& child : element.children()) {
        if (child->name() == name)
            properties.pushBack(VoXMLObject<VoProperty>::Read(*child));
    }
    return VoProperties(std::move(properties));
}

void VoXMLObject<VoVariant>::Write(VoXMLElementWriter& element, const VoVariant& value)
{
    const auto write = [&](const auto& held) { WriteTypedChild(element, KindName(value.type()), held); };
    switch (value.type()) {
    case VoVariant::Null:
        return;
    case VoVariant::Boolean:
        return write(value.asBoolean());
    case VoVariant::FilePath:
        return write(value.asFilePath());
    case VoVariant::FilePathPair:
        return write(value.asFilePathPair());
    case VoVariant::Integer:
        return write(value.asInteger());
    case VoVariant::Double:
        return write(value.asDouble());
    case VoVariant::Size:
        return write(value.asSize());
    case VoVariant::String:
        return write(value.asString());
    case VoVariant::StringPair:
        return write(value.asStringPair());
    }
}

VoVariant VoXMLObject<VoVariant>::Read(VoXMLElementReader& element)
{
    auto& children = element.children();
    const auto child = children.begin();
    if (child == children.end())
        return VoVariant();
    const auto kind = *child;
    return ReadKind(VoVariant::StringType(kind->name()), *kind);
}
