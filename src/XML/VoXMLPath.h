#pragma once

#include <Core/VoCaseSensitiveString.h>
#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>

/// The place of an element in a document: the element names from the root down, joined by "/".
///
/// A value, compared with regard to case, so that it can key an ordered map. Empty after a move.
class VOCORE_EXPORT VoXMLPath
{
public:
    VoXMLPath(); ///< The empty path.
    /// Takes a whole path text such as "root/item"; it is neither split nor checked.
    VoXMLPath(const VoString& text);
    /// Takes a whole path text; null is the empty path.
    VoXMLPath(const char* text);
    /// Joins the names by "/": `VoXMLPath({"root", "item"})` is "root/item".
    VoXMLPath(std::initializer_list<VoString> names);

    /// @name Copies and moves
    /// @{
    VoXMLPath(const VoXMLPath& other);                ///< The same path.
    VoXMLPath(VoXMLPath&& other) noexcept;            ///< Leaves `other` empty.
    VoXMLPath& operator=(const VoXMLPath& other);     ///< Leaves this path as it was when it throws.
    VoXMLPath& operator=(VoXMLPath&& other) noexcept; ///< Leaves `other` empty.
    virtual ~VoXMLPath();                             ///< Virtual: rules may derive their own kinds of path.
    /// @}

    void push(const VoString& name);              ///< Goes one level down, to the child of that name.
    VoXMLPath pushed(const VoString& name) const; ///< A copy with the name pushed.

    bool isEmpty() const;              ///< True for the path without any name.
    const VoString& toString() const&; ///< The names joined by "/".
    VoString toString() &&;            ///< The names joined by "/", out of a temporary.

    bool operator==(const VoXMLPath& other) const; ///< Same text, case included.
    bool operator!=(const VoXMLPath& other) const; ///< Another text, case included.
    bool operator<(const VoXMLPath& other) const;  ///< Ordered by the bytes of the text.

private:
    VoCaseSensitiveString m_text;
};

/// Writes the names joined by "/".
VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoXMLPath& path);

namespace std {
/// Hash of the text, case included.
template <>
struct VOCORE_EXPORT hash<VoXMLPath>
{
    /// Agrees with operator==.
    std::size_t operator()(const VoXMLPath& path) const noexcept;
};
} // namespace std
