#include <Updater/detail/documents/ReleaseTree.h>

#include <Core/VoException.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/detail/documents/PackageValidator.h>

#include <algorithm>
#include <set>
#include <string_view>

namespace vo::updater::detail {

namespace {

// So many links may be followed on one way; systems follow 40.
constexpr int MostSteps = 32;

// Systems take 4,095 bytes.
constexpr std::size_t LongestWay = 1024;

constexpr const char* LeadsOut = "it leads out of the release";
constexpr const char* LeadsNowhere = "it leads to nothing in the release";

std::string Above(const std::string& path)
{
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

bool IsRooted(const std::string& way)
{
    return way.front() == '\\' || way.front() == '/' || (way.size() > 1 && way[1] == ':');
}

} // namespace

ReleaseTree::ReleaseTree(const std::vector<const VoFilePath*>& files, const ReleaseAttributes& attributes)
    : m_files(files)
    , m_attributes(attributes)
{
    for (const VoFilePath* file : files)
        add(*file, {Kind::File, file});
    for (const VoFilePath& folder : attributes.folders)
        add(folder, {Kind::Folder});
    for (const ReleaseAttributes::Link& link : attributes.links)
        add(link.target, {Kind::Link, &link.target, &link.to});
}

void ReleaseTree::add(const VoFilePath& path, const Node& node)
{
    const std::string& text = path.path().toStdString();
    m_nodes[text] = node;
    for (std::string folder = Above(text); !folder.empty(); folder = Above(folder)) {
        if (!m_nodes.emplace(folder, Node{Kind::Folder}).second)
            break;
    }
}

ReleaseTree::End ReleaseTree::follow(const ReleaseAttributes::Link& link) const
{
    std::string rest = link.to.toStdString();
    if (rest.empty() || rest.size() > LongestWay)
        return {LeadsNowhere};
    if (IsRooted(rest))
        return {"it is absolute"};
    End end{nullptr, Above(link.target.path().toStdString()), nullptr};
    for (int links = 0; !rest.empty();) {
        const std::string name = rest.substr(0, rest.find('\\'));
        rest.erase(0, name.size() + 1);
        if (end.file)
            return {LeadsNowhere};
        if (name.empty() || name == ".")
            continue;
        if (name == "..") {
            if (end.path.empty())
                return {LeadsOut};
            end.path = Above(end.path);
            continue;
        }
        const std::string next = end.path.empty() ? name : end.path + "\\" + name;
        const auto node = m_nodes.find(next);
        if (node == m_nodes.end())
            return {LeadsNowhere};
        if (node->second.kind == Kind::Link) {
            if (++links > MostSteps)
                return {"it leads in a circle, or through too many links"};
            const std::string& way = node->second.to->toStdString();
            if (way.empty() || IsRooted(way))
                return {LeadsOut};
            if (!rest.empty())
                rest.insert(0, 1, '\\');
            rest.insert(0, way);
            continue;
        }
        end.path = next;
        end.file = node->second.kind == Kind::File ? node->second.path : nullptr;
    }
    return end;
}

void ReleaseTree::validate() const
{
    std::vector<const VoFilePath*> places = m_files;
    std::set<std::string_view> files;
    for (const VoFilePath* file : m_files)
        files.insert(file->path().toStdString());
    for (const ReleaseAttributes::Link& link : m_attributes.links)
        places.push_back(&link.target);
    for (const VoFilePath& folder : m_attributes.folders)
        places.push_back(&folder);
    for (std::size_t i = m_files.size(); i < places.size(); ++i)
        RequirePublishableTarget(*places[i]);
    std::vector<std::string_view> names;
    names.reserve(places.size());
    for (const VoFilePath* place : places)
        names.push_back(place->path().toStdString());
    if (const auto clash = FindTargetClash(names))
        throw VoValidationException("Invalid attributes: " + VoString(std::string(clash->first)) + " and " +
                                    VoString(std::string(clash->second)) + " cannot stand beside each other");
    for (const VoFilePath& program : m_attributes.executables) {
        if (files.count(program.path().toStdString()) == 0)
            throw VoValidationException("Invalid attributes: no such file: " + program.path());
    }
    for (const ReleaseAttributes::Link& link : m_attributes.links) {
        if (const char* problem = follow(link).problem)
            throw VoValidationException("Invalid link: " + link.target.path() + " -> " + link.to + ": " + problem);
    }
}

std::vector<ReleaseTree::Copy> ReleaseTree::copies() const
{
    std::vector<Copy> result;
    for (const ReleaseAttributes::Link& link : m_attributes.links) {
        const End end = follow(link);
        if (end.file)
            result.push_back({link.target, end.file});
        else if (!end.problem)
            copyFolder(link.target, end.path, result);
    }
    return result;
}

// Files, and links to files. A link to a folder within it is left out: such ones could go on for ever.
void ReleaseTree::copyFolder(const VoFilePath& place, const std::string& folder, std::vector<Copy>& copies) const
{
    const std::string start = folder.empty() ? folder : folder + "\\";
    const auto copy = [&](const VoFilePath& path, const VoFilePath* source) {
        const std::string& text = path.path().toStdString();
        if (source && text.size() > start.size() && text.compare(0, start.size(), start) == 0)
            copies.push_back({VoFilePath(place.path() + "\\" + VoString(text.substr(start.size()))), source});
    };
    for (const VoFilePath* file : m_files)
        copy(*file, file);
    for (const ReleaseAttributes::Link& link : m_attributes.links)
        copy(link.target, follow(link).file);
}

void ValidateAttributes(const ReleaseAttributes& attributes, const AdvertisedPackageListing& package)
{
    if (attributes.isEmpty())
        return;
    std::vector<VoFilePath> targets;
    for (const AdvertisedFileListing& file : package.files())
        targets.push_back(file.target());
    ValidateAttributes(attributes, targets);
}

void ValidateAttributes(const ReleaseAttributes& attributes, const std::vector<VoFilePath>& targets)
{
    std::vector<const VoFilePath*> files;
    files.reserve(targets.size());
    for (const VoFilePath& target : targets)
        files.push_back(&target);
    ReleaseTree(files, attributes).validate();
}

} // namespace vo::updater::detail
