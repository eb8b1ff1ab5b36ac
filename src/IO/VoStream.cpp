#include <IO/VoStream.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

namespace {

using Traits = std::istream::traits_type;

// How many bytes lie before the next `character`; -1 when there is none. Moves the stream.
std::streamoff Distance(std::streambuf& buffer, char character)
{
    std::streamoff distance = 0;
    for (Traits::int_type next = buffer.sgetc(); !Traits::eq_int_type(next, Traits::eof()); next = buffer.snextc()) {
        if (Traits::to_char_type(next) == character)
            return distance;
        ++distance;
    }
    return -1;
}

} // namespace

VoStream::VoStream() = default;

VoStream::~VoStream() = default;

bool VoStream::good() const
{
    return standard().good();
}

bool VoStream::bad() const
{
    return standard().bad();
}

bool VoStream::fail() const
{
    return standard().fail();
}

bool VoStream::eof() const
{
    return standard().eof();
}

std::streampos VoStream::eof_pos()
{
    return std::streampos(std::streamoff(-1));
}

VoInputStream::VoInputStream() = default;

VoInputStream::~VoInputStream() = default;

VoString VoInputStream::getLine()
{
    std::string line;
    std::getline(stream(), line);
    return VoString(std::move(line));
}

std::streampos VoInputStream::find(char character)
{
    std::istream& in = stream();
    if (in.eof() && !in.bad())
        in.clear(); // having met the end must not keep it from going back
    const std::streampos start = in.tellg();
    if (start == eof_pos())
        return start;
    std::streamoff distance = -1;
    try {
        distance = Distance(*in.rdbuf(), character);
    } catch (const std::exception&) {
        in.setstate(std::ios_base::badbit);
        return eof_pos();
    }
    in.seekg(start);
    return distance < 0 ? eof_pos() : start + distance;
}

bool VoInputStream::seek(char character)
{
    const std::streampos place = find(character);
    if (place == eof_pos())
        return false;
    stream().seekg(place);
    return !fail();
}

int VoInputStream::get()
{
    const Traits::int_type next = stream().get();
    return Traits::eq_int_type(next, Traits::eof()) ? -1 : next;
}

void VoInputStream::ignore()
{
    stream().ignore();
}

void VoInputStream::ignore(std::size_t count)
{
    constexpr auto largest = static_cast<std::size_t>(std::numeric_limits<std::streamsize>::max() - 1);
    stream().ignore(static_cast<std::streamsize>(std::min(count, largest)));
}

VoOutputStream::VoOutputStream() = default;

VoOutputStream::~VoOutputStream() = default;

VoOutputStream& VoOutputStream::operator<<(const VoString& text)
{
    stream().write(text.c_str(), static_cast<std::streamsize>(text.size()));
    return *this;
}

void VoOutputStream::flush()
{
    stream().flush();
}

struct VoFileInputStream::Private
{
    std::ifstream stream;
};

VoFileInputStream::VoFileInputStream(const VoFilePath& path)
    : m_private(std::make_unique<Private>())
{
    vo::detail::RequireValidLength(path);
    m_private->stream.open(vo::detail::ToNative(path), std::ios_base::in | std::ios_base::binary);
}

VoFileInputStream::~VoFileInputStream() = default;

std::istream& VoFileInputStream::stream()
{
    return m_private->stream;
}

const std::ios& VoFileInputStream::standard() const
{
    return m_private->stream;
}

struct VoStringInputStream::Private
{
    std::istringstream stream;
};

VoStringInputStream::VoStringInputStream(const VoString& text)
    : m_private(std::make_unique<Private>())
{
    m_private->stream.str(text.toStdString());
}

VoStringInputStream::~VoStringInputStream() = default;

std::istream& VoStringInputStream::stream()
{
    return m_private->stream;
}

const std::ios& VoStringInputStream::standard() const
{
    return m_private->stream;
}

struct VoFileOutputStream::Private
{
    std::ofstream stream;
};

VoFileOutputStream::VoFileOutputStream(const VoFilePath& path)
    : m_private(std::make_unique<Private>())
{
    vo::detail::RequireValidLength(path);
    m_private->stream.open(vo::detail::ToNative(path), std::ios_base::out | std::ios_base::binary);
}

VoFileOutputStream::~VoFileOutputStream() = default;

std::ostream& VoFileOutputStream::stream()
{
    return m_private->stream;
}

const std::ios& VoFileOutputStream::standard() const
{
    return m_private->stream;
}

struct VoStringOutputStream::Private
{
    std::ostringstream stream;
};

VoStringOutputStream::VoStringOutputStream()
    : m_private(std::make_unique<Private>())
{
}

VoStringOutputStream::~VoStringOutputStream() = default;

VoString VoStringOutputStream::toString() const
{
    return VoString(m_private->stream.str());
}

std::ostream& VoStringOutputStream::stream()
{
    return m_private->stream;
}

const std::ios& VoStringOutputStream::standard() const
{
    return m_private->stream;
}
