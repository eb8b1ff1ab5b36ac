#include <Core/VoChecksum.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Completed.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>

#include <QtCore/QByteArray>

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string_view>
#include <system_error>
#include <utility>

using namespace vo::detail;

struct VoChecksum::Private
{
    QByteArray bytes;
};

namespace {

[[noreturn]] void ThrowCannotOpen(const VoFilePath& file, const std::filesystem::path& native,
                                  const std::error_code& error)
{
    std::error_code ignored;
    const auto status = std::filesystem::status(native, ignored);
    if (status.type() == std::filesystem::file_type::not_found)
        throw VoFileNotFoundException(file);
    if (status.type() == std::filesystem::file_type::directory)
        throw Because(std::make_error_code(std::errc::is_a_directory), VoInvalidPathFileException(file));
    throw Because(error, VoCannotOpenFileException(file));
}

VoChecksum DigestOf(const VoFilePath& path)
{
    RequireValidLength(path);
    const std::filesystem::path native = ToNative(path);
    std::error_code error;
    NativeFile file = NativeFile::OpenForReading(native, error);
    if (error)
        ThrowCannotOpen(path, native, error);

    const std::unique_ptr<char[]> block(new char[FileBlockSize]);
    Sha3 hasher;
    for (;;) {
        const std::size_t count = file.read(block.get(), FileBlockSize, error);
        if (error)
            throw Because(error, VoFileException("Cannot obtain file data", path, VoFilePath()));
        if (count == 0)
            return hasher.finish();
        hasher.add(block.get(), count);
    }
}

} // namespace

VoChecksum::VoChecksum() = default;
VoChecksum::VoChecksum(const QByteArray& data)
{
    Sha3 hasher;
    hasher.add(data.constData(), static_cast<std::size_t>(data.size()));
    *this = hasher.finish();
}
VoChecksum::VoChecksum(const VoFilePath& file)
    : VoChecksum(DigestOf(file))
{
}
VoChecksum::VoChecksum(const VoString& hexadecimal)
    : VoChecksum(fromDigest(QByteArray::fromHex(QByteArray(hexadecimal.c_str(), static_cast<int>(hexadecimal.size())))))
{
}
VoChecksum::VoChecksum(const VoChecksum& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}
VoChecksum::VoChecksum(VoChecksum&& other) noexcept = default;
VoChecksum& VoChecksum::operator=(const VoChecksum& other)
{
    return *this = VoChecksum(other);
}
VoChecksum& VoChecksum::operator=(VoChecksum&& other) noexcept = default;
VoChecksum::~VoChecksum() = default;

VoChecksum VoChecksum::fromDigest(const QByteArray& digest)
{
    VoChecksum checksum;
    checksum.m_private = std::make_unique<Private>(Private{digest});
    return checksum;
}

const QByteArray& VoChecksum::bytes() const noexcept
{
    static const QByteArray& none = *new QByteArray; // outlives all static objects
    return m_private ? m_private->bytes : none;
}

bool VoChecksum::isNull() const noexcept
{
    return !m_private;
}

VoString VoChecksum::toString() const
{
    const QByteArray text = bytes().toHex();
    return VoString(text.constData(), static_cast<std::size_t>(text.size()));
}

bool operator==(const VoChecksum& left, const VoChecksum& right) noexcept
{
    return left.bytes() == right.bytes();
}

bool operator!=(const VoChecksum& left, const VoChecksum& right) noexcept
{
    return !(left == right);
}

VoString VoChecksum::Serialize(const VoChecksum& checksum)
{
    return checksum.toString();
}

VoChecksum VoChecksum::Deserialize(const VoString& text)
{
    return VoChecksum(text);
}

std::ostream& operator<<(std::ostream& stream, const VoChecksum& checksum)
{
    return stream << checksum.toString();
}

std::size_t std::hash<VoChecksum>::operator()(const VoChecksum& checksum) const noexcept
{
    const QByteArray& bytes = checksum.bytes();
    return std::hash<std::string_view>()({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}
