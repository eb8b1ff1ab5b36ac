#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <iosfwd>

/// The kind of document that a path or a name stands for, with its file extensions and its file-dialog filter.
class VOCORE_EXPORT VoFileType
{
public:
    /// The kinds. The numbers are stored by callers and never change.
    enum Type : std::int32_t
    {
        Undefined = 0,
        Directory = 1,
        AEExamples = 2,
        Component = 3,
        CSV = 4,
        RVWReport = 5,
        Graph = 6,
        HTML = 7,
        Icon = 8,
        Image = 9,
        Model = 10,
        Netlist = 11,
        RichText = 12,
        Schematic = 13,
        Script = 14,
        ScriptTest = 15,
        SymbolLibrary = 16,
        Text = 17,
        VerilogA = 18,
        VerilogHDL = 19,
        VisualScript = 20,
        XML = 21,
        Spreadsheet = 22,
        Zip = 23
    };

    /// Numbers outside the enumeration become Undefined.
    VoFileType(Type type) noexcept;
    /// The type of a path: FromPath(path).
    explicit VoFileType(const VoFilePath& path);
    /// Copies the type.
    /// @{
    VoFileType(const VoFileType& other) noexcept;
    VoFileType& operator=(const VoFileType& other) noexcept;
    /// @}
    virtual ~VoFileType();

    operator Type() const noexcept { return m_type; } ///< The number.
    /// Compares the numbers.
    /// @{
    bool operator==(const VoFileType& other) const noexcept { return m_type == other.m_type; }
    bool operator==(Type type) const noexcept { return m_type == type; }
    bool operator!=(const VoFileType& other) const noexcept { return m_type != other.m_type; }
    bool operator!=(Type type) const noexcept { return m_type != type; }
    /// @}

    /// The file extensions with their dots, in the order of the filter; none for Undefined and Directory.
    VoDeque<VoString> extensions() const;
    /// The name of the icon resource; empty when the type has none.
    VoString icon() const;
    /// The file-dialog filter: "Graph (*.vogpx *.vogph)", and "All Files (*)" for Undefined and Directory.
    VoString filter() const;

    /// The first type of the given name, whatever its case; Undefined when there is none. "Directory" is no such name.
    static Type FromName(const VoString& name);
    /// Directory for a path that ends with the separator or leads to a directory on disk; else the first type with the
    /// path's extension, or Undefined. Only the last extension counts: "x.log.html" is HTML.
    static Type FromPath(const VoFilePath& path);
    /// The name of a type; "Undefined" for numbers outside the enumeration.
    /// @{
    static VoString ToString(Type type);
    static VoString ToString(const VoFileType& type);
    /// @}

    /// Writes the name.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoFileType& type);

private:
    Type m_type;
};
