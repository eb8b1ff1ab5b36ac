#pragma once

#include <Core/VoComparableString.h>

#include <functional>
#include <string_view>
#include <type_traits>

/// A range of bytes of a VoString or of a text, without a copy, with the locale of the string that it views.
///
/// It does not own the bytes: it is valid while the viewed string lives and is unchanged. Moving the string does not
/// disturb it, and views made of views refer to the original bytes. The bytes need not be terminated.
///
/// A cheap value: making and copying one allocates nothing.
class VOCORE_EXPORT VoStringView final : public VoComparableString
{
    struct Private;

public:
    /// @cond INTERNAL
    // For the library only, which alone can name the argument's type; public so that containers can build views in
    // place.
    explicit VoStringView(Private&& state) noexcept;
    /// @endcond

    using value_type = char;            ///< As algorithms of the standard library ask for it.
    using const_iterator = const char*; ///< See begin().

    /// As large a length as any: "to the end".
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    VoStringView();                          ///< An empty view.
    VoStringView(const VoString& string);    ///< All bytes of the string.
    VoStringView(const VoString&&) = delete; ///< Would dangle.
    /// Like VoString::substring().
    /// @throws VoIndexOutOfBoundsException with pos and the size, when pos > string.size()
    VoStringView(const VoString& string, std::size_t pos, std::size_t length);
    VoStringView(const VoString&&, std::size_t, std::size_t) = delete; ///< Would dangle.
    VoStringView(const char* text);                      ///< The bytes up to the terminator, with the global locale.
    VoStringView(const char* bytes, std::size_t length); ///< `length` bytes, with the global locale.

    /// The viewed bytes, with the global locale. Deduces the type exactly, so that it competes with none of the others.
    template <typename V, std::enable_if_t<std::is_same_v<V, std::string_view>, int> = 0>
    explicit VoStringView(V view)
        : VoStringView(view.data(), view.size())
    {
    }

    VoStringView(const VoStringView& other);     ///< The same bytes.
    VoStringView(VoStringView&& other) noexcept; ///< `other` becomes an empty view.
    ~VoStringView() override;
    VoStringView& operator=(const VoStringView& other);     ///< The same bytes.
    VoStringView& operator=(VoStringView&& other) noexcept; ///< `other` becomes an empty view.

    std::size_t size() const final;
    bool isEmpty() const { return size() == 0; } ///< Whether there is no byte.
    const char* begin() const noexcept;          ///< The first byte.
    const char* end() const noexcept;            ///< Past the last byte.
    const char& at(std::size_t index) const final;
    const char& operator[](std::size_t index) const final;
    const std::locale& locale() const final;

    // Overridden for speed only: the own bytes and the locale's record need no virtual call.
    int compare(const VoComparableString& other, Comparison mode = CaseInsensitive) const override;
    using VoComparableString::compare;
    bool operator==(const char* text) const override;
    bool operator==(const VoComparableString& other) const override;
    bool operator!=(const char* text) const override;
    bool operator!=(const VoComparableString& other) const override;

    VoStringView substring(std::size_t pos) const; ///< The view from `pos` to the end; see the other form.
    VoStringView substring(std::size_t pos, std::size_t length) const& final;

    /// The index of the last byte equal to c (exactly) at or before the index `from`.
    /// @throws VoNotFoundException "Item not found: " + c, when there is none
    std::size_t findLastOf(char c, std::size_t from = npos) const;

    /// The viewed bytes, valid as long as they are.
    std::string_view toStdStringView() const noexcept { return {begin(), size()}; }
    const char* cbegin() const noexcept { return begin(); } ///< The first byte.
    const char* cend() const noexcept { return end(); }     ///< Past the last byte.

    int toInt() const;         ///< Like VoString::toInt().
    QString toQString() const; ///< Like VoString::toQString().
    VoString toString() const; ///< A copy of the bytes that owns them, with the global locale.

protected:
    std::size_t find_case_insensitive(const char* needle, std::size_t length, std::size_t from) const override;
    std::size_t find_case_sensitive(const char* needle, std::size_t length, std::size_t from) const override;

private:
    friend class VoComparableString;
    friend class VoString;

    Private& state() noexcept;
    const Private& state() const noexcept;

    // Holds a Private in place: a heap object for each token would cost more than finding it.
    alignas(void*) unsigned char m_private[4 * sizeof(void*)];
};

namespace std {

/// Agrees with the case-insensitive `==` and with the hash of a VoString of the same bytes.
template <>
struct VOCORE_EXPORT hash<VoStringView>
{
    size_t operator()(const VoStringView& view) const noexcept; ///< Of the folded bytes.
};

} // namespace std
