#pragma once

#include <Core/VoVariant.h>

/// A value with a name. Names and texts compare without regard to case.
///
/// A value: copies copy, a moved-from property has an empty name and a Null value. Not synchronised.
class VOCORE_EXPORT VoProperty
{
public:
    VoProperty();                               ///< An empty name and a Null value.
    explicit VoProperty(VoString name);         ///< A name with a Null value.
    VoProperty(VoString name, VoVariant value); ///< Both; pass by std::move what is no longer needed.

    VoProperty(const VoProperty& other);                ///< Copies both.
    VoProperty(VoProperty&& other) noexcept;            ///< Takes both.
    VoProperty& operator=(const VoProperty& other);     ///< Copies both; unchanged when copying fails.
    VoProperty& operator=(VoProperty&& other) noexcept; ///< Takes both.
    virtual ~VoProperty();

    const VoString& name() const& noexcept { return m_name; }    ///< The name.
    VoString name() && noexcept { return std::move(m_name); }    ///< The name, out of a temporary.
    const VoVariant& value() const& noexcept { return m_value; } ///< The value.
    VoVariant value() && noexcept { return std::move(m_value); } ///< The value, out of a temporary.
    void setName(VoString name);                                 ///< Replaces the name.
    void setValue(VoVariant value);                              ///< Replaces the value.

    bool equalName(const VoProperty& other) const;  ///< Equal names.
    bool equalValue(const VoProperty& other) const; ///< Equal values, by VoVariant's ==.
    bool operator==(const VoProperty& other) const; ///< Equal names and values.
    bool operator!=(const VoProperty& other) const; ///< Another name or value.

    /// Writes the name, " = " and the value.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoProperty& property);

private:
    VoString m_name;
    VoVariant m_value;
};

/// Agrees with ==: names and texts hash without regard to case.
template <>
struct VOCORE_EXPORT std::hash<VoProperty>
{
    /// Of name and value.
    std::size_t operator()(const VoProperty& property) const noexcept;
};
