#pragma once

#include <Core/VoString.h>

/// Converts a value to its text and back. Instantiated for `double` and `long long`.
template <typename T>
class VOCORE_TEMPLATE_EXPORT VoStringConverter
{
public:
    virtual ~VoStringConverter();

    virtual VoString convert(const T& value) = 0;      ///< The text of a value.
    virtual T convert(const VoString& text) const = 0; ///< The value of a text.

protected:
    VoStringConverter() = default;
    VoStringConverter(const VoStringConverter&) = default;            ///< For derived classes.
    VoStringConverter& operator=(const VoStringConverter&) = default; ///< For derived classes.
};

template <typename T>
VoStringConverter<T>::~VoStringConverter() = default;

extern template class VOCORE_EXPORT VoStringConverter<double>;
extern template class VOCORE_EXPORT VoStringConverter<long long>;

/// Decimal text, read strictly: unlike VoString::toInt() it tells a number from garbage.
class VOCORE_EXPORT VoStringLongLongConverter : public VoStringConverter<long long>
{
public:
    ~VoStringLongLongConverter() override;

    VoString convert(const long long& value) override;

    /// Accepts an optional "-" and decimal digits, nothing before or after them.
    /// @throws VoInvalidConversionException "Invalid conversion from " + text + " to long long", when the text is
    /// anything
    ///         else or the number does not fit
    long long convert(const VoString& text) const override;
};
