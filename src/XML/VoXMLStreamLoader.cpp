#include <XML/VoXMLStreamLoader.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <Subsystem/VoLogging.h>
#include <XML/VoStreamXMLReader.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamElementLoader.h>
#include <XML/detail/XMLPathOrder.h>

#include <map>
#include <string_view>
#include <utility>

struct VoXMLStreamLoader::Private
{
    const Builder* find(const VoString& name, std::string_view path) const;

    // Nodes stay where they are, so a rule may add rules while it runs.
    std::map<VoString, Builder> globalRules;
    std::map<VoXMLPath, Builder, vo::detail::XMLPathOrder> specificRules;
    VoStreamXMLReader::DocumentTypes documentTypes = VoStreamXMLReader::DocumentTypes::Accept;
};

const VoXMLStreamLoader::Builder* VoXMLStreamLoader::Private::find(const VoString& name, std::string_view path) const
{
    const auto specific = specificRules.find(path);
    if (specific != specificRules.end())
        return &specific->second;
    const auto global = globalRules.find(name);
    return global == globalRules.end() ? nullptr : &global->second;
}

VoXMLStreamLoader::VoXMLStreamLoader()
    : m_private(std::make_shared<Private>())
{
}

VoXMLStreamLoader::VoXMLStreamLoader(const VoXMLStreamLoader& other) = default;
VoXMLStreamLoader::VoXMLStreamLoader(VoXMLStreamLoader&& other) noexcept = default;
VoXMLStreamLoader& VoXMLStreamLoader::operator=(const VoXMLStreamLoader& other) = default;
VoXMLStreamLoader& VoXMLStreamLoader::operator=(VoXMLStreamLoader&& other) noexcept = default;
VoXMLStreamLoader::~VoXMLStreamLoader() = default;

VoXMLStreamLoader::Private& VoXMLStreamLoader::rules()
{
    if (!m_private)
        m_private = std::make_shared<Private>(); // moved from
    return *m_private;
}

void VoXMLStreamLoader::addGlobalRule(const VoString& name, Builder builder)
{
    if (!rules().globalRules.emplace(name, std::move(builder)).second)
        throw VoInvalidParameterException("Global rule with the given name already exists: " + name);
}

void VoXMLStreamLoader::addSpecificRule(const VoXMLPath& path, Builder builder)
{
    if (!rules().specificRules.emplace(path, std::move(builder)).second)
        throw VoInvalidParameterException("Specific rule with the given path already exists: " + path.toString());
}

VoXMLStreamLoader::Builder VoXMLStreamLoader::rule(VoAbstractXMLElementReader& element) const
{
    if (!m_private)
        return {};
    const VoXMLPath path = element.path();
    const Builder* builder = m_private->find(element.name(), path.toString().toStdString());
    return builder ? *builder : Builder();
}

const VoXMLStreamLoader::Builder* VoXMLStreamLoader::find(const VoStreamXMLElementReader& element) const
{
    const Builder* builder = m_private ? m_private->find(element.name(), element.openPath()) : nullptr;
    return builder && *builder ? builder : nullptr;
}

void VoXMLStreamLoader::refuseDocumentTypes()
{
    rules().documentTypes = VoStreamXMLReader::DocumentTypes::Refuse;
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> VoXMLStreamLoader::load(VoIODevice& device) const
{
    VoStreamXMLReader reader(device, m_private ? m_private->documentTypes : VoStreamXMLReader::DocumentTypes::Accept);
    return load(reader);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> VoXMLStreamLoader::load(const VoFilePath& file) const
{
    VoStreamXMLReader reader(file, m_private ? m_private->documentTypes : VoStreamXMLReader::DocumentTypes::Accept);
    return load(reader);
}

VoUniquePtr<VoAbstractXMLStreamLoaderObject> VoXMLStreamLoader::load(VoStreamXMLReader& reader) const
{
    const VoXMLStreamLoader loader(*this); // keeps the rules while they run
    std::optional<VoStreamXMLElementReader> root = reader.nextElement();
    if (!root)
        throw VoInvalidXMLException();
    const Builder* builder = loader.find(*root);
    if (!builder)
        return {};
    try {
        auto object = (*builder)(VoXMLStreamElementLoader(*std::move(root), loader));
        reader.finish();
        return object;
    } catch (...) {
        vo::logging::Logger::Get("xml").diagnostic("Loading failed at " + reader.position() + ": " +
                                                   vo::CurrentExceptionText());
        throw;
    }
}
