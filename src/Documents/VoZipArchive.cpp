#include <Documents/VoZipArchive.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Documents/VoZipFile.h>
#include <Documents/detail/VoZipArchiveInternal.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <Subsystem/VoLogging.h>

#include <algorithm>
#include <system_error>

using vo::detail::ArchiveFile;
using vo::detail::ZipHandle;

namespace {

int Level(VoZipArchive::Compression compression)
{
    switch (compression) {
    case VoZipArchive::NoCompression:
        return 0;
    case VoZipArchive::Fastest:
        return 1;
    case VoZipArchive::Best:
        return 9;
    case VoZipArchive::Default:
        break;
    }
    return -1;
}

// Other programs know names with "/" only.
std::string StoredName(const VoFilePath& path)
{
    std::string name = path.path().toStdString();
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

const char* ReadMessage(int code)
{
    switch (code) {
    case vo::detail::ZipEndOfList:
        return "Unzip end of list of file";
    case vo::detail::ZipWrongParameter:
        return "Unzip param error";
    case vo::detail::ZipBadFile:
        return "Unzip bad zip file";
    case vo::detail::ZipInternalError:
        return "Unzip internal error";
    case vo::detail::ZipWrongChecksum:
        return "Unzip CRC error";
    default:
        return "Unzip faliure"; // spelt so in the messages that callers know
    }
}

const char* WriteMessage(int code)
{
    switch (code) {
    case vo::detail::ZipWrongParameter:
        return "Zip param error";
    case vo::detail::ZipBadFile:
        return "Zip bad zip file";
    case vo::detail::ZipInternalError:
        return "Zip internal error";
    default:
        return "Zip failure";
    }
}

std::unique_ptr<ArchiveFile> OpenForReading(const VoFilePath& path)
{
    if (!VoFileSystem::Exists(path))
        throw VoFileNotFoundException(path);
    const std::filesystem::path file = vo::detail::ToNative(path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) // a pipe would keep us waiting
        throw VoInvalidPathFileException("Not a zip archive", path);
    std::unique_ptr<ArchiveFile> opened = ArchiveFile::Open(file, false);
    if (!opened)
        throw VoInvalidPathFileException("Zip archive cannot be read", path);
    return opened;
}

ZipHandle OpenForWriting(const VoFilePath& path)
{
    ZipHandle archive(vo::detail::ToNative(path));
    if (!archive)
        throw VoInvalidPathFileException(path);
    return archive;
}

VoInvalidParameterException CannotOpen(const VoString& reason, const VoString& name)
{
    return VoInvalidParameterException("Cannot open zip archive file: " + reason + " in " + name);
}

} // namespace

VoZipArchive::VoZipArchive(const VoFilePath& path, Mode mode)
    : m_internal(std::make_unique<VoZipArchive_Internal>())
{
    m_internal->path = path;
    m_internal->mode = mode;
    if (mode != Read && mode != Write)
        throw VoInvalidParameterException("Unknown mode for zip/unzip");
    vo::detail::RequireValidLength(path);
    if (mode == Write)
        m_internal->output.emplace(OpenForWriting(path));
    else
        m_internal->input.emplace(OpenForReading(path), path);
    m_internal->closed = false;
}

VoZipArchive::~VoZipArchive()
{
    try {
        close();
    } catch (...) {
        vo::logging::Logger::Get("zip").error(vo::CurrentExceptionText());
    }
}

void VoZipArchive::close()
{
    detach();
    if (m_internal->closed)
        return;
    m_internal->closed = true;
    const int code = m_internal->output ? m_internal->output->close() : m_internal->input->close();
    if (code != vo::detail::ZipDone)
        throw m_internal->writeFailure("Cannot close zip archive file: " + errorMessage(code) + " in " +
                                       m_internal->path.path());
}

VoWeakPtr<VoZipFile> VoZipArchive::open(const VoFilePath& entryPath, Compression compression)
{
    if (m_internal->output)
        return openForWriting(entryPath, compression, 0);
    detach();
    if (m_internal->closed)
        requireOpened(vo::detail::ZipWrongParameter, entryPath.path());
    vo::detail::ZipInput& input = *m_internal->input;
    const std::size_t index = input.find(entryPath.path().toStdString());
    return openEntry(index, entryPath.path());
}

VoWeakPtr<VoZipFile> VoZipArchive::openForWriting(const VoFilePath& entryPath, Compression compression,
                                                  std::uint64_t expectedSize)
{
    detach();
    finishEntry();
    requireOpened(m_internal->output->open(StoredName(entryPath), Level(compression), expectedSize), entryPath.path());
    return activate();
}

VoWeakPtr<VoZipFile> VoZipArchive::openEntry(std::size_t index)
{
    return openEntry(index, VoString(std::string(m_internal->input->name(index))));
}

// The name is what a message shows.
VoWeakPtr<VoZipFile> VoZipArchive::openEntry(std::size_t index, const VoString& name)
{
    detach();
    vo::detail::ZipInput& input = *m_internal->input;
    const int code = input.open(index);
    if (code == vo::detail::ZipBadFile && input.entry(index).problem != vo::detail::ZipEntry::Problem::None)
        throw CannotOpen(vo::detail::ZipProblemText(input.entry(index)), name);
    requireOpened(code, name);
    return activate();
}

VoWeakPtr<VoZipFile> VoZipArchive::activate()
{
    m_internal->activeFile = VoSharedPtr<VoZipFile>(new VoZipFile(*this));
    m_internal->activeFile->open(m_internal->output ? VoIODevice::Write : VoIODevice::Read);
    return m_internal->activeFile;
}

VoDeque<VoFilePath> VoZipArchive::paths()
{
    if (!m_internal->input)
        throw VoInvalidCallException("Zip paths cannot be returned in write mode");
    detach();
    VoDeque<VoFilePath> paths;
    if (m_internal->closed)
        return paths;
    vo::detail::ZipInput& input = *m_internal->input;
    for (std::size_t i = 0; i < input.count(); ++i)
        paths.pushBack(VoFilePath(VoString(std::string(input.name(i)))));
    return paths;
}

VoZipArchive::Listing VoZipArchive::listing()
{
    if (!m_internal->input)
        throw VoInvalidCallException("Zip paths cannot be returned in write mode");
    Listing listing;
    if (m_internal->closed)
        return listing;
    vo::detail::ZipInput& input = *m_internal->input;
    for (std::size_t i = 0; i < input.count(); ++i)
        listing.entries.pushBack({VoString(std::string(input.name(i))), input.size(i)});
    listing.isComplete = input.complete();
    return listing;
}

VoString VoZipArchive::errorMessage(int code) const
{
    switch (m_internal->mode) {
    case Read:
        return ReadMessage(code);
    case Write:
        return WriteMessage(code);
    }
    return "Zip/Unzip Unknown error";
}

VoZipArchive::Mode VoZipArchive::mode() const noexcept
{
    return m_internal->mode;
}

VoZipArchive_Internal& VoZipArchive::internal() noexcept
{
    return *m_internal;
}

const VoZipArchive_Internal& VoZipArchive::internal() const noexcept
{
    return *m_internal;
}

void VoZipArchive::detach() noexcept
{
    if (m_internal->activeFile)
        m_internal->activeFile->destroy();
    m_internal->activeFile.reset();
}

// The entry before is compressed in full; what went wrong with it is not blamed on the next one.
void VoZipArchive::finishEntry()
{
    if (const int code = m_internal->output->finishEntry())
        throw m_internal->writeFailure("VoZipFile write failed: " + errorMessage(code));
}

void VoZipArchive::requireOpened(int code, const VoString& name) const
{
    if (code != vo::detail::ZipDone)
        throw CannotOpen(errorMessage(code), name);
}
