#include <XML/detail/LoaderElementReader.h>

#include <Core/VoBase64.h>
#include <Core/VoException.h>
#include <Core/VoUniquePtr.h>

#include <utility>

namespace vo::detail {
namespace {

class Position : public VoXMLElementReader::Children::Iterator::Implementation
{
public:
    explicit Position(VoStreamXMLElementReader element)
        : m_element(std::move(element))
    {
        nextChild();
    }

    std::shared_ptr<VoXMLElementReader> currentChild() override { return m_child; }

    std::shared_ptr<VoXMLElementReader> nextChild() override
    {
        const VoUniquePtr<VoAbstractXMLElementReader> child = m_element.nextChild();
        m_child.reset();
        if (child) // a VoStreamXMLElementReader, as its nextChild promises
            m_child = std::make_shared<LoaderElementReader>(static_cast<const VoStreamXMLElementReader&>(*child));
        return m_child;
    }

private:
    VoStreamXMLElementReader m_element;
    std::shared_ptr<VoXMLElementReader> m_child;
};

} // namespace

class LoaderElementReader::Range : public Children
{
public:
    explicit Range(VoStreamXMLElementReader element)
        : m_element(std::move(element))
    {
    }

    Iterator begin() override
    {
        if (std::exchange(m_isUsed, true))
            throw VoInvalidUseException("Begin called multiple times on a single use iterator");
        return Iterator(std::make_shared<Position>(m_element));
    }

    Iterator end() override { return Iterator(nullptr); }

private:
    VoStreamXMLElementReader m_element;
    bool m_isUsed = false;
};

LoaderElementReader::LoaderElementReader(VoStreamXMLElementReader element)
    : m_element(std::move(element))
    , m_children(std::make_unique<Range>(m_element))
{
}

LoaderElementReader::~LoaderElementReader() = default;

const VoXMLAttributeSet& LoaderElementReader::attributes() const
{
    return m_element.attributes();
}

VoXMLElementReader::Children& LoaderElementReader::children()
{
    return *m_children;
}

bool LoaderElementReader::hasAttribute(const VoString& name) const
{
    return m_element.hasAttribute(name);
}

const VoString& LoaderElementReader::name() const
{
    return m_element.name();
}

VoString LoaderElementReader::readAttribute(const VoString& name)
{
    return m_element.readAttribute(name);
}

double LoaderElementReader::readAttributeBase64(const VoString& name) const
{
    return VoStringDoubleBase64Converter().convert(m_element.readAttribute(name));
}

VoString LoaderElementReader::readText()
{
    return m_element.readText();
}

double LoaderElementReader::readTextBase64() const
{
    VoStreamXMLElementReader sameElement = m_element;
    return VoStringDoubleBase64Converter().convert(sameElement.readText());
}

} // namespace vo::detail
