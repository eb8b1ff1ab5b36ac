#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>

#include <iosfwd>
#include <memory>

namespace vo::detail {
class XMLAttributeCollector;
}

/// Name and value of one attribute of an XML element.
class VOCORE_EXPORT VoXMLAttribute
{
public:
    VoXMLAttribute();                              ///< Empty name and value.
    VoXMLAttribute(VoString name, VoString value); ///< Takes both.

    /// @name Copies and moves
    /// @{
    VoXMLAttribute(const VoXMLAttribute& other);                ///< The same attribute.
    VoXMLAttribute(VoXMLAttribute&& other) noexcept;            ///< Leaves `other` empty.
    VoXMLAttribute& operator=(const VoXMLAttribute& other);     ///< Leaves this one as it was when it throws.
    VoXMLAttribute& operator=(VoXMLAttribute&& other) noexcept; ///< Leaves `other` empty.
    ~VoXMLAttribute();                                          ///< Nothing but memory to release.
    /// @}

    const VoString& name() const;         ///< The name.
    const VoString& value() const;        ///< The value, unescaped.
    void setName(const VoString& name);   ///< Changes the name.
    void setValue(const VoString& value); ///< Changes the value.

    bool operator==(const VoXMLAttribute& other) const; ///< Same name and value, case included.
    bool operator!=(const VoXMLAttribute& other) const; ///< Another name or value, case included.

private:
    friend class vo::detail::XMLAttributeCollector;

    VoXMLAttribute(std::shared_ptr<const VoString> name, VoString value) noexcept;

    // Shared, since documents repeat a few names on all their elements; null for the empty one.
    std::shared_ptr<const VoString> m_name;
    VoString m_value;
};

/// Writes name="value", without escaping.
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoXMLAttribute& attribute);
