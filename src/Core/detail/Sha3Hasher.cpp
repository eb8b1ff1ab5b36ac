#include <Core/detail/Sha3Hasher.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>

namespace vo::detail {

struct Sha3::Private
{
    QCryptographicHash hash{QCryptographicHash::Sha3_256};
};

Sha3::Sha3()
    : m_private(std::make_unique<Private>())
{
}
Sha3::~Sha3() = default;
Sha3::Sha3(Sha3&& other) noexcept = default;
Sha3& Sha3::operator=(Sha3&& other) noexcept = default;

void Sha3::add(const char* data, std::size_t size)
{
    constexpr std::size_t largest = std::size_t{1} << 30; // the hash counts in int
    while (size != 0) {
        const std::size_t count = std::min(size, largest);
        m_private->hash.addData(QByteArray::fromRawData(data, static_cast<int>(count)));
        data += count;
        size -= count;
    }
}

VoChecksum Sha3::finish()
{
    VoChecksum checksum = VoChecksum::fromDigest(m_private->hash.result());
    m_private->hash.reset();
    return checksum;
}

VoChecksum Sha3::Digest(const char* bytes, std::size_t size)
{
    return VoChecksum::fromDigest(QByteArray(bytes, static_cast<int>(size)));
}

std::string_view Sha3::Bytes(const VoChecksum& checksum)
{
    const QByteArray& bytes = checksum.bytes();
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

} // namespace vo::detail
