#pragma once

#include <Core/VoDeque.h>
#include <Core/VoProperty.h>

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <memory>

/// An ordered set of properties, found by name without regard to case.
///
///     VoProperties settings{{"Width", 1}, {"Title", "Gain"}};
///     settings.add("WIDTH", 2);                    // replaces the value; the name stays "Width"
///     settings.value("width").asInteger();         // 2
///     settings.value("Height", 7);                 // 7, and still no such property
///
/// Sets are small: every lookup walks the properties in the order in which they were first added, and that order is
/// kept in documents.
///
/// A value: copies copy, a moved-from set is empty. Not synchronised.
class VOCORE_EXPORT VoProperties
{
public:
    using iterator = VoDeque<VoProperty>::iterator;             ///< Walks properties that may be changed.
    using const_iterator = VoDeque<VoProperty>::const_iterator; ///< Walks properties.

    VoProperties() noexcept;                                    ///< Empty.
    VoProperties(const VoProperty& property);                   ///< One property.
    VoProperties(VoProperty&& property);                        ///< One property.
    VoProperties(std::initializer_list<VoProperty> properties); ///< Each added in turn by add().

    /// Each added in turn, as by add(), but in time that grows with their number: for what is read from documents.
    explicit VoProperties(VoDeque<VoProperty> properties);

    VoProperties(const VoProperties& other);                ///< Copies all properties.
    VoProperties(VoProperties&& other) noexcept;            ///< `other` becomes empty.
    VoProperties& operator=(const VoProperties& other);     ///< Copies all properties; unchanged when that fails.
    VoProperties& operator=(VoProperties&& other) noexcept; ///< `other` becomes empty.
    virtual ~VoProperties();

    /// Replaces the value of the property of that name, which keeps its place and the case of its name, or appends the
    /// property.
    void add(VoProperty property);
    /// The same with a new property.
    void add(VoString name, VoVariant value);
    /// As add().
    VoProperties& operator<<(VoProperty property);

    /// @name Lookup
    /// References stay valid until the property is changed or the set cleared, assigned or destroyed.
    /// @{
    /// The property of that name.
    /// @throws VoNotFoundException (name) without one
    const VoProperty& get(const VoString& name) const;
    const VoProperty& getReference(const VoString& name) const; ///< As get().
    /// A copy of the property of that name, else a new property of the name and the default; the set does not change.
    VoProperty get(const VoString& name, const VoVariant& defaultValue) const;
    /// The value of that name.
    /// @throws VoNotFoundException (name) without one
    const VoVariant& value(const VoString& name) const;
    /// A copy of the value of that name, else the default.
    VoVariant value(const VoString& name, const VoVariant& defaultValue) const;
    bool hasProperty(const VoString& name) const; ///< Whether there is a property of that name.
    /// @}

    std::size_t size() const noexcept;                    ///< Number of properties.
    bool isEmpty() const noexcept { return size() == 0; } ///< True without properties.
    void clear() noexcept;                                ///< Removes all properties.

    /// @name Iteration, in the order of adding
    /// Nothing keeps a caller from giving two properties the same name here; lookups then find the first.
    /// @{
    iterator begin();                                                           ///< The first property.
    iterator end();                                                             ///< Behind the last property.
    const_iterator begin() const noexcept;                                      ///< The first property.
    const_iterator end() const noexcept;                                        ///< Behind the last property.
    void forEach(const std::function<void(VoProperty&)>& function);             ///< Calls for each property.
    void forEach(const std::function<void(const VoProperty&)>& function) const; ///< Calls for each property.
    /// @}

    bool operator==(const VoProperties& other) const; ///< Equal properties, position by position.
    bool operator!=(const VoProperties& other) const; ///< Another size, or some property differs.

    /// Writes "{", the properties as VoProperty writes them with ", " between, and "}".
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoProperties& properties);

private:
    struct Private;

    const VoProperty* find(const VoString& name) const;
    VoDeque<VoProperty>& own();
    const VoDeque<VoProperty>& properties() const noexcept;

    std::unique_ptr<Private> m_private; // null in a set that never had a property
};
