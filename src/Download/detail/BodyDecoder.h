#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace vo::detail {

/// Takes the content coding "gzip" off a body as it arrives.
class VOCORE_PRIVATE_EXPORT BodyDecoder
{
public:
    /// Takes decoded bytes; false ends the decoding of what has come.
    using Sink = std::function<bool(const char* data, std::size_t size)>;

    BodyDecoder();
    ~BodyDecoder();

    /// Hands on what the bytes decode to, in pieces of bounded size: a few bytes can become a thousand times as many.
    /// False when they are not what they should be.
    bool decode(const char* data, std::size_t size, const Sink& sink);
    /// Whether the body may end here.
    bool isWhole() const noexcept;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::detail
