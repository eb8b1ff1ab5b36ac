#include <Documents/detail/UnzipPlan.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Documents/detail/ZipInput.h>
#include <FileSystem/detail/SafePath.h>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vo::detail {

namespace {

[[noreturn]] void Refuse(std::string_view name)
{
    throw VoValidationException("Invalid path in zip archive: " + VoString(std::string(name)));
}

void RequireReadable(const ZipEntry& entry, std::string_view name)
{
    if (entry.problem == ZipEntry::Problem::None)
        return;
    const VoString text{std::string(name)};
    if (entry.problem == ZipEntry::Problem::Overlapping)
        throw VoValidationException("Overlapping entries in zip archive: " + text);
    throw VoInvalidParameterException("Cannot open zip archive file: " + VoString(ZipProblemText(entry)) + " in " +
                                      text);
}

bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}

// The name with "\" as separator and without repeated ones, which some programs store.
std::string WithPlainSeparators(std::string_view name)
{
    std::string text;
    text.reserve(name.size());
    for (const char c : name)
        if (!IsSeparator(c))
            text += c;
        else if (text.empty() || text.back() != '\\')
            text += '\\';
    return text;
}

// Some programs begin all names of a packed directory with "./", and name the directory itself so.
std::string WithoutCurrentDirectory(std::string text)
{
    while (text.compare(0, 2, ".\\") == 0)
        text.erase(0, 2);
    return text;
}

/// The names of the archive so far. Case does not count: on some systems one file would replace the other.
class TakenNames
{
public:
    // False when a name is taken, or would be both a file and a directory.
    bool take(const VoFilePath& path, bool isDirectory)
    {
        if (!takeParent(path.path().toStdString()))
            return false;
        const auto [place, isNew] = m_isDirectory.emplace(path, isDirectory);
        return isNew || (isDirectory && place->second);
    }

private:
    bool takeParent(const std::string& path)
    {
        const std::size_t end = path.rfind('\\');
        if (end == std::string::npos)
            return true;
        const std::string parent = path.substr(0, end);
        if (parent == m_lastParent) // entries come directory by directory
            return true;
        if (!take(VoFilePath(VoString(parent)), true))
            return false;
        m_lastParent = parent;
        return true;
    }

    std::unordered_map<VoFilePath, bool> m_isDirectory;
    std::string m_lastParent;
};

} // namespace

UnzipPlan PlanUnzip(ZipInput& archive, const VoFilePath& targetDirectory)
{
    UnzipPlan plan;
    plan.items.reserve(archive.count());
    TakenNames taken;
    for (std::size_t i = 0; i < archive.count(); ++i) {
        const std::string_view name = archive.name(i);
        std::string text = WithoutCurrentDirectory(WithPlainSeparators(name));
        if (text.empty() && !name.empty())
            continue;
        const bool isNamedAsDirectory = text.size() > 1 && text.back() == '\\';
        if (isNamedAsDirectory)
            text.pop_back();
        const bool isDirectory = isNamedAsDirectory || archive.entry(i).isFolder;
        const VoFilePath path{VoString(text)}; // without blanks at the ends
        const VoFilePath target = VoFilePath::CreateUnchecked(targetDirectory.path() + path.path());
        if (!target.validLength() && text.find('\0') == std::string::npos)
            throw VoPathSizeFileException(target);
        const bool isSafe =
            SafeRelativePath(std::string_view(text)) && (path.path().toStdString() == text || SafeRelativePath(path));
        if (!isSafe || !taken.take(path, isDirectory))
            Refuse(name);
        RequireReadable(archive.entry(i), name);
        const std::uint64_t room = std::numeric_limits<std::uint64_t>::max() - plan.bytes;
        plan.bytes += std::min(archive.size(i), room);
        plan.items.push_back({i, target, isDirectory});
    }
    return plan;
}

} // namespace vo::detail
