#include <IO/VoWholeFile.h>

#include <IO/detail/WholeFile.h>

namespace vo {

std::optional<std::string> ReadWholeFile(const VoFilePath& path, std::size_t most)
{
    return detail::ReadWholeFile(path, most);
}

} // namespace vo
