#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUniquePtr.h>
#include <XML/VoAbstractXMLStreamLoaderObject.h>
#include <XML/VoStreamXMLElementReader.h>
#include <XML/VoXMLPath.h>
#include <XML/VoXMLStreamLoader.h>

#include <functional>
#include <memory>

/// The element that a rule of a VoXMLStreamLoader builds from. A rule reads the attributes, then either the text or the
/// children, which processChildren() builds by the same loader's rules.
///
/// A rule may keep its element loader: name, path and attributes stay readable; text and children fail with
/// VoInvalidXMLOperation once the element has ended. A moved-from loader is an unnamed closed element.
class VOCORE_EXPORT VoXMLStreamElementLoader
{
public:
    /// Called with the name and the value of each attribute.
    using AttributeFunction = std::function<void(const VoString& name, const VoString& value)>;
    /// Takes the object built from one child; empty when the rule returned none.
    using ObjectFunction = std::function<void(VoUniquePtr<VoAbstractXMLStreamLoaderObject> object)>;
    /// Takes one child that has no rule.
    using UnhandledFunction = std::function<void(VoXMLStreamElementLoader& element)>;

    /// For the loader.
    /// @throws VoStackLimitException for an element more than 1000 levels deep
    VoXMLStreamElementLoader(VoStreamXMLElementReader element, VoXMLStreamLoader loader);
    VoXMLStreamElementLoader(VoXMLStreamElementLoader&& other) noexcept;            ///< Leaves `other` closed.
    VoXMLStreamElementLoader& operator=(VoXMLStreamElementLoader&& other) noexcept; ///< Leaves `other` closed.
    ~VoXMLStreamElementLoader(); ///< Leaves the element open: what is unread of it is skipped by its parent.

    const VoString& name() const; ///< The element's local name.
    VoXMLPath path() const;       ///< The names from the root down to this element.

    /// The first run of text that lies directly in the element, without leading and trailing white space.
    /// @throws VoInvalidXMLOperation "Cannot read text from inactive element" after the children were processed
    VoString text();
    /// The value of an attribute.
    /// @throws VoUnknownXMLAttributeException when there is none of that name
    VoString attribute(const VoString& name) const;
    /// The value of an attribute, or `defaultValue` when there is none of that name.
    VoString attribute(const VoString& name, const VoString& defaultValue) const;
    bool hasAttribute(const VoString& name) const;                  ///< True with an attribute of that name.
    void forEachAttribute(const AttributeFunction& function) const; ///< Visits all attributes in document order.

    /// This element for code that reads values through VoXMLElementReader, such as VoXMLObject<T>::Read(). It is the
    /// same element: what is read there is gone here.
    std::unique_ptr<VoXMLElementReader> reader() const;

    /// Goes through the children in document order. One with a rule is built and goes to `onObject`, one without goes
    /// to
    /// `onUnhandled`; where that function is empty the child is skipped. Exceptions of rules and functions propagate
    /// unchanged; the children behind the failed one can still be processed by another call.
    /// @throws VoInvalidXMLOperation "NextChild on closed element called"
    /// @throws VoStackLimitException for a child more than 1000 levels deep
    void processChildren(const ObjectFunction& onObject, const UnhandledFunction& onUnhandled);
    void processChildren(const ObjectFunction& onObject);       ///< Skips the children without a rule.
    void processChildren(const UnhandledFunction& onUnhandled); ///< Skips the children with a rule, building nothing.

private:
    VoStreamXMLElementReader m_element;
    VoXMLStreamLoader m_loader;
};
