#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>

#include <functional>

/// What the rule-driven loader asks of an element: beside name, attributes and text its path from the root, and visits
/// to attributes and children.
class VOCORE_EXPORT VoAbstractXMLElementReader
{
public:
    /// Called with the name and the value of each attribute.
    using AttributeFunction = std::function<void(const VoString& name, const VoString& value)>;
    /// Called with each child element.
    using ChildFunction = std::function<void(VoAbstractXMLElementReader& child)>;

    virtual ~VoAbstractXMLElementReader(); ///< Readers are deleted through this base.

    virtual const VoString& name() const = 0; ///< The element's local name.
    virtual VoXMLPath path() const = 0;       ///< The names from the root down to this element.

    virtual bool hasAttribute(const VoString& name) const = 0; ///< True with an attribute of that name.
    /// The value of an attribute.
    /// @throws VoUnknownXMLAttributeException when there is none of that name
    virtual VoString readAttribute(const VoString& name) const = 0;
    /// The value of an attribute, or `defaultValue` when there is none of that name.
    virtual VoString readAttribute(const VoString& name, const VoString& defaultValue) const = 0;
    /// Visits all attributes in document order.
    virtual void forEachAttribute(const AttributeFunction& function) const = 0;

    /// The first run of text that lies directly in the element, without leading and trailing white space.
    virtual VoString readText() = 0;
    /// The next child element; empty at the end of this one.
    virtual VoUniquePtr<VoAbstractXMLElementReader> nextChild() = 0;
    /// Visits the children not read yet, in document order. What a visit leaves unread of its child is skipped.
    virtual void forEachChild(const ChildFunction& function) = 0;

protected:
    /// @name Only whole readers are made, copied and assigned
    /// @{
    VoAbstractXMLElementReader() = default;                                             ///< For derived classes.
    VoAbstractXMLElementReader(const VoAbstractXMLElementReader&) = default;            ///< For derived classes.
    VoAbstractXMLElementReader& operator=(const VoAbstractXMLElementReader&) = default; ///< For derived classes.
    /// @}
};
