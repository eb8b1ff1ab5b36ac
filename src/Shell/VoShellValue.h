#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Documents/VoVariantTable.h>

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <type_traits>
#include <utility>

/// What functions of the command shell take and give: a variant, a list of variants, or a table.
///
/// A value that does not change: copies share their content. A moved-from one is the Null variant.
class VOCORE_EXPORT VoShellValue
{
public:
    /// What it is.
    enum class Form : std::int32_t
    {
        Single, ///< A variant, perhaps Null.
        List,   ///< Any number of variants, of any kinds.
        Table   ///< Rows and columns of variants.
    };

    VoShellValue() noexcept;                 ///< The Null variant.
    VoShellValue(VoVariant value);           ///< A variant.
    VoShellValue(VoDeque<VoVariant> values); ///< A list.
    VoShellValue(VoVariantTable table);      ///< A table.
    /// A variant, of what makes one.
    template <typename T,
              std::enable_if_t<std::is_constructible_v<VoVariant, T&&> && !std::is_same_v<std::decay_t<T>, VoVariant> &&
                                   !std::is_same_v<std::decay_t<T>, VoShellValue>,
                               int> = 0>
    VoShellValue(T&& value)
        : VoShellValue(VoVariant(std::forward<T>(value)))
    {
    }

    VoShellValue(const VoShellValue& other) noexcept;            ///< Shares the content.
    VoShellValue(VoShellValue&& other) noexcept;                 ///< `other` becomes Null.
    VoShellValue& operator=(const VoShellValue& other) noexcept; ///< Shares the content.
    VoShellValue& operator=(VoShellValue&& other) noexcept;      ///< `other` becomes Null.
    ~VoShellValue();

    Form form() const noexcept;   ///< What it is.
    bool isNull() const noexcept; ///< Whether it is the Null variant.

    /// @name Content
    /// @throws VoInvalidCastException(form, wanted form), such as "Invalid cast from Table to Single"
    /// @{
    const VoVariant& variant() const&;       ///< Of a Single.
    VoVariant variant() const&&;             ///< Of a Single.
    const VoDeque<VoVariant>& list() const&; ///< Of a List.
    VoDeque<VoVariant> list() const&&;       ///< Of a List.
    const VoVariantTable& table() const&;    ///< Of a Table.
    VoVariantTable table() const&&;          ///< Of a Table.
    /// @}

    /// For people, and for texts into which the shell puts values: numbers with every digit, paths as this system
    /// writes them, a list as "[1, 2]", a table in lines of aligned columns, each but the last with "\n" at its end.
    /// Null is empty.
    VoString toText() const;

    bool operator==(const VoShellValue& other) const; ///< Same form, equal content; texts as VoVariant compares them.
    bool operator!=(const VoShellValue& other) const { return !(*this == other); } ///< Another form or content.

    /// The name of a form, as "Table".
    static const char* FormText(Form form) noexcept;

    /// Writes toText().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoShellValue& value);

private:
    struct Private;

    template <typename T>
    const T& held(Form wanted) const;

    std::shared_ptr<const Private> m_private; // null in the Null variant
};
