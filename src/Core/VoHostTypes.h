#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <utility>

/// @file
/// Plain stand-ins for the types that the host application's support library exchanges with this one. They know nothing
/// of VoString, which converts to and from them.

/// A byte string. There is deliberately no implicit conversion to `const char*`: with one, a call that accepts VoString
/// and YString would be ambiguous.
class VOCORE_EXPORT YString
{
public:
    YString() = default; ///< Empty.
    YString(const char* text)
        : m_text(text ? text : "")
    {
    } ///< Bytes up to the terminator; null is empty.
    YString(const char* bytes, std::size_t length)
        : m_text(bytes, length)
    {
    } ///< Exactly `length` bytes.
    YString(std::string text) noexcept
        : m_text(std::move(text))
    {
    } ///< The bytes of a standard string.

    const char* c_str() const noexcept { return m_text.c_str(); }               ///< The terminated bytes.
    std::size_t length() const noexcept { return m_text.size(); }               ///< Number of bytes.
    bool isEmpty() const noexcept { return m_text.empty(); }                    ///< True without bytes.
    const std::string& toStdString() const noexcept { return m_text; }          ///< The bytes as a standard string.
    char& operator[](std::size_t index) noexcept { return m_text[index]; }      ///< One byte, unchecked.
    char operator[](std::size_t index) const noexcept { return m_text[index]; } ///< One byte, unchecked.

    /// Appends.
    YString& operator+=(const YString& other)
    {
        m_text += other.m_text;
        return *this;
    }

    /// Byte-wise equality.
    friend bool operator==(const YString& a, const YString& b) noexcept { return a.m_text == b.m_text; }
    /// Byte-wise inequality.
    friend bool operator!=(const YString& a, const YString& b) noexcept { return a.m_text != b.m_text; }
    /// Byte-wise order.
    friend bool operator<(const YString& a, const YString& b) noexcept { return a.m_text < b.m_text; }

private:
    std::string m_text;
};

/// Writes the bytes.
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const YString& text);

/// A text that is either borrowed from its maker, who keeps it alive, or owned.
class VOCORE_EXPORT TempString
{
public:
    /// Borrows `text`, which must stay alive; null is empty.
    static TempString Borrow(const char* text) { return TempString(text ? text : "", nullptr); }
    /// Owns a copy of `text`.
    static TempString Own(std::string text)
    {
        auto owned = std::make_shared<const std::string>(std::move(text));
        const char* bytes = owned->c_str();
        return TempString(bytes, std::move(owned));
    }

    const char* c_str() const noexcept { return m_text; } ///< The terminated bytes.

private:
    TempString(const char* text, std::shared_ptr<const std::string> owned)
        : m_text(text)
        , m_owned(std::move(owned))
    {
    }

    const char* m_text;
    std::shared_ptr<const std::string> m_owned;
};

/// One argument of the host's formatter. Borrows a text argument.
class VOCORE_EXPORT PrintfArg
{
public:
    /// What the argument is.
    enum class Kind
    {
        Integer,
        Real,
        Text
    };

    PrintfArg(int value) noexcept
        : m_kind(Kind::Integer)
        , m_integer(value)
    {
    } ///< An integer.
    PrintfArg(std::int64_t value) noexcept
        : m_kind(Kind::Integer)
        , m_integer(value)
    {
    } ///< An integer.
    PrintfArg(double value) noexcept
        : m_kind(Kind::Real)
        , m_real(value)
    {
    } ///< A number.
    PrintfArg(const char* text) noexcept
        : m_kind(Kind::Text)
        , m_text(text)
    {
    } ///< A text that stays alive.

    Kind kind() const noexcept { return m_kind; }               ///< Which of the three it is.
    std::int64_t integer() const noexcept { return m_integer; } ///< The integer, 0 for the other kinds.
    double real() const noexcept { return m_real; }             ///< The number, 0 for the other kinds.
    const char* text() const noexcept { return m_text; }        ///< The text, null for the other kinds.

private:
    Kind m_kind;
    std::int64_t m_integer = 0;
    double m_real = 0;
    const char* m_text = nullptr;
};

/// The host's table keyed by integers. Iterates in ascending order of the keys, so that what is made from it is
/// reproducible.
template <typename T>
class YHashTable
{
public:
    using const_iterator = typename std::map<int, T>::const_iterator; ///< Over pairs of key and value.

    /// Sets the value for `key`, replacing an earlier one.
    void insert(int key, T value) { m_items.insert_or_assign(key, std::move(value)); }
    /// Removes the value for `key`; true when there was one.
    bool remove(int key) { return m_items.erase(key) != 0; }
    /// The value for `key` or null. Valid until the entry is removed.
    T* find(int key)
    {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }
    /// @copydoc find(int)
    const T* find(int key) const
    {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : &found->second;
    }
    T& operator[](int key) { return m_items[key]; }                   ///< The value for `key`, made when absent.
    std::size_t size() const noexcept { return m_items.size(); }      ///< Number of entries.
    bool isEmpty() const noexcept { return m_items.empty(); }         ///< True without entries.
    void clear() noexcept { m_items.clear(); }                        ///< Removes all entries.
    const_iterator begin() const noexcept { return m_items.begin(); } ///< Entry with the smallest key.
    const_iterator end() const noexcept { return m_items.end(); }     ///< Past the entry with the largest key.

private:
    std::map<int, T> m_items;
};

/// A new random (version 4) GUID in the host's text form: lower case, enclosed in braces. Safe from any thread.
VOCORE_EXPORT YString sp_GetGUID();
