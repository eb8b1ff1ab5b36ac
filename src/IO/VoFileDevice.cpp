#include <IO/VoFileDevice.h>

#include <Core/VoException.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>
#include <IO/detail/BufferedFile.h>

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

using OpenMode = std::ios_base::openmode;

constexpr OpenMode In = std::ios_base::in;
constexpr OpenMode Out = std::ios_base::out;
constexpr OpenMode AtEnd = std::ios_base::app;
constexpr OpenMode Emptied = std::ios_base::trunc;

bool Has(VoIODevice::Mode mode, VoIODevice::Mode flags)
{
    return (mode & flags) == flags;
}

// The mode in which the standard library opens the file; 0 when it is to be neither read nor written.
OpenMode StandardMode(VoIODevice::Mode mode, bool exists)
{
    if (Has(mode, VoIODevice::ReadWrite))
        return In | Out | (exists && !Has(mode, VoIODevice::Truncate) ? AtEnd : Emptied);
    if (Has(mode, VoIODevice::Read))
        return In;
    if (Has(mode, VoIODevice::Append))
        return Out | AtEnd;
    if (Has(mode, VoIODevice::Write) || Has(mode, VoIODevice::Truncate))
        return Out | Emptied;
    return OpenMode();
}

// Reads through the standard library, whose failures become ours.
template <typename Result, typename Function>
Result Reading(vo::detail::BufferedFile& file, Function function)
{
    try {
        return function();
    } catch (const std::bad_alloc&) {
        throw VoBadAllocException("file content");
    } catch (const std::length_error&) {
        throw VoBadAllocException("file content");
    } catch (const std::exception&) {
        file.failReading();
    }
}

} // namespace

struct VoFileDevice::Private
{
    explicit Private(VoFilePath filePath)
        : path(std::move(filePath))
    {
    }

    const VoFilePath path;
    vo::detail::BufferedFile file;
};

VoFileDevice::VoFileDevice()
    : VoFileDevice(VoFilePath())
{
}

VoFileDevice::VoFileDevice(const VoFilePath& path)
    : m_private(std::make_unique<Private>(path))
{
}

VoFileDevice::VoFileDevice(const VoString& path)
    : VoFileDevice(VoFilePath(path))
{
}

VoFileDevice::VoFileDevice(const char* path)
    : VoFileDevice(VoFilePath(path))
{
}

VoFileDevice::VoFileDevice(VoFileDevice&& other) noexcept = default;

VoFileDevice& VoFileDevice::operator=(VoFileDevice&& other) noexcept = default;

VoFileDevice::~VoFileDevice() = default;

const VoFilePath& VoFileDevice::path() const
{
    static const auto& none = *new VoFilePath; // outlives all static objects
    return m_private ? m_private->path : none;
}

VoString VoFileDevice::reason() const
{
    return m_private ? m_private->file.reason() : VoString();
}

void VoFileDevice::flush()
{
    if (m_private && !m_private->file.flush())
        failWrite();
}

std::size_t VoFileDevice::tell_read() const
{
    if (!m_private)
        return 0;
    constexpr std::uint64_t largest = std::numeric_limits<std::size_t>::max();
    return static_cast<std::size_t>(std::min(m_private->file.readPosition(), largest));
}

void VoFileDevice::seek_read(std::size_t position)
{
    if (m_private)
        m_private->file.seekRead(position);
}

void VoFileDevice::seek_write(std::size_t position)
{
    if (m_private && !m_private->file.seekWrite(position))
        failWrite();
}

bool VoFileDevice::atEnd() const
{
    if (!m_private)
        return true;
    try {
        return m_private->file.atEnd();
    } catch (const std::exception&) {
        return false; // the next read tells
    }
}

VoString VoFileDevice::onReadAll()
{
    seek_read(0);
    return onReadRemaining();
}

VoString VoFileDevice::onReadRemaining()
{
    return onRead(std::numeric_limits<std::size_t>::max());
}

VoString VoFileDevice::onReadLine(std::size_t maximumLength)
{
    return Reading<VoString>(m_private->file, [&] { return VoString(m_private->file.readLine(maximumLength)); });
}

void VoFileDevice::onClose()
{
    if (!m_private->file.close())
        failWrite();
}

bool VoFileDevice::onOpen(Mode mode)
{
    if (!m_private)
        m_private = std::make_unique<Private>(VoFilePath());
    vo::detail::RequireValidLength(path());
    const std::filesystem::path native = vo::detail::ToNative(path());
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(native, ignored);
    const bool reading = Has(mode, Read) && !Has(mode, Write);
    if (reading && status.type() == std::filesystem::file_type::not_found)
        throw VoFileNotFoundException(path());
    // What cannot be looked at may be there, and is not to be emptied.
    const bool exists = status.type() != std::filesystem::file_type::not_found;
    const OpenMode standard = StandardMode(mode, exists);
    const OpenMode binary = Has(mode, Text) ? OpenMode() : std::ios_base::binary;
    if (standard != OpenMode() && m_private->file.open(native, standard | binary))
        return true;
    setError("Failed to open file in given mode");
    return false;
}

VoString VoFileDevice::onRead(std::size_t count)
{
    return Reading<VoString>(m_private->file, [&] { return VoString(m_private->file.read(count)); });
}

std::size_t VoFileDevice::onWrite(const VoString& text)
{
    return onWriteFrom(text.c_str(), text.size());
}

std::size_t VoFileDevice::onReadInto(char* data, std::size_t count)
{
    return Reading<std::size_t>(m_private->file, [&] { return m_private->file.read(data, count); });
}

std::size_t VoFileDevice::onWriteFrom(const char* data, std::size_t count)
{
    if (!m_private->file.write(data, count))
        failWrite();
    return count;
}

void VoFileDevice::failWrite()
{
    setError("Write failure");
    m_private->file.failWriting();
}
