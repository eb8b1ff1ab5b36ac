#include <FileSystem/VoAtomicFileWriter.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>
#include <FileSystem/detail/TemporaryName.h>
#include <IO/VoIODevice.h>
#include <IO/VoIOException.h>

#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t BufferSize = std::size_t{64} * 1024;
constexpr std::size_t DirectSize = std::size_t{8} * 1024; // from here on a copy costs more than a call of the system

// A device, a pipe or a socket.
bool IsSpecial(const std::filesystem::file_status& status) noexcept
{
    return std::filesystem::is_character_file(status) || std::filesystem::is_block_file(status) ||
           std::filesystem::is_fifo(status) || std::filesystem::is_socket(status);
}

/// The new content on its way to the file beside the target. The first error stays.
class Content
{
public:
    void open(const VoFilePath& target, const std::filesystem::path& native, const std::filesystem::file_status& old)
    {
        m_old = old;
        // The new content is nobody's before it has the permissions of the old.
        const bool isReplacing = std::filesystem::is_regular_file(old);
        const auto access = isReplacing ? vo::detail::NewFileAccess::OwnerAtFirst : vo::detail::NewFileAccess::Usual;
        m_error = vo::detail::MakeUnderNewName([&] {
            m_path = vo::detail::SiblingPath(native);
            std::error_code made;
            m_file = vo::detail::NativeFile::CreateNew(m_path, access, made);
            return made;
        });
        if (m_error) {
            m_path.clear(); // whatever bears the name is somebody else's
            throw vo::detail::Because(m_error, VoCannotOpenFileException(target));
        }
        if (isReplacing)
            vo::detail::CopyAccessList(native, m_path);
        m_target = target;
    }

    ~Content() { discard(); }
    Content() = default;
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    bool write(const char* data, std::size_t size)
    {
        if (m_error)
            return false;
        if (m_buffer.size() + size > BufferSize)
            flush();
        if (m_buffer.empty() && size >= DirectSize) {
            if (!m_error)
                m_file.write(data, size, m_error);
        } else {
            m_buffer.reserve(BufferSize);
            m_buffer.insert(m_buffer.end(), data, data + size);
        }
        return !m_error;
    }

    void finish(bool forced)
    {
        flush();
        // A replaced file keeps its permissions; a link or a new file has none to keep.
        std::error_code ignored;
        if (std::filesystem::is_regular_file(m_old))
            std::filesystem::permissions(m_path, m_old.permissions(), ignored);
        if (!m_error && forced)
            m_file.sync(m_error);
        std::error_code closing;
        m_file.close(closing);
        if (!m_error)
            m_error = closing;
    }

    void rename(const std::filesystem::path& target)
    {
        vo::detail::RenameNative(m_path, target, m_error);
        if (!m_error)
            m_path.clear();
    }

    void discard() noexcept
    {
        std::error_code ignored;
        m_file.close(ignored);
        if (!m_path.empty())
            vo::detail::RemoveFile(m_path, ignored);
        m_path.clear();
    }

    const std::error_code& error() const noexcept { return m_error; }
    const std::filesystem::path& path() const noexcept { return m_path; }
    const VoFilePath& target() const noexcept { return m_target; }

private:
    void flush()
    {
        if (!m_error && !m_buffer.empty())
            m_file.write(m_buffer.data(), m_buffer.size(), m_error);
        m_buffer.clear();
    }

    VoFilePath m_target;
    vo::detail::NativeFile m_file;
    std::filesystem::path m_path;       // empty when there is nothing to remove
    std::filesystem::file_status m_old; // of the target
    std::vector<char> m_buffer;
    std::error_code m_error;
};

/// Writes into the content; for what wants a device.
class ContentDevice final : public VoIODevice
{
public:
    explicit ContentDevice(Content& content)
        : m_content(content)
    {
        open(Write);
    }

    void seek_read(std::size_t) override {}
    void seek_write(std::size_t) override {} // writes at its end
    bool atEnd() const override { return true; }

protected:
    void onClose() override {} // commit() tells whether everything arrived
    bool onOpen(Mode) override { return true; }
    VoString onRead(std::size_t) override { return VoString(); }
    std::size_t onWrite(const VoString& text) override { return onWriteFrom(text.c_str(), text.size()); }

