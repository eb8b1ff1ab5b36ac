#include <Documents/VoZipFile.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Documents/VoZipArchive.h>
#include <Documents/detail/VoZipArchiveInternal.h>

#include <algorithm>

namespace {

// Strings grow with what arrives: what an entry claims to hold may be a lie.
constexpr std::size_t FirstBlock = std::size_t{64} * 1024;

} // namespace

VoZipFile::VoZipFile(VoZipArchive& archive)
    : m_archive(&archive)
{
}

VoZipFile::~VoZipFile() = default;

void VoZipFile::seek_read(std::size_t position)
{
    if (position != 0)
        throw VoInvalidCallException("VoZipFile cannot be restarted");
}

void VoZipFile::seek_write(std::size_t)
{
    throw VoInvalidCallException("VoZipFile cannot be restarted");
}

bool VoZipFile::atEnd() const
{
    if (!m_archive || !m_archive->internal().input)
        return true;
    return m_archive->internal().input->atEnd();
}

VoFilePath VoZipFile::path() const
{
    const auto& input = archive().internal().input;
    if (!input)
        return VoFilePath();
    return VoFilePath(VoString(std::string(input->openName())));
}

VoZipArchive& VoZipFile::archive()
{
    if (!m_archive)
        throw VoNullPointerException("VoZipFile parent archive not set");
    return *m_archive;
}

const VoZipArchive& VoZipFile::archive() const
{
    return const_cast<VoZipFile*>(this)->archive();
}

VoString VoZipFile::onReadRemaining()
{
    return onRead(static_cast<std::size_t>(-1));
}

void VoZipFile::onClose() {}

bool VoZipFile::onOpen(Mode)
{
    return true;
}

VoString VoZipFile::onRead(std::size_t count)
{
    std::string bytes;
    std::size_t block = FirstBlock;
    do {
        const std::size_t done = bytes.size();
        const std::size_t wanted = std::min(expectedSize(count - done), block);
        bytes.resize(done + wanted);
        const std::size_t taken = onReadInto(bytes.data() + done, wanted);
        bytes.resize(done + taken);
        block *= 2;
    } while (bytes.size() < count && !atEnd());
    return VoString(std::move(bytes));
}

std::size_t VoZipFile::onWrite(const VoString& text)
{
    return onWriteFrom(text.c_str(), text.size());
}

std::size_t VoZipFile::onReadInto(char* data, std::size_t count)
{
    if (!m_archive)
        throw VoInvalidCallException("VoZipFile cannot be read from as it is not the active file");
    auto& input = *m_archive->internal().input;
    int code = vo::detail::ZipDone;
    std::size_t done = 0;
    do {
        done += input.read(data + done, count - done, code);
    } while (code == vo::detail::ZipDone && done < count && !input.atEnd());
    if (code != vo::detail::ZipDone)
        throw VoInvalidCallException("VoZipFile read failed: " + m_archive->errorMessage(code));
    return done;
}

std::size_t VoZipFile::onWriteFrom(const char* data, std::size_t count)
{
    if (!m_archive)
        throw VoInvalidCallException("VoZipFile cannot be written to as it is not the active file");
    if (const int code = m_archive->internal().output->write(data, count))
        throw m_archive->internal().writeFailure("VoZipFile write failed: " + m_archive->errorMessage(code));
    return count;
}

void VoZipFile::destroy() noexcept
{
    m_archive = nullptr;
}

// How much there is to read, as far as can be told.
std::size_t VoZipFile::expectedSize(std::size_t count) const
{
    if (!m_archive || !m_archive->internal().input)
        return 0;
    return static_cast<std::size_t>(std::min<std::uint64_t>(count, m_archive->internal().input->remaining()));
}
