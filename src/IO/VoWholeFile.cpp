#include <IO/VoWholeFile.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>

#include <system_error>

namespace vo {

using namespace detail;

std::optional<std::string> ReadWholeFile(const VoFilePath& path, std::size_t most)
{
    std::error_code error;
    NativeFile file = NativeFile::OpenForReading(ToNative(path), error);
    if (error == std::errc::no_such_file_or_directory)
        throw VoFileNotFoundException(path);
    if (!file.isOpen())
        throw Because(error, VoCannotOpenFileException(path));

    std::string text;
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + FileBlockSize);
        text.resize(size + file.read(text.data() + size, FileBlockSize, error));
        if (error)
            throw Because(error, Completed(VoIOException("Error occurred on reading from file"), path.path()));
        if (text.size() > most)
            return std::nullopt;
        if (text.size() < size + FileBlockSize)
            return text;
    }
}

} // namespace vo
