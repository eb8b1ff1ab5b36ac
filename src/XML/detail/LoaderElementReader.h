#pragma once

#include <XML/VoStreamXMLElementReader.h>
#include <XML/VoXMLElementReader.h>

#include <memory>

namespace vo::detail {

/// An element of the rule-driven loader in the interface that typed values are read through. Like a stream's readers
/// its children can be walked once.
class LoaderElementReader : public VoXMLElementReader
{
public:
    explicit LoaderElementReader(VoStreamXMLElementReader element);
    ~LoaderElementReader() override;

    const VoXMLAttributeSet& attributes() const override;
    Children& children() override;
    bool hasAttribute(const VoString& name) const override;
    const VoString& name() const override;
    VoString readAttribute(const VoString& name) override;
    double readAttributeBase64(const VoString& name) const override;
    VoString readText() override;
    double readTextBase64() const override;

private:
    class Range;

    VoStreamXMLElementReader m_element;
    std::unique_ptr<Range> m_children;
};

} // namespace vo::detail
