#pragma once

#include <Core/VoSharedPtr.h>
#include <XML/VoXMLAttribute.h>

#include <cstddef>
#include <vector>

namespace vo::detail {
class XMLAttributeCollector;
}

/// The attributes of one element, in document order, no two with the same name. Names are compared with regard to case.
class VOCORE_EXPORT VoXMLAttributeSet
{
public:
    using iterator = std::vector<VoXMLAttribute>::iterator;             ///< Walks the attributes in document order.
    using const_iterator = std::vector<VoXMLAttribute>::const_iterator; ///< The same for reading.

    VoXMLAttributeSet(); ///< No attributes.

    /// @name Copies and moves
    /// @{
    VoXMLAttributeSet(const VoXMLAttributeSet& other);                ///< The same attributes.
    VoXMLAttributeSet(VoXMLAttributeSet&& other) noexcept;            ///< Leaves `other` empty.
    VoXMLAttributeSet& operator=(const VoXMLAttributeSet& other);     ///< Leaves this set as it was when it throws.
    VoXMLAttributeSet& operator=(VoXMLAttributeSet&& other) noexcept; ///< Leaves `other` empty.
    ~VoXMLAttributeSet();                                             ///< Nothing but memory to release.
    /// @}

    /// Appends an attribute, or replaces the value of the one that has its name, in its place.
    void addAttribute(const VoString& name, const VoString& value);
    void addAttribute(const VoXMLAttribute& attribute); ///< The same with a ready attribute.
    void removeAttribute(const VoString& name);         ///< Removes the attribute of that name, if there is one.

    /// The attribute of that name.
    /// @throws VoUnknownXMLAttributeException when there is none
    const VoXMLAttribute& get(const VoString& name) const;
    /// The value of the attribute of that name.
    /// @throws VoUnknownXMLAttributeException when there is none
    const VoString& readAttribute(const VoString& name) const;
    /// The value of the attribute of that name, or `defaultValue` when there is none.
    VoString readAttribute(const VoString& name, const VoString& defaultValue) const;
    bool hasAttribute(const VoString& name) const; ///< True with an attribute of that name.
    std::size_t size() const;                      ///< Number of attributes.
    bool isEmpty() const;                          ///< True without attributes.

    iterator begin();             ///< First attribute. A changed name must not equal another one.
    iterator end();               ///< Behind the last attribute.
    const_iterator begin() const; ///< First attribute.
    const_iterator end() const;   ///< Behind the last attribute.

    bool operator==(const VoXMLAttributeSet& other) const; ///< Same attributes in the same order.
    bool operator!=(const VoXMLAttributeSet& other) const; ///< Other attributes or another order.

private:
    friend class vo::detail::XMLAttributeCollector;

    const VoXMLAttribute* find(const VoString& name) const;

    std::vector<VoXMLAttribute> m_attributes;
};

/// Shares a VoXMLAttributeSet. Dereferencing an empty one throws VoNullPointerException.
class VOCORE_EXPORT VoXMLAttributeSetPtr
{
public:
    VoXMLAttributeSetPtr();                                   ///< Empty.
    explicit VoXMLAttributeSetPtr(VoXMLAttributeSet* set);    ///< Adopts the set.
    VoXMLAttributeSetPtr(VoSharedPtr<VoXMLAttributeSet> set); ///< Shares the set.

    /// @name Copies and moves
    /// @{
    VoXMLAttributeSetPtr(const VoXMLAttributeSetPtr& other);                ///< Shares the same set.
    VoXMLAttributeSetPtr(VoXMLAttributeSetPtr&& other) noexcept;            ///< Leaves `other` empty.
    VoXMLAttributeSetPtr& operator=(const VoXMLAttributeSetPtr& other);     ///< Shares the same set.
    VoXMLAttributeSetPtr& operator=(VoXMLAttributeSetPtr&& other) noexcept; ///< Leaves `other` empty.
    ~VoXMLAttributeSetPtr();                                                ///< Gives up this share.
    /// @}

    VoXMLAttributeSet* get() const;        ///< The set or null; not checked.
    explicit operator bool() const;        ///< True with a set.
    VoXMLAttributeSet* operator->() const; ///< The set; checked.
    VoXMLAttributeSet& operator*() const;  ///< The set; checked.

    VoXMLAttributeSet::iterator begin() const; ///< First attribute of the set; checked.
    VoXMLAttributeSet::iterator end() const;   ///< Behind the last attribute of the set; checked.

private:
    VoSharedPtr<VoXMLAttributeSet> m_set;
};
