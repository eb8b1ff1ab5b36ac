#pragma once

#include <XML/VoXMLStreamElementReader.h>

#include <memory>
#include <utility>

/// The children of one element. Walks on the element's state: the element reader, and this range with it, may end at
/// the element's end tag, in the middle of a step.
class VoXMLStreamElementReader::StreamChildren : public Children, public std::enable_shared_from_this<StreamChildren>
{
public:
    StreamChildren(VoXMLStreamReader* parent, std::shared_ptr<vo::detail::XMLElementState> element)
        : m_parent(parent)
        , m_element(std::move(element))
    {
    }

    Iterator begin() override;
    Iterator end() override { return Iterator(nullptr); }

    std::shared_ptr<VoXMLStreamElementReader> next();

private:
    VoXMLStreamReader* m_parent;
    std::shared_ptr<vo::detail::XMLElementState> m_element;
    bool m_isUsed = false;
};
