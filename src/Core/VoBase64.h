#pragma once

#include <Core/VoByteArrayOLD.h>
#include <Core/VoStringConverter.h>

/// The Base64 code of RFC 4648, standard alphabet, "=" padding, no line breaks.
class VOCORE_EXPORT VoBase64ConverterCore
{
public:
    /// Four characters for each three bytes begun; nothing for nothing.
    static VoString Encode(const VoByteArrayOLD& bytes);

    /// The bytes of a text.
    ///
    /// The padding is not subtracted: the result always has (length / 4) x 3 bytes, with zeros where "=" stood, and
    /// stored values rely on it. Characters outside the alphabet are not reported; they give some byte.
    /// @throws VoInvalidParameterException "Invalid string length", when the length is not a positive multiple of 4
    static VoByteArrayOLD Decode(const VoComparableString& text);
};

/// Numbers and texts as Base64, bit-exact. Numbers are coded least significant byte first on every machine.
///
/// Decoding throws VoInvalidParameterException "Invalid string length" like VoBase64ConverterCore::Decode().
class VOCORE_EXPORT VoBase64Converter
{
public:
    virtual ~VoBase64Converter();

    virtual YString encodeDouble(const double& value);     ///< 12 characters, the last "=".
    virtual YString encodeInteger(const long long& value); ///< 12 characters, the last "=".
    virtual YString encodeInteger(const int& value);       ///< 8 characters, the last two "==".
    virtual YString encodeString(const VoString& text);    ///< All bytes of the text.

    virtual double decodeDouble(const VoString& text);  ///< From the first 8 decoded bytes, zero where there are fewer.
    virtual int decodeInteger(const VoString& text);    ///< From the first 4 decoded bytes, zero where there are fewer.
    virtual YString decodeString(const VoString& text); ///< The decoded bytes up to the first zero byte.
};

/// A double as the Base64 text of its bits: unlike decimal text it returns exactly the same value.
class VOCORE_EXPORT VoStringDoubleBase64Converter : public VoStringConverter<double>
{
public:
    ~VoStringDoubleBase64Converter() override;

    VoString convert(const double& value) override;      ///< As VoBase64Converter::encodeDouble().
    double convert(const VoString& text) const override; ///< As VoBase64Converter::decodeDouble().
};
