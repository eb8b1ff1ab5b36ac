#include <Core/VoVariant.h>

#include <FileSystem/VoFilePath.h>

#include <ostream>
#include <variant>

namespace {

using StringPairValue = VoPair<VoString, VoString>;
using FilePathPairValue = VoPair<VoFilePath, VoFilePath>;
// In the order of the kinds, so that a kind is the index of its alternative.
using Value = std::variant<std::monostate, bool, VoFilePath, FilePathPairValue, int, double, std::size_t, VoString,
                           StringPairValue>;

template <VoVariant::Type type>
using ValueOf = std::variant_alternative_t<static_cast<std::size_t>(type), Value>;

static_assert(std::is_same_v<ValueOf<VoVariant::FilePathPair>, FilePathPairValue>);
static_assert(std::is_same_v<ValueOf<VoVariant::Integer>, int>);
static_assert(std::is_same_v<ValueOf<VoVariant::StringPair>, StringPairValue>);
static_assert(std::variant_size_v<Value> == VoVariant::StringPair + 1);

constexpr const char* TypeNames[] = {"Null",   "Boolean", "FilePath", "FilePathPair", "Integer",
                                     "Double", "Size",    "String",   "StringPair"};

template <typename T>
int Compare(const T& left, const T& right)
{
    if (left == right)
        return 0;
    return left < right ? -1 : 1;
}

int Compare(std::monostate, std::monostate)
{
    return 0;
}

VoString Text(std::monostate)
{
    return "null";
}

VoString Text(bool value)
{
    return value ? "true" : "false";
}

VoString Text(int value)
{
    return VoString(value);
}

VoString Text(double value)
{
    return VoString::ToString(value);
}

VoString Text(std::size_t value)
{
    return VoString(value);
}

VoString Text(const VoString& value)
{
    return value;
}

VoString Text(const VoFilePath& value)
{
    return value.path();
}

template <typename T>
VoString Text(const VoPair<T, T>& value)
{
    return "[" + Text(value.first) + "," + Text(value.second) + "]";
}

template <typename T>
std::size_t Hash(const T& value)
{
    return std::hash<T>()(value);
}

template <typename T>
std::size_t Hash(const VoPair<T, T>& value)
{
    return Hash(value.first) * 31 + Hash(value.second);
}

} // namespace

struct VoVariant::Private
{
    Value value;
};

template <VoVariant::Type type, typename T>
std::unique_ptr<VoVariant::Private> VoVariant::Holding(T&& value)
{
    return std::unique_ptr<Private>(
        new Private{Value(std::in_place_index<static_cast<std::size_t>(type)>, std::forward<T>(value))});
}

VoVariant::VoVariant(Type type, std::unique_ptr<Private> state) noexcept
    : m_type(type)
    , m_private(std::move(state))
{
}

VoVariant::VoVariant() noexcept = default;

VoVariant::VoVariant(bool value)
    : VoVariant(Boolean, Holding<Boolean>(value))
{
}

VoVariant::VoVariant(int value)
    : VoVariant(Integer, Holding<Integer>(value))
{
}

VoVariant::VoVariant(double value)
    : VoVariant(Double, Holding<Double>(value))
{
}

VoVariant::VoVariant(std::size_t value)
    : VoVariant(Size, Holding<Size>(value))
{
}

VoVariant::VoVariant(const VoString& value)
    : VoVariant(String, Holding<String>(value))
{
}

VoVariant::VoVariant(VoString&& value)
    : VoVariant(String, Holding<String>(std::move(value)))
{
}

VoVariant::VoVariant(const char* value)
    : VoVariant(VoString(value))
{
}

VoVariant::VoVariant(const VoFilePath& value)
    : VoVariant(FilePath, Holding<FilePath>(value))
{
}

VoVariant::VoVariant(VoFilePath&& value)
    : VoVariant(FilePath, Holding<FilePath>(std::move(value)))
{
}

VoVariant::VoVariant(const VoPair<VoString, VoString>& value)
    : VoVariant(StringPair, Holding<StringPair>(value))
{
}

VoVariant::VoVariant(VoPair<VoString, VoString>&& value)
    : VoVariant(StringPair, Holding<StringPair>(std::move(value)))
{
}

VoVariant::VoVariant(PathPairTag, const VoPair<VoFilePath, VoFilePath>& value)
    : VoVariant(FilePathPair, Holding<FilePathPair>(value))
{
}

