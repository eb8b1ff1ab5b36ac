#pragma once

#include <Core/VoChecksum.h>
#include <Core/VoExport.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace vo::detail {

/// Takes a SHA3-256 digest while bytes pass, so that nothing has to be read twice.
class VOCORE_PRIVATE_EXPORT Sha3
{
public:
    Sha3();
    ~Sha3();
    Sha3(Sha3&& other) noexcept;
    Sha3& operator=(Sha3&& other) noexcept;

    /// Adds a block of any size.
    void add(const char* data, std::size_t size);
    /// The digest of everything added since construction or the last finish(); begins anew.
    VoChecksum finish();
    /// The checksum whose bytes these are: 32, unless it was read from a damaged text.
    static VoChecksum Digest(const char* bytes, std::size_t size = 32);
    /// The bytes of a checksum, valid as long as it; none of a null one.
    static std::string_view Bytes(const VoChecksum& checksum);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::detail
