#include <Updater/detail/files/FileInstaller.h>

#include <Core/VoChecksum.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/detail/NativePath.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/FileActions.h>

#include <system_error>

namespace vo::updater::detail {

using vo::detail::NativeFile;

VoFilePath BuiltPath(const VoFilePath& place)
{
    return VoFilePath::CreateUnchecked(place.path() + BuiltSuffix);
}

FileInstaller::FileInstaller(const VoFilePath& place, Durability durability, Digest digest)
    : m_place(place)
    , m_built(BuiltPath(place))
    , m_durability(durability)
{
    if (digest == Digest::Passing)
        m_digest.emplace();
    vo::detail::RequireValidLength(m_built);
    AtStep(FileStep::OpenFile, m_built.path());
    std::error_code error;
    m_file = MakeFile(m_built, error);
    if (error == std::errc::file_exists && EraseFile(m_built)) // left by a run that was killed
        m_file = MakeFile(m_built, error);
    require(error);
}

FileInstaller::~FileInstaller()
{
    if (m_isKept || !m_file.isOpen())
        return;
    try {
        m_file = NativeFile();
        EraseFile(m_built);
    } catch (...) {
        Log().warning("Cannot remove " + m_built.path() + ": " + CurrentExceptionText());
    }
}

void FileInstaller::write(const char* data, std::size_t size)
{
    AtStep(FileStep::WriteFile, m_built.path());
    std::error_code error;
    m_file.write(data, size, error);
    require(error);
    if (m_digest)
        m_digest->add(data, size);
    m_size += size;
}

bool FileInstaller::finish(const VoChecksum& checksum, std::uint64_t size)
{
    if (m_size != size || (m_digest && m_digest->finish() != checksum))
        return false;
    AtStep(FileStep::FinishFile, m_built.path());
    std::error_code error;
    if (m_durability == Durability::AtOnce)
        m_file.sync(error);
    require(error);
    m_file.close(error);
    m_isKept = !error;
    if (!m_isKept)
        EraseFile(m_built);
    require(error);
    if (m_digest)
        CopyPermissions(m_place, m_built);
    return true;
}

void FileInstaller::require(const std::error_code& error) const
{
    if (error)
        throw vo::detail::Because(
            error, VoFileException("Cannot write file: " + VoString(error.message()) + ": " + m_built.path(), m_place));
}

} // namespace vo::updater::detail
