#pragma once

#include <XML/VoXMLElementReader.h>

class VoXMLStreamReader;

namespace vo::detail {
struct XMLElementState;
}

/// Reads one element of a VoXMLStreamReader.
///
/// While its element is the innermost open one, text and children can be read. While a child given out earlier is open,
/// only name and attributes can; nextChild() first skips what is left of that child. Once the element has ended, name
/// and attributes stay readable for the rest of the reader's life.
class VOCORE_EXPORT VoXMLStreamElementReader : public VoXMLElementReader
{
public:
    /// Takes name and attributes of the reader's current token. A reader made this way counts as closed: those of open
    /// elements come from the VoXMLStreamReader.
    /// @throws VoNullPointerException "Invalid parent" for null
    explicit VoXMLStreamElementReader(VoXMLStreamReader* parent);
    VoXMLStreamElementReader(const VoXMLStreamElementReader&) = delete;
    VoXMLStreamElementReader& operator=(const VoXMLStreamElementReader&) = delete;
    ~VoXMLStreamElementReader() override; ///< Leaves the element open: the reader's position does not change.

    const VoXMLAttributeSet& attributes() const override;
    /// The children, for a single walk; incrementing throws VoInvalidXMLOperation as nextChild() does.
    Children& children() override;
    bool hasAttribute(const VoString& name) const override;
    const VoString& name() const override;
    VoString readAttribute(const VoString& name) override;
    double readAttributeBase64(const VoString& name) const override;
    /// @throws VoInvalidXMLOperation "Attempted to read text from non-active element" unless the element is the
    /// innermost open one
    VoString readText() override;
    double readTextBase64() const override; ///< Reads on as readText() does.

    /// The next child element; null at the end of this one, which is then closed.
    /// @throws VoInvalidXMLOperation "NextChild on closed element called"
    std::shared_ptr<VoXMLStreamElementReader> nextChild();

private:
    friend class VoXMLStreamReader;
    class StreamChildren;
    class StreamImplementation;

    VoXMLStreamElementReader(VoXMLStreamReader* parent, std::shared_ptr<vo::detail::XMLElementState> element);

    VoXMLStreamReader* m_parent;
    std::shared_ptr<vo::detail::XMLElementState> m_element;
    std::shared_ptr<StreamChildren> m_children; // made when first asked for; those of open elements need none
};
