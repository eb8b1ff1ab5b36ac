#include <IO/VoFileByteStream.h>

#include <Core/VoByteArray.h>
#include <Core/VoFileException.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>
#include <IO/detail/BufferedFile.h>

#include <exception>
#include <ios>
#include <utility>

namespace {

std::unique_ptr<vo::detail::BufferedFile> OpenFile(const VoFilePath& path, std::ios_base::openmode mode)
{
    vo::detail::RequireValidLength(path);
    auto file = std::make_unique<vo::detail::BufferedFile>();
    file->open(vo::detail::ToNative(path), mode | std::ios_base::binary);
    return file;
}

// A stream that was moved from has no file to name.
[[noreturn]] void FailWriting(vo::detail::BufferedFile* file)
{
    if (file)
        file->failWriting();
    throw VoIOException("Error occurred on writing to file");
}

[[noreturn]] void FailReading(vo::detail::BufferedFile* file)
{
    if (file)
        file->failReading();
    throw VoIOException("Error occurred on reading from file");
}

} // namespace

struct VoFileInputByteStream::Private
{
    std::unique_ptr<vo::detail::BufferedFile> file;
    bool eof = false;
};

VoFileInputByteStream::VoFileInputByteStream(const VoFilePath& path)
    : m_private(new Private{OpenFile(path, std::ios_base::in)})
{
}

VoFileInputByteStream::VoFileInputByteStream(VoFileInputByteStream&& other) noexcept = default;

VoFileInputByteStream& VoFileInputByteStream::operator=(VoFileInputByteStream&& other) noexcept = default;

VoFileInputByteStream::~VoFileInputByteStream() = default;

bool VoFileInputByteStream::isOpen() const noexcept
{
    return m_private && m_private->file->isOpen();
}

void VoFileInputByteStream::requireOpen() const
{
    if (isOpen())
        return;
    if (m_private)
        m_private->file->failOpening();
    throw VoCannotOpenFileException(VoFilePath());
}

std::size_t VoFileInputByteStream::read(char* data, std::size_t count)
{
    if (!isOpen())
        FailReading(m_private ? m_private->file.get() : nullptr);
    try {
        const std::size_t taken = m_private->file->read(data, count);
        m_private->eof = taken < count;
        return taken;
    } catch (const std::exception&) {
        FailReading(m_private->file.get());
    }
}

bool VoFileInputByteStream::atEnd() const
{
    if (!isOpen())
        return true;
    try {
        return m_private->file->atEnd();
    } catch (const std::exception&) {
        return false; // the next read tells
    }
}

bool VoFileInputByteStream::eof() const noexcept
{
    return m_private && m_private->eof;
}

struct VoFileOutputByteStream::Private
{
    std::unique_ptr<vo::detail::BufferedFile> file;
};

VoFileOutputByteStream::VoFileOutputByteStream(const VoFilePath& path)
    : m_private(new Private{OpenFile(path, std::ios_base::out | std::ios_base::trunc)})
{
}

VoFileOutputByteStream::VoFileOutputByteStream(VoFileOutputByteStream&& other) noexcept = default;

VoFileOutputByteStream& VoFileOutputByteStream::operator=(VoFileOutputByteStream&& other) noexcept = default;

VoFileOutputByteStream::~VoFileOutputByteStream() = default;

bool VoFileOutputByteStream::isOpen() const noexcept
{
    return m_private && m_private->file->isOpen();
}

void VoFileOutputByteStream::write(const char* data, std::size_t count)
{
    if (!isOpen() || !m_private->file->write(data, count))
        FailWriting(m_private ? m_private->file.get() : nullptr);
}

void VoFileOutputByteStream::write(const VoByteArray& bytes)
{
    write(bytes.cdata(), bytes.size());
}

void VoFileOutputByteStream::flush()
{
    if (!isOpen() || !m_private->file->flush())
        FailWriting(m_private ? m_private->file.get() : nullptr);
}

void VoFileOutputByteStream::close()
{
    if (isOpen() && !m_private->file->close())
        FailWriting(m_private ? m_private->file.get() : nullptr);
}
