#pragma once

#include <XML/VoXMLElementReader.h>

class QDomElement;

/// Reads one element of a DOM tree in the interface of the stream's element readers. Text can be read at any time and
/// any number of times; children are walked once, as those of a stream are, so that what reads a tree reads a stream
/// too. Another reader of the same element walks them again.
///
/// A tree from VoXMLDomDocument shows what the stream shows of the same document, but for the order of attributes,
/// which is that of their names. A tree that Qt's own loading made has lost texts of white space only.
class VOCORE_EXPORT VoXMLDomElementReader : public VoXMLElementReader
{
public:
    /// Reads an element of the caller's document, which shares its content; name and attributes are taken now.
    /// @throws VoNullDomElementException for a null element
    explicit VoXMLDomElementReader(const QDomElement& element);
    VoXMLDomElementReader(const VoXMLDomElementReader&) = delete;
    VoXMLDomElementReader& operator=(const VoXMLDomElementReader&) = delete;
    ~VoXMLDomElementReader() override; ///< Leaves the tree as it is.

    const VoXMLAttributeSet& attributes() const override;
    Children& children() override;
    bool hasAttribute(const VoString& name) const override;
    const VoString& name() const override;
    VoString readAttribute(const VoString& name) override;
    double readAttributeBase64(const VoString& name) const override;
    VoString readText() override;
    double readTextBase64() const override;

private:
    struct Private;
    class DomChildren;
    class DomImplementation;

    std::unique_ptr<Private> m_private;
};