VoVariant::VoVariant(PathPairTag, VoPair<VoFilePath, VoFilePath>&& value)
    : VoVariant(FilePathPair, Holding<FilePathPair>(std::move(value)))
{
}

VoVariant::VoVariant(const VoVariant& other)
    : m_type(other.m_type)
    , m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}

VoVariant::VoVariant(VoVariant&& other) noexcept
    : m_type(std::exchange(other.m_type, Null))
    , m_private(std::move(other.m_private))
{
}

VoVariant& VoVariant::operator=(const VoVariant& other)
{
    VoVariant copy(other);
    swap(copy);
    return *this;
}

VoVariant& VoVariant::operator=(VoVariant&& other) noexcept
{
    VoVariant taken(std::move(other));
    swap(taken);
    return *this;
}

VoVariant::~VoVariant() = default;

void VoVariant::swap(VoVariant& other) noexcept
{
    std::swap(m_type, other.m_type);
    m_private.swap(other.m_private);
}

template <VoVariant::Type type>
const auto& VoVariant::held() const
{
    if (m_type != type)
        throw VoBadVariantAccessException(type, m_type);
    // The default-constructed exception has the message that callers know; std::get words it differently.
    const auto* value = std::get_if<static_cast<std::size_t>(type)>(&m_private->value);
    if (!value)
        throw std::bad_variant_access();
    return *value;
}

template <VoVariant::Type type>
auto VoVariant::taken()
{
    held<type>();
    return std::move(std::get<static_cast<std::size_t>(type)>(m_private->value));
}

bool VoVariant::asBoolean() const
{
    return held<Boolean>();
}

int VoVariant::asInteger() const
{
    return held<Integer>();
}

const double& VoVariant::asDouble() const&
{
    return held<Double>();
}

double VoVariant::asDouble() &&
{
    return taken<Double>();
}

std::size_t VoVariant::asSize() const
{
    return held<Size>();
}

const VoString& VoVariant::asString() const&
{
    return held<String>();
}

VoString VoVariant::asString() &&
{
    return taken<String>();
}

const VoFilePath& VoVariant::asFilePath() const&
{
    return held<FilePath>();
}

VoFilePath VoVariant::asFilePath() &&
{
    return taken<FilePath>();
}

const VoPair<VoString, VoString>& VoVariant::asStringPair() const&
{
    return held<StringPair>();
}

VoPair<VoString, VoString> VoVariant::asStringPair() &&
{
    return taken<StringPair>();
}

const VoPair<VoFilePath, VoFilePath>& VoVariant::asFilePathPair() const&
{
    return held<FilePathPair>();
}

VoPair<VoFilePath, VoFilePath> VoVariant::asFilePathPair() &&
{
    return taken<FilePathPair>();
}

int VoVariant::compare(const VoVariant& other) const
{
    if (m_type != other.m_type)
        return static_cast<int>(m_type) - static_cast<int>(other.m_type);
    if (!m_private)
        return 0;
    return std::visit(
        [&](const auto& value) {
            return Compare(value, std::get<std::decay_t<decltype(value)>>(other.m_private->value));
        },
        m_private->value);
}

VoString VoVariant::toString() const
{
    if (!m_private)
        return "null";
    return std::visit([](const auto& value) { return Text(value); }, m_private->value);
}

const char* VoVariant::TypeString(Type type)
{
    return type >= Null && type <= StringPair ? TypeNames[type] : "Unknown";
}

VoVariant::Type VoVariant::StringType(const VoString& text)
{
    for (int type = Boolean; type <= StringPair; ++type)
        if (text == TypeNames[type])
            return static_cast<Type>(type);
    return Null;
}

std::ostream& operator<<(std::ostream& stream, const VoVariant& value)
{
    return stream << value.toString();
}

std::size_t std::hash<VoVariant>::operator()(const VoVariant& value) const noexcept
{
    const auto kind = static_cast<std::size_t>(value.m_type);
    if (!value.m_private)
        return kind;
    return std::visit([](const auto& held) { return Hash(held); }, value.m_private->value) * 31 + kind;
}

VoBadVariantAccessException::VoBadVariantAccessException(VoVariant::Type requested, VoVariant::Type actual)
    : VoException(VoString("Bad variant access [requested = ") + VoVariant::TypeString(requested) +
                  "] [actual = " + VoVariant::TypeString(actual) + "]")
{
}

VOCORE_DEFINE_EXCEPTION(VoBadVariantAccessException, "VoBadVariantAccessException")
