#include <XML/VoXMLFactory.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoXMLException.h>
#include <FileSystem/VoFilePath.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamElementReader.h>
#include <XML/VoXMLStreamReader.h>
#include <XML/detail/XMLLimits.h>

#include <map>
#include <utility>

namespace {

struct Entry
{
    VoXMLFactory::Builder builder;
    VoXMLFactory::PostConstruction postConstruction; // may be empty
};

using Entries = std::map<VoXMLPath, Entry>;

// One build of one element and its descendants.
class Build
{
public:
    Build(VoXMLStreamReader& reader, const Entries& entries)
        : m_reader(reader)
        , m_entries(entries)
    {
    }

    VoSharedPtr<VoXMLSerializableObject> element(const std::shared_ptr<VoXMLStreamElementReader>& element,
                                                 const VoXMLPath& path)
    {
        if (m_levels == vo::detail::MaximumXMLLevels)
            throw VoStackLimitException();
        const auto entry = m_entries.find(path);
        if (entry == m_entries.end())
            throw VoUnknownXMLElementException(path.toString());
        VoSharedPtr<VoXMLSerializableObject> object = entry->second.builder(*element);
        ++m_levels;
        children(*element, path);
        --m_levels;
        if (entry->second.postConstruction)
            entry->second.postConstruction(object);
        return object;
    }

private:
    // A builder that asked for a text that is not there, or for the children, has read the element to its end.
    void children(VoXMLStreamElementReader& parent, const VoXMLPath& path)
    {
        while (m_reader.isValid(&parent)) {
            if (const std::shared_ptr<VoXMLStreamElementReader> child = parent.nextChild())
                element(child, path.pushed(child->name()));
        }
    }

    VoXMLStreamReader& m_reader;
    const Entries& m_entries;
    std::size_t m_levels = 0;
};

VoSharedPtr<VoXMLSerializableObject> LoadWhole(const VoXMLFactory& factory, VoXMLStreamReader& reader)
{
    VoSharedPtr<VoXMLSerializableObject> root = factory.load(reader);
    while (reader.next() != VoXMLStreamReader::EndDocument) {
    }
    return root;
}

} // namespace

struct VoXMLFactory::Private
{
    Entries entries;
};

VoXMLFactory::VoXMLFactory()
    : m_private(std::make_unique<Private>())
{
}

VoXMLFactory::~VoXMLFactory() = default;

void VoXMLFactory::registerBuilder(const VoXMLPath& path, Builder builder)
{
    registerBuilder(path, std::move(builder), PostConstruction());
}

void VoXMLFactory::registerBuilder(const VoXMLPath& path, Builder builder, PostConstruction postConstruction)
{
    if (!builder)
        throw VoInvalidParameterException("Builder is empty");
    if (!m_private->entries.emplace(path, Entry{std::move(builder), std::move(postConstruction)}).second)
        throw VoInvalidUseException("Builder for given path already exists: " + path.toString());
}

void VoXMLFactory::changePostConstruction(const VoXMLPath& path, PostConstruction postConstruction)
{
    const auto entry = m_private->entries.find(path);
    if (entry == m_private->entries.end())
        throw VoUnknownXMLElementException(path.toString());
    entry->second.postConstruction = std::move(postConstruction);
}

VoSharedPtr<VoXMLSerializableObject> VoXMLFactory::load(VoXMLStreamReader& reader) const
{
    const bool isAtStartTag = reader.tokenType() == VoXMLStreamReader::StartElement;
    const std::shared_ptr<VoXMLStreamElementReader> root =
        isAtStartTag ? reader.currentElement() : reader.nextElement();
    if (!root)
        throw VoNullXMLStreamElementException();
    return Build(reader, m_private->entries).element(root, root->name());
}

VoSharedPtr<VoXMLSerializableObject> VoXMLFactory::load(const VoFilePath& file) const
{
    VoXMLStreamReader reader(file);
    return LoadWhole(*this, reader);
}

VoSharedPtr<VoXMLSerializableObject> VoXMLFactory::load(const VoFilePath& file, const VoFilePath& schema) const
{
    VoXMLStreamReader reader(file, schema);
    return LoadWhole(*this, reader);
}
