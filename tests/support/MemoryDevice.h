#pragma once

#include <Core/VoString.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <utility>

namespace vo::test {

/// A mode of any flags, also of those that none has.
inline VoIODevice::Mode ModeOf(unsigned flags)
{
    return static_cast<VoIODevice::Mode>(flags);
}

/// A device in memory with none but the hooks that must be there, so that what the base does by default shows. It fails
/// when it is told to.
class MemoryDevice : public VoIODevice
{
public:
    static constexpr std::size_t Unlimited = std::numeric_limits<std::size_t>::max();

    /// @throws VoIOException "device failed" once so many bytes have been read, or written
    explicit MemoryDevice(std::string content = {}, std::size_t bytesBeforeFailure = Unlimited)
        : readable(bytesBeforeFailure)
        , writable(bytesBeforeFailure)
        , m_content(std::move(content))
    {
    }

    std::size_t readable;                ///< Bytes until reading fails.
    std::size_t writable;                ///< Bytes until writing fails.
    std::size_t takenAtOnce = Unlimited; ///< More is not taken by one write.
    std::size_t vanishesAt = Unlimited;  ///< Where reads find nothing, though not at the end.
    std::size_t writes = 0;              ///< How often was written.

    const std::string& content() const { return m_content; }
    void seek_read(std::size_t position) override { m_position = position; }
    void seek_write(std::size_t) override {}
    bool atEnd() const override { return m_position >= m_content.size(); }

protected:
    void onClose() override {}
    bool onOpen(Mode) override
    {
        m_position = 0;
        return true;
    }

    VoString onRead(std::size_t count) override
    {
        if (m_position >= std::min(m_content.size(), vanishesAt))
            return VoString();
        const std::size_t taken = std::min({count, m_content.size() - m_position, readable});
        if (taken == 0 && count > 0)
            throw VoIOException("device failed");
        m_position += taken;
        readable -= taken;
        return VoString(m_content.substr(m_position - taken, taken));
    }

    std::size_t onWrite(const VoString& text) override
    {
        ++writes;
        const std::size_t taken = std::min({text.size(), takenAtOnce, writable});
        m_content.append(text.toStdString(), 0, taken);
        writable -= taken;
        if (taken < text.size() && writable == 0)
            throw VoIOException("device failed");
        return taken;
    }

private:
    std::string m_content;
    std::size_t m_position = 0;
};

} // namespace vo::test
