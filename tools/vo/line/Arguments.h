#pragma once

#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

#include <vo/line/Command.h>
#include <vo/line/Location.h>
#include <vo/line/Values.h>

#include <QtCore/QStringList>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vo::tool {

/// The command line, taken apart and checked: what is read here is of the right kind and range, or UsageError names the
/// option and the value.
class Arguments
{
public:
    /// The command that a line means, also where the line is wrong otherwise; empty when it names none.
    static VoString CommandOf(const QStringList& arguments);

    /// Finds the command and its options.
    /// @throws UsageError for an unknown command or option (naming the nearest one), a missing or superfluous value, an
    /// option given twice that is not repeatable, and a wrong number of arguments
    explicit Arguments(const QStringList& arguments);

    /// Null when none was named.
    const Command* command() const { return m_command; }

    bool has(const char* option) const; ///< Whether the option was given.
    /// The option's value; none when it was not given. An empty value is refused.
    std::optional<VoString> text(const char* option) const;
    std::vector<VoString> texts(const char* option) const; ///< The values of a repeatable option, in their order.
    VoString requiredText(const char* option) const;       ///< As text(). @throws UsageError without it

    /// @{ As text(), read as a value of a kind.
    std::optional<VoUUID> identifier(const char* option) const;
    std::optional<ReleaseNumber> release(const char* option) const;
    std::int64_t integer(const char* option, std::int64_t fallback, std::int64_t lowest, std::int64_t highest) const;
    std::uint64_t bytes(const char* option, std::uint64_t fallback, std::uint64_t lowest, std::uint64_t highest) const;
    std::optional<VoFilePath> file(const char* option) const;
    std::optional<VoDirectoryPath> directory(const char* option) const;
    std::optional<VoLocation> location(const char* option) const;
    /// @}

    /// A file or folder, given as NativeText() writes it, as it was typed where the user named it; else as it is.
    std::string typedName(const std::string& path) const;

    std::size_t count() const { return m_positional.size(); } ///< Arguments that are no options.
    const VoString& argument(std::size_t index) const { return m_positional.at(index); }
    /// @{ An argument as an absolute path, or as a path or URL. The disk is not asked.
    VoFilePath fileArgument(std::size_t index) const;
    VoDirectoryPath directoryArgument(std::size_t index) const;
    VoLocation locationArgument(std::size_t index) const;
    /// @}

private:
    struct Given
    {
        VoString name;
        VoString value;
    };

    void parse(const QStringList& arguments);
    void checkCount() const;

    const Command* m_command = nullptr;
    std::vector<Given> m_given;
    std::vector<VoString> m_positional;
};

} // namespace vo::tool
