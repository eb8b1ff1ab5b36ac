#include <IO/VoFileWriter.h>

#include <Core/VoThrow.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoTemporaryFile.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <IO/VoQIODevice.h>

struct VoFileWriter::Private
{
    explicit Private(const VoFilePath& path)
        : file(path)
        , adapter(file)
    {
    }

    VoFileDevice file;
    VoQIODevice adapter;
};

VoFileWriter::VoFileWriter(const VoFilePath& path)
    : m_private(std::make_unique<Private>(path))
{
    if (!m_private->adapter.open(QIODevice::WriteOnly))
        throw vo::detail::Completed(VoIOException("Unable to open file for writing"), path.path(),
                                    m_private->file.reason());
}

VoFileWriter::VoFileWriter(const VoTemporaryFile& file)
    : VoFileWriter(file.path())
{
}

VoFileWriter::VoFileWriter(VoFileWriter&& other) noexcept = default;

VoFileWriter& VoFileWriter::operator=(VoFileWriter&& other) noexcept = default;

VoFileWriter::~VoFileWriter() = default;

QIODevice& VoFileWriter::device()
{
    if (!m_private)
        vo::detail::ThrowNullPointer("VoFileWriter has no device");
    return m_private->adapter;
}

void VoFileWriter::close()
{
    if (!m_private || !m_private->adapter.isOpen())
        return;
    m_private->adapter.close();
    m_private->adapter.rethrow();
}
