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

// Targets by their folded names, with the separator before all other characters: whatever lies in a directory then
// follows directly behind a file that has the directory's name. The names are one text: there may be very many.
class FoldedTargets
{
public:
    struct Clash
    {
        std::size_t first;
        std::size_t second;
        bool isDirectory;
    };

    void add(std::string_view target)
    {
        const std::string key = FoldedName(VoString(std::string(target))).toStdString();
        m_targets.push_back({m_keys.size(), key.size(), m_targets.size()});
        m_keys += key;
    }

    std::optional<Clash> findClash()
    {
        std::replace(m_keys.begin(), m_keys.end(), '\\', '\x01');
        // Of two equal targets the later one is named.
        std::sort(m_targets.begin(), m_targets.end(), [this](const Target& a, const Target& b) {
            const int order = keyOf(a).compare(keyOf(b));
            return order != 0 ? order < 0 : a.number < b.number;
        });
        for (std::size_t i = 1; i < m_targets.size(); ++i) {
            const std::string_view before = keyOf(m_targets[i - 1]);
            const std::string_view key = keyOf(m_targets[i]);
            const bool isBelow = key.size() > before.size() && key[before.size()] == '\x01';
            if (key.substr(0, before.size()) == before && (isBelow || key.size() == before.size()))
                return Clash{m_targets[i - 1].number, m_targets[i].number, isBelow};
        }
        return std::nullopt;
    }

private:
    struct Target
    {
        std::size_t begin; // of the key
        std::size_t length;
        std::size_t number;
    };

    std::string_view keyOf(const Target& target) const
    {
        return std::string_view(m_keys).substr(target.begin, target.length);
    }

    std::string m_keys;
    std::vector<Target> m_targets;
};

void RequireDistinctTargets(const VoDeque<AdvertisedFileListing>& files)
{
    FoldedTargets targets;
    for (const AdvertisedFileListing& file : files)
        targets.add(ListedFile(file).path());
    if (const auto clash = targets.findClash()) {
        Require(clash->isDirectory, "duplicate target ", files[clash->second].target().path());
        Refuse("target is also a directory: " + files[clash->first].target().path());
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

void RequirePortableTarget(const VoFilePath& target)
{
    if (target.path().toStdString().find_first_of("?*|\"<>") != std::string::npos)
        throw VoValidationException("Invalid target path: " + target.path() +
                                    ": it holds one of ? * | \" < >, which Windows takes in no name");
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

std::optional<TargetClash> FindTargetClash(const std::vector<std::string_view>& targets)
{
    FoldedTargets folded;
    for (const std::string_view target : targets)
        folded.add(target);
    const auto clash = folded.findClash();
    if (!clash)
        return std::nullopt;
    return TargetClash{targets[clash->first], targets[clash->second], clash->isDirectory};
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
