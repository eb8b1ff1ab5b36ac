#include <Updater/detail/documents/PackageValidator.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Core/detail/Escapes.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/SafePath.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/ListedFile.h>
#include <Updater/detail/documents/UpdaterPaths.h>

#include <QtCore/QString>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::size_t LongestIdentifier = 128;

bool IsASCII(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Reading a path from a document normalises it: one with a blank in front or a "/" would become another name.
bool IsNormalised(const VoFilePath& path)
{
    const std::string& text = path.path().toStdString();
    const bool plainStart = !text.empty() && text[0] > ' ' && text[0] < 0x7F;
    if (plainStart && text.find('/') == std::string::npos)
        return true; // the other rules of normalisation concern what SafeRelativePath refuses
    return VoFilePath(path.path()).path().toStdString() == text;
}

// The rule that a path breaks; null for a good one.
const char* PathProblem(const VoFilePath& path)
{
    const std::string& text = path.path().toStdString();
    if (const char* problem = vo::detail::RelativePathProblem(text))
        return problem;
    if (!SurvivesXML(text))
        return "it is not UTF-8, or holds a character that no document can hold";
    return IsNormalised(path) ? nullptr : "it begins with a blank, or would be read as another path";
}

void RequireSafePath(const VoFilePath& path, const char* message)
{
    if (PathProblem(path))
        throw VoValidationException(message + path.path());
}

// The installer builds each file beside its place under such a name, and keeps the old one there.
bool IsBuiltName(const VoFilePath& target)
{
    const VoString folded = FoldedName(target.path());
    return folded.endsWith(BuiltSuffix) || folded.endsWith(AsideSuffix);
}

void RequireShowableIdentifier(const VoUUID& id)
{
    const std::string& text = id.toString().toStdString();
    if (text.empty() || text.size() > LongestIdentifier || std::any_of(text.begin(), text.end(), vo::detail::IsControl))
        throw VoValidationException("Invalid identifier: " + id.toString());
}

[[noreturn]] void Refuse(const VoString& what)
{
    throw VoValidationException("Invalid package definition: " + what);
}

void Require(bool sound, const char* what, const VoString& item)
{
    if (!sound)
        Refuse(what + item);
}

// Views of texts in the listing that is being checked.
using IDs = std::unordered_set<std::string_view>;

std::string_view Key(const VoUUID& id)
{
    return id.toString().toStdString();
}

IDs ValidateChunks(const VoDeque<ChunkListing>& chunks)
{
    IDs ids;
    std::unordered_set<std::string> names;
    for (const ChunkListing& chunk : chunks) {
        RequireSafeIdentifier(chunk.id());
        RequireSafeChunkPath(chunk.path());
        Require(names.insert(FoldedName(chunk.id()).toStdString()).second, "duplicate chunk ", chunk.id());
        Require(static_cast<std::int64_t>(chunk.size()) >= 0, "negative size of chunk ", chunk.id());
        ids.insert(Key(chunk.id()));
    }
    return ids;
}

// `isKnown` tells of each chunk of the table whether the package has it.
void ValidatePieces(const ListedFile& file, const std::vector<bool>& isKnown)
{
    constexpr std::uint64_t most = INT64_MAX;
    const auto require = [&file](bool sound, const char* what) {
        if (!sound)
            Refuse(what + VoString(std::string(file.path())));
    };
    std::uint64_t sum = 0;
    for (const FileTable::Piece& piece : file.pieces()) {
        require(isKnown[piece.chunk], "unknown chunk referenced by ");
        require(piece.length <= most && piece.offset <= most - piece.length, "piece out of range in ");
        require(piece.length <= most - sum, "piece out of range in ");
        sum += piece.length;
    }
    require(file.length() >= 0, "negative size of ");
    require(sum == static_cast<std::uint64_t>(file.length()), "pieces do not add up to the size of ");
}

struct FoldedTarget
{
    std::string key;
    const VoFilePath* target;
};

// Targets by their folded names, with the separator before all other characters: whatever lies in a directory then
// follows directly behind a file that has the directory's name.
std::vector<FoldedTarget> SortedTargets(const std::vector<const VoFilePath*>& targets)
{
    std::vector<FoldedTarget> result;
    result.reserve(targets.size());
    for (const VoFilePath* target : targets) {
        std::string key = FoldedName(target->path()).toStdString();
        std::replace(key.begin(), key.end(), '\\', '\x01');
        result.push_back({std::move(key), target});
    }
    // Stable: of two equal targets the later one is named.
    std::stable_sort(result.begin(), result.end(),
                     [](const FoldedTarget& a, const FoldedTarget& b) { return a.key < b.key; });
    return result;
}

void RequireDistinctTargets(const VoDeque<AdvertisedFileListing>& files)
{
    std::vector<VoFilePath> paths;
    paths.reserve(files.size());
    for (const AdvertisedFileListing& file : files)
        paths.push_back(file.target());
    std::vector<const VoFilePath*> targets;
    targets.reserve(files.size());
    for (const VoFilePath& path : paths)
        targets.push_back(&path);
    if (const auto clash = FindTargetClash(targets)) {
        Require(clash->isDirectory, "duplicate target ", clash->second->path());
        Refuse("target is also a directory: " + clash->first->path());
    }
}

} // namespace

