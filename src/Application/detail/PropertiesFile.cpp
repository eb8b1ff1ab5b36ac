#include <Application/detail/PropertiesFile.h>

#include <Application/detail/VariantText.h>
#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoProperty.h>
#include <Core/VoXMLException.h>
#include <Core/detail/UTF8.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileDevice.h>
#include <IO/VoStringDevice.h>
#include <XML/VoXMLDomDocument.h>
#include <XML/VoXMLDomElementReader.h>
#include <XML/VoXMLObject.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtXml/QDomElement>

#include <chrono>
#include <utility>
#include <vector>

namespace vo::detail {

namespace {

constexpr char RootName[] = "Properties";
constexpr std::size_t LargestFile = 16 * 1024 * 1024;
constexpr std::chrono::seconds CoarsestFileTime(2); // of the volumes that are in use

std::vector<VoString> TextsOf(const VoVariant& value)
{
    switch (value.type()) {
    case VoVariant::String:
        return {value.asString()};
    case VoVariant::FilePath:
        return {value.asFilePath().path()};
    case VoVariant::StringPair:
        return {value.asStringPair().first, value.asStringPair().second};
    case VoVariant::FilePathPair:
        return {value.asFilePathPair().first.path(), value.asFilePathPair().second.path()};
    default:
        return {};
    }
}

VoVariant FromTexts(VoVariant::Type type, std::vector<VoString> texts)
{
    const auto path = [&](std::size_t i) { return VoFilePath::CreateUnchecked(std::move(texts[i])); };
    const bool isPair = type == VoVariant::StringPair || type == VoVariant::FilePathPair;
    if (texts.size() != (isPair ? 2u : 1u))
        throw VoInvalidConversionException("Base64", VoVariant::TypeString(type));
    switch (type) {
    case VoVariant::String:
        return std::move(texts[0]);
    case VoVariant::FilePath:
        return path(0);
    case VoVariant::StringPair:
        return VoPair<VoString, VoString>(texts[0], texts[1]);
    case VoVariant::FilePathPair:
        return VoPair<VoFilePath, VoFilePath>(path(0), path(1));
    default:
        throw VoInvalidConversionException("Base64", VoVariant::TypeString(type));
    }
}

// Whether typed XML gives the text back as it is.
bool IsPlain(const VoString& text)
{
    return IsXMLText(text) && ValidUTF8Prefix(text.toStdString()) == text.size() &&
           text.toStdString().find('\r') == std::string::npos && VoString(text.trimmed()).size() == text.size();
}

bool IsPlain(const VoVariant& value)
{
    for (const VoString& text : TextsOf(value)) {
        const bool isPath = value.type() == VoVariant::FilePath || value.type() == VoVariant::FilePathPair;
        if (!IsPlain(text) || (isPath && VoFilePath(text).path().toStdString() != text.toStdString()))
            return false;
    }
    return true;
}

VoString Encoded(const VoVariant& value)
{
    QByteArray encoded;
    for (const VoString& text : TextsOf(value)) {
        const QByteArray bytes(text.c_str(), static_cast<int>(text.size()));
        encoded += (encoded.isNull() ? QByteArray("") : QByteArray(",")) + bytes.toBase64();
    }
    return VoString(encoded.toStdString());
}

VoVariant Decoded(const VoString& text, VoVariant::Type type)
{
    std::vector<VoString> texts;
    for (const QByteArray& piece : QByteArray::fromStdString(text.toStdString()).split(',')) {
        const auto bytes = QByteArray::fromBase64Encoding(piece, QByteArray::AbortOnBase64DecodingErrors);
        if (!bytes)
            throw VoInvalidConversionException(text, "Base64");
        texts.emplace_back(bytes.decoded.toStdString());
    }
    return FromTexts(type, std::move(texts));
}

void WriteProperty(VoXMLElementWriter& element, const VoProperty& property)
{
    if (IsPlain(property.value())) {
        VoXMLObject<VoProperty>::Write(element, property);
        return;
    }
    element.writeAttribute("encoding", "base64");
    element.writeAttribute("kind", VoVariant::TypeString(property.value().type()));
    VoXMLObject<VoProperty>::Write(element, VoProperty(property.name(), Encoded(property.value())));
}

VoProperty ReadProperty(VoXMLElementReader& element)
{
    const bool isEncoded = element.hasAttribute("encoding");
    const VoString kind = isEncoded ? element.readAttribute("kind") : VoString();
    VoProperty property = VoXMLObject<VoProperty>::Read(element);
    if (isEncoded)
        property.setValue(Decoded(property.value().asString(), VoVariant::StringType(kind)));
    return property;
}

} // namespace

VoString PropertiesText(const ValueMap& values)
{
    VoStringDevice device;
    VoXMLStreamWriter writer(device, true);
    writer.startDocument();
    {
        const auto root = writer.createElement(RootName);
        writer.writeNamespace(VoXMLTypesNamespace(), "vo");
        for (const auto& [name, value] : values)
            WriteProperty(*root->createElement("Property", VoXMLTypesNamespace()), VoProperty(name, value));
    }
    writer.finishDocument();
    return device.content();
}

ValueMap PropertiesFromText(const VoString& text)
{
    VoStringDevice device(text);
    VoXMLDomDocument document;
    document.load(device);
    VoXMLDomElementReader root(document.root());
    if (root.name() != RootName)
        throw VoUnknownXMLElementException(root.name());
    ValueMap values;
    for (const auto& child : root.children()) {
        if (child->name() != "Property")
            continue;
        VoProperty property = ReadProperty(*child);
        values[property.name()] = property.value();
    }
    return values;
}

PropertiesFile::PropertiesFile(VoFilePath path)
    : m_path(std::move(path))
{
}

bool PropertiesFile::mayHaveChanged() const
{
    return !m_path.isNull() && (!m_stamp.isOld || !(stamp() == m_stamp));
}

// A file that cannot be looked at counts as changed: reading it tells why.
PropertiesFile::Stamp PropertiesFile::stamp() const
{
    Stamp stamp;
    std::error_code error;
    const std::filesystem::path path = ToNative(m_path);
    stamp.time = std::filesystem::last_write_time(path, error);
    stamp.exists = !error;
    if (MeansMissing(error)) {
        stamp.isOld = true;
        return stamp;
    }
    stamp.size = std::filesystem::file_size(path, error);
    stamp.isOld = !error && stamp.time + CoarsestFileTime < std::filesystem::file_time_type::clock::now();
    return stamp;
}

VoString PropertiesFile::content() const
{
    if (VoFileSystem::FileSize(m_path) > LargestFile)
        throw VoValidationException("Damaged properties: " + m_path.path());
    VoFileDevice file(m_path);
    if (!file.open(VoIODevice::Read))
        throw VoCannotOpenFileException(file);
    return file.readAll();
}

bool PropertiesFile::read()
{
    if (m_path.isNull())
        return false;
    const Stamp stamp = this->stamp(); // before the content: what changes between the two is read again
    ValueMap values;
    if (stamp.exists || !stamp.isOld) {
        const VoString text = content();
        try {
            values = PropertiesFromText(text);
        } catch (const VoException& failure) {
            VoValidationException damaged("Damaged properties: " + m_path.path());
            damaged.complete(m_path.path(), failure.message());
            throw damaged;
        }
    }
    m_values.swap(values);
    m_stamp = stamp;
    return values != m_values;
}

VoFilePath PropertiesFile::moveAside()
{
    VoFilePath aside(m_path.path() + ".damaged");
    for (int number = 2; VoFileSystem::Exists(aside); ++number)
        aside = VoFilePath(m_path.path() + ".damaged-" + VoString(number));
    VoFileSystem::MoveFile(m_path, aside);
    return aside;
}

void PropertiesFile::write(const ValueMap& values)
{
    const VoString text = PropertiesText(values);
    VoAtomicFileWriter writer(m_path);
    writer.write(text.c_str(), text.size());
    writer.commit();
    m_values = values;
    m_stamp = Stamp(); // read again: another process may have replaced it by the time its stamp is taken
}

} // namespace vo::detail
