#pragma once

#include <Application/VoGlobalValues.h>
#include <FileSystem/VoFilePath.h>
#include <Threading/VoReceiver.h>

#include <cstddef>
#include <functional>
#include <utility>

/// @cond INTERNAL
namespace vo::detail {

struct GlobalValueRecord;

// The part of a handle that does not depend on its type. Its record is never destroyed.
class VOCORE_EXPORT GlobalValueHandle
{
protected:
    GlobalValueHandle(const VoString& name, VoVariant::Type type);

    VoVariant variant() const;
    void setVariant(const VoVariant& value) const;
    void publishVariant(const VoVariant& value) const;
    const VoString& recordName() const noexcept;

private:
    GlobalValueRecord* m_record;
};

template <typename T>
struct VariantKind;

#define VOCORE_VARIANT_KIND(Kind, ...)                                                                                 \
    template <>                                                                                                        \
    struct VariantKind<__VA_ARGS__>                                                                                    \
    {                                                                                                                  \
        static constexpr VoVariant::Type type = VoVariant::Kind;                                                       \
        static __VA_ARGS__ Of(VoVariant&& value) { return std::move(value).as##Kind(); }                               \
    };

VOCORE_VARIANT_KIND(Boolean, bool)
VOCORE_VARIANT_KIND(Integer, int)
VOCORE_VARIANT_KIND(Double, double)
VOCORE_VARIANT_KIND(Size, std::size_t)
VOCORE_VARIANT_KIND(String, VoString)
VOCORE_VARIANT_KIND(FilePath, VoFilePath)
VOCORE_VARIANT_KIND(StringPair, VoPair<VoString, VoString>)
VOCORE_VARIANT_KIND(FilePathPair, VoPair<VoFilePath, VoFilePath>)

#undef VOCORE_VARIANT_KIND

} // namespace vo::detail
/// @endcond

/// A handle of one of the VoGlobalValues, with its type: `bool`, `int`, `double`, `std::size_t`, VoString, VoFilePath,
/// or a VoPair of two texts or two paths.
///
///     static const VoGlobalValue<double> tolerance({"Tolerance", 1e-3, "Relative error of a step", 1e-12, 1.0});
///     tolerance.set(1e-6);
///     const double now = tolerance.value();
///
/// A small value that needs no destruction, so it may have static lifetime. Any thread may call any member.
template <typename T>
class VoGlobalValue : private vo::detail::GlobalValueHandle
{
public:
    /// Defines the value, as VoGlobalValues::Define() does.
    /// @throws VoInvalidCastException (kind, wanted kind) for a default of another kind
    explicit VoGlobalValue(const VoValueDefinition& definition)
        : VoGlobalValue((VoGlobalValues::Define(RequireKind(definition)), definition.name),
                        vo::detail::VariantKind<T>::type)
    {
    }

    /// The value of that name, defined elsewhere.
    /// @throws VoNotFoundException (name) where it is not defined
    /// @throws VoInvalidCastException (kind, wanted kind) where it is of another kind
    static VoGlobalValue Named(const VoString& name) { return VoGlobalValue(name, vo::detail::VariantKind<T>::type); }

    const VoString& name() const noexcept { return recordName(); }        ///< The name; it stays valid for ever.
    T value() const { return vo::detail::VariantKind<T>::Of(variant()); } ///< The value.
    bool isSet() const { return VoGlobalValues::IsSet(name()); }          ///< As VoGlobalValues::IsSet().

    /// @name Changes, as of VoGlobalValues
    /// @{
    void set(const T& value) const { setVariant(VoVariant(value)); } ///< As VoGlobalValues::Set().
    void reset() const { VoGlobalValues::Reset(name()); }            ///< As VoGlobalValues::Reset().
    /// Sets the value also where it is read-only: for the code that defined it and knows better than the user.
    void publish(const T& value) const { publishVariant(VoVariant(value)); }
    /// @}

    /// Calls `callback` with the new value of each change while the receiver lives, as VoGlobalValues::Connect().
    [[nodiscard]] VoReceiver connect(std::function<void(const T&)> callback) const
    {
        if (!callback)
            return VoGlobalValues::Connect(name(), nullptr); // which says what is wrong
        return VoGlobalValues::Connect(name(), [callback = std::move(callback)](const VoValueChange& change) {
            callback(vo::detail::VariantKind<T>::Of(VoVariant(change.newValue)));
        });
    }

private:
    VoGlobalValue(const VoString& name, VoVariant::Type type)
        : GlobalValueHandle(name, type)
    {
    }

    static const VoValueDefinition& RequireKind(const VoValueDefinition& definition)
    {
        if (definition.type() != vo::detail::VariantKind<T>::type)
            throw VoInvalidCastException(VoVariant::TypeString(definition.type()),
                                         VoVariant::TypeString(vo::detail::VariantKind<T>::type));
        return definition;
    }
};
