#include <Download/detail/BodyDecoder.h>

#include <array>
#include <new>

#include <zlib.h>

namespace vo::detail {

namespace {

constexpr int GzipWindow = 15 + 16; // the largest window, and the header and trailer of gzip

} // namespace

struct BodyDecoder::Private
{
    z_stream stream = {};
    bool isWhole = true; // at the beginning, or at the end of a member, of which a body may have several
    std::array<char, 64 * 1024> buffer;
};

BodyDecoder::BodyDecoder()
    : m_private(std::make_unique<Private>())
{
    if (::inflateInit2(&m_private->stream, GzipWindow) != Z_OK)
        throw std::bad_alloc();
}

BodyDecoder::~BodyDecoder()
{
    ::inflateEnd(&m_private->stream);
}

bool BodyDecoder::isWhole() const noexcept
{
    return m_private->isWhole;
}

bool BodyDecoder::decode(const char* data, std::size_t size, const Sink& sink)
{
    z_stream& stream = m_private->stream;
    auto& buffer = m_private->buffer;
    // The interface does not know constants; the bytes are only read.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    stream.avail_in = static_cast<uInt>(size);
    for (;;) {
        if (m_private->isWhole) {
            if (stream.avail_in == 0)
                return true;
            m_private->isWhole = false;
            ::inflateReset(&stream);
        }
        stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream.avail_out = static_cast<uInt>(buffer.size());
        // Z_BUF_ERROR: nothing could be done with what there is, which is no fault of the body; isWhole() tells at its
        // end.
        const int result = ::inflate(&stream, Z_NO_FLUSH);
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
            return false;
        const std::size_t count = buffer.size() - stream.avail_out;
        if (count != 0 && !sink(buffer.data(), count))
            return true;
        m_private->isWhole = result == Z_STREAM_END;
        if (!m_private->isWhole && count < buffer.size())
            return true; // it wants more
    }
}

} // namespace vo::detail
