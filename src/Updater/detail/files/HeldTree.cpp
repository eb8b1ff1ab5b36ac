#include <Updater/detail/files/HeldTree.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/detail/files/Containment.h>

#include <string_view>

namespace vo::updater::detail {

namespace {

namespace fs = std::filesystem;
using vo::detail::NativeFolder;
using vo::detail::ToNative;

// The innermost of this thread.
thread_local const HeldTree* innermost = nullptr;

bool IsIn(const VoFilePath& path, const VoDirectoryPath& directory)
{
    const std::string_view text = Bytes(path);
    const std::string_view root = Bytes(directory);
    return text.size() > root.size() && text.compare(0, root.size(), root) == 0;
}

// REQUIRES that the path lies in the directory by its text.
fs::path RelativeFolder(const VoDirectoryPath& directory, const VoFilePath& path)
{
    const std::size_t length = Bytes(directory).size();
    return ToNative(VoFilePath::CreateUnchecked(path.path().substring(length).toString())).parent_path();
}

} // namespace

HeldTree::HeldTree(const VoDirectoryPath& root)
    : m_root(root)
    , m_outer(innermost)
    , m_anchorPath(root)
{
    innermost = this;
    if (!NativeFolder::CanHold() || root.isNull())
        return;
    m_anchor = NativeFolder::Open(ToNative(m_anchorPath), m_error);
    while (m_error && vo::detail::MeansMissing(m_error) && !m_anchorPath.parent().isNull()) {
        m_anchorPath = m_anchorPath.parent();
        m_anchor = NativeFolder::Open(ToNative(m_anchorPath), m_error);
    }
    if (m_error || Bytes(m_anchorPath) != Bytes(m_root))
        return;
    m_rootFolder = m_anchor.openBelow({}, m_error);
    if (!m_error)
        m_realRoot = fs::canonical(ToNative(m_root), m_error);
}

HeldTree::~HeldTree()
{
    innermost = m_outer;
}

// What it holds: what lies in the root, and the directories between that and the one that is held.
bool HeldTree::reaches(const VoFilePath& path) const
{
    if (!NativeFolder::CanHold() || m_root.isNull())
        return false;
    if (IsIn(path, m_root))
        return true;
    const std::string_view text = Bytes(path);
    const std::string_view root = Bytes(m_root);
    return IsIn(path, m_anchorPath) && text.size() < root.size() && root.compare(0, text.size(), text) == 0 &&
           root[text.size()] == '\\';
}

const HeldTree* HeldTree::Find(const VoFilePath& path)
{
    const HeldTree* found = nullptr;
    for (const HeldTree* tree = innermost; tree; tree = tree->m_outer) {
        if (tree->reaches(path) && (!found || Bytes(tree->m_root).size() >= Bytes(found->m_root).size()))
            found = tree;
    }
    return found;
}

NativeFolder HeldTree::open(const VoFilePath& path, std::error_code& error) const
{
    error = m_error;
    if (error)
        return {};
    if (!IsIn(path, m_root))
        return m_anchor.openBelow(RelativeFolder(m_anchorPath, path), error);
    if (!m_rootFolder.isOpen()) {
        m_rootFolder = m_anchor.openBelow(RelativeFolder(m_anchorPath, m_root.file("x")), error);
        if (!error)
            m_realRoot = fs::canonical(ToNative(m_root), error);
        if (error) {
            m_rootFolder = {};
            return {};
        }
    }
    return openInRoot(RelativeFolder(m_root, path), path, error);
}

// One call where the system has it. Without it, and for absolute links, which may stay inside as well, the links are
// resolved first; should others take their places meanwhile, they are not followed.
NativeFolder HeldTree::openInRoot(const fs::path& relative, const VoFilePath& path, std::error_code& error) const
{
    NativeFolder folder = m_rootFolder.openInside(relative, error);
    if (!error || vo::detail::MeansMissing(error))
        return folder;
    const fs::path real = fs::canonical(m_realRoot / relative, error);
    if (error)
        return {};
    const fs::path inside = real.lexically_relative(m_realRoot);
    if (inside.empty() || *inside.begin() == "..")
        throw VoFileException("Link leads out of the installation: " + path.parent().path(), path);
    return m_rootFolder.openBelow(inside == "." ? fs::path() : inside, error);
}

HeldPlace HeldPlace::Of(const VoFilePath& path, std::error_code& error)
{
    error.clear();
    HeldPlace place;
    place.name = ToNative(path);
    if (const HeldTree* tree = HeldTree::Find(path)) {
        place.folder = tree->open(path, error);
        place.name = place.name.filename();
    }
    return place;
}

fs::path HeldPlace::siblingName(const VoFilePath& other) const
{
    const fs::path whole = ToNative(other);
    return folder.isOpen() ? whole.filename() : whole;
}

} // namespace vo::updater::detail