    std::size_t onWriteFrom(const char* data, std::size_t count) override
    {
        if (m_content.write(data, count))
            return count;
        setError("Write failure");
        throw vo::detail::Completed(VoIOException("Error occurred on writing to file"), m_content.target().path(),
                                    VoString(m_content.error().message()));
    }

private:
    Content& m_content;
};

} // namespace

struct VoAtomicFileWriter::Private
{
    explicit Private(const VoFilePath& path)
        : target(path)
    {
    }

    [[noreturn]] void fail(const char* operation)
    {
        const std::error_code error = content.error();
        content.discard();
        throw vo::detail::Because(error, VoFileException(operation + VoString(error.message()), target, VoFilePath()));
    }

    VoFilePath target;
    std::filesystem::path native; // of the target
    Content content;
    std::unique_ptr<ContentDevice> device;
    bool committed = false;
};

VoAtomicFileWriter::VoAtomicFileWriter(const VoFilePath& target)
    : m_private(std::make_unique<Private>(target))
{
    vo::detail::RequireValidLength(target);
    if (!target.isFile())
        throw VoInvalidPathFileException(target);
    const std::filesystem::path& native = m_private->native = vo::detail::ToNative(target);
    std::error_code ignored;
    const std::filesystem::file_status old = vo::detail::LinkStatus(native, ignored);
    const std::filesystem::file_status shown =
        std::filesystem::is_symlink(old) ? vo::detail::TargetStatus(native, ignored) : old;
    if (std::filesystem::is_directory(shown))
        throw vo::detail::Because(std::make_error_code(std::errc::is_a_directory), VoInvalidPathFileException(target));
    // A file in the place of /dev/null would be found by every program of the machine.
    if (IsSpecial(shown))
        throw vo::detail::Completed(VoInvalidPathFileException(target), VoString(),
                                    "It is a device, a pipe or a socket, which no file can replace");
    m_private->content.open(target, native, old);
    m_private->device = std::make_unique<ContentDevice>(m_private->content);
}

VoAtomicFileWriter::VoAtomicFileWriter(VoAtomicFileWriter&& other) noexcept = default;

VoAtomicFileWriter& VoAtomicFileWriter::operator=(VoAtomicFileWriter&& other) noexcept = default;

VoAtomicFileWriter::~VoAtomicFileWriter() = default;

VoAtomicFileWriter::Private& VoAtomicFileWriter::state()
{
    if (!m_private)
        throw VoInvalidCallException("No file to write");
    return *m_private;
}

VoIODevice& VoAtomicFileWriter::device()
{
    return *state().device;
}

void VoAtomicFileWriter::write(const char* data, std::size_t size)
{
    Private& file = state();
    if (file.committed)
        throw VoInvalidCallException("File already committed");
    if (!file.content.write(data, size))
        throw vo::detail::Because(file.content.error(),
                                  VoFileException("Cannot write file: " + VoString(file.content.error().message()),
                                                  file.target, VoFilePath()));
}

void VoAtomicFileWriter::commit(Durability durability)
{
    Private& data = state();
    if (data.committed)
        throw VoInvalidCallException("File already committed");
    data.committed = true;
    data.device->close();
    const bool forced = durability == Durability::Forced;
    data.content.finish(forced);
    if (data.content.error())
        data.fail("Cannot write file: ");
    data.content.rename(data.native);
    if (data.content.error())
        data.fail("rename: ");
    if (!forced)
        return;
    // The content has arrived; whether the name survives a loss of power this instant is beyond saying.
    std::error_code ignored;
    vo::detail::SyncDirectory(data.native.parent_path(), ignored);
}

VoFilePath VoAtomicFileWriter::temporary() const
{
    return m_private ? vo::detail::FromNative(m_private->content.path()) : VoFilePath();
}

const VoFilePath& VoAtomicFileWriter::target() const noexcept
{
    static const auto& none = *new VoFilePath; // outlives all static objects
    return m_private ? m_private->target : none;
}
