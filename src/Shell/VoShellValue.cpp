#include <Shell/VoShellValue.h>

#include <Application/detail/VariantText.h>
#include <Core/VoException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <Shell/detail/AlignedText.h>

#include <ostream>
#include <string>
#include <variant>
#include <vector>

struct VoShellValue::Private
{
    std::variant<VoVariant, VoDeque<VoVariant>, VoVariantTable> content; // in the order of the forms
};

namespace {

VoString TextOf(const VoVariant& value)
{
    if (value.isNull())
        return {};
    if (value.type() == VoVariant::FilePath)
        return VoString(vo::detail::ToNative(value.asFilePath()).u8string());
    return vo::detail::VariantText(value);
}

VoString TextOf(const VoDeque<VoVariant>& values)
{
    VoString text = "[";
    for (const VoVariant& value : values)
        text += (text.size() > 1 ? ", " : "") + TextOf(value);
    return text + "]";
}

VoString TextOf(const VoVariantTable& table)
{
    vo::detail::AlignedText text(table.numberColumns());
    table.forEach([&](std::size_t, std::size_t, const VoVariant& value) {
        const bool isNumber =
            value.type() == VoVariant::Integer || value.type() == VoVariant::Double || value.type() == VoVariant::Size;
        text.add(TextOf(value), isNumber);
    });
    return text.text();
}

} // namespace

VoShellValue::VoShellValue() noexcept = default;

VoShellValue::VoShellValue(VoVariant value)
    : m_private(value.isNull() ? nullptr : std::make_shared<const Private>(Private{std::move(value)}))
{
}

VoShellValue::VoShellValue(VoDeque<VoVariant> values)
    : m_private(std::make_shared<const Private>(Private{std::move(values)}))
{
}

VoShellValue::VoShellValue(VoVariantTable table)
    : m_private(std::make_shared<const Private>(Private{std::move(table)}))
{
}

VoShellValue::VoShellValue(const VoShellValue& other) noexcept = default;
VoShellValue::VoShellValue(VoShellValue&& other) noexcept = default;
VoShellValue& VoShellValue::operator=(const VoShellValue& other) noexcept = default;
VoShellValue& VoShellValue::operator=(VoShellValue&& other) noexcept = default;
VoShellValue::~VoShellValue() = default;

VoShellValue::Form VoShellValue::form() const noexcept
{
    return m_private ? static_cast<Form>(m_private->content.index()) : Form::Single;
}

bool VoShellValue::isNull() const noexcept
{
    return !m_private;
}

template <typename T>
const T& VoShellValue::held(Form wanted) const
{
    if (form() != wanted)
        throw VoInvalidCastException(FormText(form()), FormText(wanted));
    return std::get<T>(m_private->content);
}

const VoVariant& VoShellValue::variant() const&
{
    static const VoVariant* const null = new VoVariant; // never destroyed
    return isNull() ? *null : held<VoVariant>(Form::Single);
}

VoVariant VoShellValue::variant() const&&
{
    return variant();
}

const VoDeque<VoVariant>& VoShellValue::list() const&
{
    return held<VoDeque<VoVariant>>(Form::List);
}

VoDeque<VoVariant> VoShellValue::list() const&&
{
    return list();
}

const VoVariantTable& VoShellValue::table() const&
{
    return held<VoVariantTable>(Form::Table);
}

VoVariantTable VoShellValue::table() const&&
{
    return table();
}

VoString VoShellValue::toText() const
{
    if (isNull())
        return {};
    return std::visit([](const auto& content) { return TextOf(content); }, m_private->content);
}

bool VoShellValue::operator==(const VoShellValue& other) const
{
    if (isNull() || other.isNull())
        return isNull() == other.isNull();
    return m_private->content == other.m_private->content;
}

const char* VoShellValue::FormText(Form form) noexcept
{
    switch (form) {
    case Form::Single:
        return "Single";
    case Form::List:
        return "List";
    case Form::Table:
        return "Table";
    }
    return "Unknown";
}

std::ostream& operator<<(std::ostream& stream, const VoShellValue& value)
{
    return stream << value.toText();
}
