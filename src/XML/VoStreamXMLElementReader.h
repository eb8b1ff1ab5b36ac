#pragma once

#include <XML/VoAbstractXMLElementReader.h>

#include <cstddef>
#include <memory>
#include <string_view>

class VoXMLAttributeSet;

namespace vo::detail {
struct XMLElementState;
}

/// Reads one element of a VoStreamXMLReader; the readers that the rule-driven loader works with.
///
/// A handle: copies refer to the same element. Text and children can be read while the element is the innermost open
/// one; with a child still open, the next step to another child skips what is left of it. Name, path and attributes
/// stay readable after the element, and even the reader, has ended. A moved-from handle is an unnamed closed element.
class VOCORE_EXPORT VoStreamXMLElementReader : public VoAbstractXMLElementReader
{
public:
    VoStreamXMLElementReader(); ///< An unnamed closed element.
    /// @name Copies and moves
    /// @{
    VoStreamXMLElementReader(const VoStreamXMLElementReader& other);                ///< The same element.
    VoStreamXMLElementReader(VoStreamXMLElementReader&& other) noexcept;            ///< Leaves `other` closed.
    VoStreamXMLElementReader& operator=(const VoStreamXMLElementReader& other);     ///< The same element.
    VoStreamXMLElementReader& operator=(VoStreamXMLElementReader&& other) noexcept; ///< Leaves `other` closed.
    ~VoStreamXMLElementReader() override; ///< Leaves the element open: the reader's position does not change.
    /// @}

    const VoString& name() const override;
    VoXMLPath path() const override;
    bool isOpen() const;   ///< True until the element's end tag has been read, or the reader has gone.
    bool isActive() const; ///< True while this is the innermost open element.

    const VoXMLAttributeSet& attributes() const; ///< All attributes, in document order.
    bool hasAttribute(const VoString& name) const override;
    VoString readAttribute(const VoString& name) const override;
    VoString readAttribute(const VoString& name, const VoString& defaultValue) const override;
    void forEachAttribute(const AttributeFunction& function) const override;

    /// @throws VoInvalidXMLOperation "Cannot read text from inactive element" unless this is the innermost open element
    VoString readText() override;
    /// The object is a VoStreamXMLElementReader.
    /// @throws VoInvalidXMLOperation "NextChild on closed element called"
    VoUniquePtr<VoAbstractXMLElementReader> nextChild() override;
    /// Each child is a VoStreamXMLElementReader, which the function may copy or move from. Throws as nextChild() does,
    /// except that an element whose own end was reached by this reader merely has no more children.
    void forEachChild(const ChildFunction& function) override;

private:
    friend class VoStreamXMLReader;
    friend class VoXMLStreamElementLoader;
    friend class VoXMLStreamLoader;

    explicit VoStreamXMLElementReader(std::shared_ptr<vo::detail::XMLElementState> element);

    const std::shared_ptr<vo::detail::XMLElementState>& element() const;
    std::string_view openPath() const; // of an open element
    std::size_t depth() const;

    std::shared_ptr<vo::detail::XMLElementState> m_element;
};
