#pragma once

#include <IO/VoIODevice.h>

/// A device over a string in memory.
///
/// Opening places both positions at the beginning, the one for writing at the end when the mode has Append. Content is
/// kept unless the mode has Truncate, also by plain Write, which therefore overwrites from the beginning and leaves the
/// tail of longer content: who writes a document starts from an empty device. Writing past the end grows the content; a
/// gap left by seek_write() is filled with zero bytes.
///
/// A mode without any of Read, Write, Append and Truncate is refused with "Failed to open file in given mode".
class VOCORE_EXPORT VoStringDevice : public VoIODevice
{
public:
    VoStringDevice();                                 ///< With empty content.
    explicit VoStringDevice(const VoString& content); ///< With the given content.
    explicit VoStringDevice(VoString&& content);      ///< With the given content.
    explicit VoStringDevice(const char* content);     ///< With the given content.
    ~VoStringDevice() override;

    const VoString& content() const; ///< The whole content, whether the device is open or not.

    void seek_read(std::size_t position) override;
    void seek_write(std::size_t position) override;
    bool atEnd() const override;

protected:
    VoString onReadRemaining() override;
    VoString onReadLine(std::size_t maximumLength) override;
    void onClose() override;
    bool onOpen(Mode mode) override;
    VoString onRead(std::size_t count) override;
    std::size_t onWrite(const VoString& text) override;
    std::size_t onReadInto(char* data, std::size_t count) override;

    /// @throws VoOverflowException when the content would outgrow what a string can hold
    std::size_t onWriteFrom(const char* data, std::size_t count) override;

private:
    struct Private;

    VoString take(std::size_t count);

    std::unique_ptr<Private> m_private;
};
