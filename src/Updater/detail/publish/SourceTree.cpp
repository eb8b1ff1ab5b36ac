#include <Updater/detail/publish/SourceTree.h>

#include <Core/VoMathsException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/files/FileAttributes.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/publish/IgnoreRules.h>
#include <Updater/detail/publish/Publication.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace vo::updater::detail {

namespace {

// The directory's text is the beginning of every path that a walk delivers. Cutting it off leaves a name with blanks
// around it as it is, so that the check of the target sees it.
VoFilePath TargetOf(const VoFilePath& file, const VoDirectoryPath& directory)
{
    const std::string& text = file.path().toStdString();
    const std::string& prefix = directory.path().toStdString();
    if (text.size() > prefix.size() && text.compare(0, prefix.size(), prefix) == 0)
        return VoFilePath::CreateUnchecked(VoString(text.substr(prefix.size())));
    return directory.relativeFile(file);
}

std::filesystem::path Canonical(const VoDirectoryPath& directory)
{
    const std::filesystem::path native = vo::detail::ToNative(directory);
    std::error_code error;
    const std::filesystem::path canonical =
        vo::detail::RealPath(native.empty() ? std::filesystem::path(".") : native, error);
    return error ? native : canonical;
}

// What publishing writes, as seen from the directory that is published.
class PublishedOutput
{
public:
    PublishedOutput(const VoDirectoryPath& directory, const VoFilePath& declarationsFile)
    {
        if (declarationsFile.isNull())
            return;
        const std::filesystem::path below =
            Canonical(declarationsFile.parent()).lexically_relative(Canonical(directory));
        if (below.empty() || *below.begin() == "..")
            return;
        const std::filesystem::path base = below == "." ? std::filesystem::path() : below;
        m_declarations = vo::detail::FromNative(base / vo::detail::ToNative(declarationsFile).filename()).path();
        m_packages = vo::detail::FromNative(base / Layout::PackagesDirectory).path() + "\\";
        m_lock = vo::detail::FromNative(base / Publication::LockName).path();
        m_seen = vo::detail::FromNative(base / SeenFiles::PublishedName).path();
    }

    bool contains(const VoFilePath& target) const
    {
        if (!m_declarations)
            return false;
        const std::string& text = target.path().toStdString();
        return text == m_declarations->toStdString() || text == m_lock.toStdString() || startsWith(text, m_packages) ||
               startsWith(text, *m_declarations + ".tmp") || startsWith(text, m_seen);
    }

private:
    static bool startsWith(const std::string& text, const VoString& beginning)
    {
        return text.compare(0, beginning.size(), beginning.toStdString()) == 0;
    }

    std::optional<VoString> m_declarations; // empty when the output lies elsewhere
    VoString m_packages;
    VoString m_lock;
    VoString m_seen; // siblings of it begin like it
};

// Hands on what the rules do not leave out, in any order, without entering what they do.
struct Walk
{
    const VoDirectoryPath& top;
    const IgnoreRules& ignored;
    const std::function<void(SourceFile)>& take;
    const std::function<void(const VoFilePath&)>& takeEmpty; // told the target of a folder, with its separator

    // Whether anything at all lies in the directory.
    bool enter(const VoDirectoryPath& directory) const
    {
        bool isEmpty = true;
        VoFileSystem::ForEachFile(directory, false, true, [&](const VoFilePath& file) {
            isEmpty = false;
            SourceFile source{file, TargetOf(file, top), {}};
            const std::string& text = file.path().toStdString();
            const bool isDirectory = !text.empty() && text.back() == '\\';
            if (ignored.leavesOut(source.target, isDirectory))
                return;
            if (!isDirectory)
                take(std::move(source));
            else if (!enter(VoDirectoryPath(file.path())))
                takeEmpty(source.target);
        });
        return !isEmpty;
    }
};

VoFilePath PathOf(std::string text)
{
    return VoFilePath::CreateUnchecked(VoString(std::move(text)));
}

} // namespace

SourceFiles::SourceFiles(const VoDirectoryPath& folder)
    : m_folder(folder.path().toStdString())
{
}

void SourceFiles::add(const SourceFile& file)
{
    if (m_rows.size() >= std::numeric_limits<Number>::max())
        throw VoOverflowException("More files in a folder than can be counted");
    const std::string& target = file.target.path().toStdString();
    const std::string& source = file.source.path().toStdString();
    const bool isBelow = source.size() == m_folder.size() + target.size() &&
                         source.compare(0, m_folder.size(), m_folder) == 0 &&
                         source.compare(m_folder.size(), target.size(), target) == 0;
    m_rows.push_back({m_texts.size(), static_cast<std::uint32_t>(target.size()),
                      isBelow ? 0 : static_cast<std::uint32_t>(source.size()), file.stamp});
    m_texts += target;
    if (!isBelow)
        m_texts += source;
}

void SourceFiles::sort()
{
    const std::string_view texts = m_texts;
    std::sort(m_rows.begin(), m_rows.end(), [texts](const Row& a, const Row& b) {
        return texts.substr(a.begin, a.targetLength) < texts.substr(b.begin, b.targetLength);
    });
}

VoFilePath SourceFiles::source(Number number) const
{
    const Row& row = m_rows[number];
    if (row.sourceLength > 0)
        return PathOf(m_texts.substr(row.begin + row.targetLength, row.sourceLength));
    std::string text = m_folder;
    return PathOf(std::move(text.append(targetText(number))));
}

VoFilePath SourceFiles::target(Number number) const
{
    return PathOf(std::string(targetText(number)));
}

std::string_view SourceFiles::targetText(Number number) const
{
    return std::string_view(m_texts).substr(m_rows[number].begin, m_rows[number].targetLength);
}

bool IsRegularFile(const VoFilePath& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(vo::detail::ToNative(path), error);
}

SourceFiles ListSources(const VoDirectoryPath& directory, const VoFilePath& declarationsFile,
                        const IgnoreRules& ignored, const std::function<void(const VoString&)>& warn,
                        ReleaseAttributes* attributes)
{
    const PublishedOutput output(directory, declarationsFile);
    SourceFiles sources(directory);
    bool skippedOutput = false;
    const auto take = [&](SourceFile source) {
        source.stamp = StampOf(source.source);
        const auto link = attributes && !source.stamp ? ReadLink(source.source) : std::nullopt;
        if (output.contains(source.target))
            skippedOutput = true;
        else if (link)
            attributes->links.pushBack({source.target, *link});
        else if (source.stamp || IsRegularFile(source.source))
            sources.add(source);
        else if (!VoFileSystem::IsDirectory(source.source))
            warn("Not a regular file, left out: " + source.source.path());
    };
    const auto takeEmpty = [&](const VoFilePath& target) {
        if (attributes && !output.contains(target))
            attributes->folders.pushBack(AsFile(VoDirectoryPath(target.path())));
    };
    Walk{directory, ignored, take, takeEmpty}.enter(directory);
    if (skippedOutput)
        warn("Published output inside the added directory, left out: " + declarationsFile.path());
    sources.sort();
    if (attributes)
        std::sort(attributes->links.begin(), attributes->links.end(), [](const auto& a, const auto& b) {
            return a.target.path().toStdString() < b.target.path().toStdString();
        });
    return sources;
}

} // namespace vo::updater::detail
