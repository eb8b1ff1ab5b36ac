#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoVariant.h>

#include <cstddef>
#include <functional>
#include <memory>

/// One cell of a VoDataTable row: values stacked on one another, over one or more columns.
///
/// A value: copies copy, a moved-from item has no values and spans one column. Not synchronised.
class VOCORE_EXPORT VoDataTableItem
{
public:
    VoDataTableItem() noexcept; ///< No values, one column.
    /// @name One value, or several, over so many columns; a span of 0 counts as 1
    /// @{
    VoDataTableItem(const VoVariant& value, std::size_t columnSpan = 1);           ///< One value.
    VoDataTableItem(VoVariant&& value, std::size_t columnSpan = 1);                ///< One value.
    VoDataTableItem(const VoDeque<VoVariant>& values, std::size_t columnSpan = 1); ///< Stacked values, top to bottom.
    VoDataTableItem(VoDeque<VoVariant>&& values, std::size_t columnSpan = 1);      ///< Stacked values, top to bottom.
    /// @}

    VoDataTableItem(const VoDataTableItem& other);                ///< Copies the values.
    VoDataTableItem(VoDataTableItem&& other) noexcept;            ///< Takes the values.
    VoDataTableItem& operator=(const VoDataTableItem& other);     ///< Copies the values; unchanged when that fails.
    VoDataTableItem& operator=(VoDataTableItem&& other) noexcept; ///< Takes the values.
    ~VoDataTableItem();

    /// The single value.
    /// @throws VoInvalidCallException "Cannot get value from data table, number of items equals: " and the number of
    /// values, when that is not 1
    const VoVariant& value() const;
    const VoDeque<VoVariant>& values() const noexcept;               ///< All values, top to bottom.
    std::size_t numberValues() const noexcept;                       ///< Number of values.
    std::size_t columnSpan() const noexcept { return m_columnSpan; } ///< Columns covered, 1 or more.

    void set(const VoVariant& value);      ///< Replaces all values by one.
    void set(VoVariant&& value);           ///< Replaces all values by one.
    void set(VoDeque<VoVariant>&& values); ///< Replaces all values.

    /// Calls the function for each value, top to bottom.
    void forEachValue(const std::function<void(const VoVariant&)>& function) const;

    bool operator==(const VoDataTableItem& other) const; ///< Equal values and spans.
    bool operator!=(const VoDataTableItem& other) const; ///< Other values or another span.

private:
    struct Private;

    std::unique_ptr<Private> m_private; // null in an item that never had a value
    std::size_t m_columnSpan = 1;
};