bool SurvivesXML(const std::string& text)
{
    if (IsASCII(text))
        return true;
    const QString decoded = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    if (decoded.contains(QChar(0xFFFE)) || decoded.contains(QChar(0xFFFF)))
        return false;
    const QByteArray encoded = decoded.toUtf8();
    return std::string_view(encoded.constData(), static_cast<std::size_t>(encoded.size())) == text;
}

bool IsSafeIdentifier(const VoUUID& id)
{
    return vo::detail::SafeName(id.toString()) && SurvivesXML(id.toString().toStdString());
}

void RequireSafeIdentifier(const VoUUID& id)
{
    if (!IsSafeIdentifier(id))
        throw VoValidationException("Invalid identifier: " + id.toString());
}

void RequireNoOtherSpelling(const VoUUID& id, const VoUUID& other)
{
    if (other != id && FoldedName(other).equal(FoldedName(id), VoString::CaseSensitive))
        throw VoValidationException("Invalid identifier: " + id.toString());
}

void RequireSafeTarget(const VoFilePath& target)
{
    RequireSafePath(target, "Invalid target path: ");
}

void RequirePublishableTarget(const VoFilePath& target)
{
    const char* problem = PathProblem(target);
    if (!problem && IsBuiltName(target))
        problem = "names that end like this are those of files that are being installed";
    if (problem)
        throw VoValidationException("Invalid target path: " + target.path() + ": " + problem);
}

void RequireRecordableDirectory(const VoDirectoryPath& directory)
{
    if (!SurvivesXML(directory.path().toStdString()))
        throw VoInvalidParameterException("Installation directory is not UTF-8: " + directory.path());
}

void RequireShowableName(const VoString& name)
{
    const std::string& text = name.toStdString();
    if (std::any_of(text.begin(), text.end(), vo::detail::IsControl) || !SurvivesXML(text))
        throw VoValidationException("Invalid package name: " + name);
}

std::optional<TargetClash> FindTargetClash(const std::vector<const VoFilePath*>& unsorted)
{
    const std::vector<FoldedTarget> targets = SortedTargets(unsorted);
    for (std::size_t i = 1; i < targets.size(); ++i) {
        const std::string& before = targets[i - 1].key;
        const std::string& key = targets[i].key;
        if (key == before)
            return TargetClash{targets[i - 1].target, targets[i].target, false};
        if (key.size() > before.size() && key[before.size()] == '\x01' && key.compare(0, before.size(), before) == 0)
            return TargetClash{targets[i - 1].target, targets[i].target, true};
    }
    return std::nullopt;
}

void RequireSafeChunkPath(const VoFilePath& path)
{
    RequireSafePath(path, "Invalid chunk path: ");
}

void RequireSafeDefinitionPath(const VoFilePath& path)
{
    RequireSafePath(path, "Invalid definition path: ");
}

VoString FoldedName(const VoString& text)
{
    const std::string& bytes = text.toStdString();
    if (IsASCII(bytes)) {
        std::string folded = bytes;
        for (char& c : folded)
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return VoString(std::move(folded));
    }
    return VoString(QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())).toCaseFolded());
}

void ValidatePackage(const AdvertisedPackageListing& package)
{
    RequireSafeIdentifier(package.packageID());
    RequireShowableIdentifier(package.versionID());
    const IDs chunks = ValidateChunks(package.chunks());
    if (package.files().isEmpty())
        return;

    const FileTable& files = *ListedFile(package.files().front()).table;
    std::vector<bool> isKnown;
    for (const std::string& id : files.chunkIDs())
        isKnown.push_back(chunks.count(id) != 0);
    for (const AdvertisedFileListing& listing : package.files()) {
        const ListedFile file(listing);
        const VoUUID id = file.id();
        RequireShowableIdentifier(id);
        const VoFilePath target = listing.target();
        RequireSafeTarget(target);
        if (IsBuiltName(target))
            throw VoValidationException("Invalid target path: " + target.path());
        Require(files.find(id) == file.number, "duplicate file ", id);
        ValidatePieces(file, isKnown);
    }
    RequireDistinctTargets(package.files());
}

} // namespace vo::updater::detail
