#include <Updater/detail/documents/ListedFile.h>

#include <Core/VoString.h>

namespace vo::updater::detail {

const FileTable& ListedFile::NoFile()
{
    static const FileTable& table = []() -> const FileTable& {
        auto& made = *new FileTable; // outlives all static objects
        made.add(VoUUID(""), VoChecksum(), 0, VoString());
        return made;
    }();
    return table;
}

const FileTable& NoFiles()
{
    static const FileTable& table = *new FileTable; // outlives all static objects
    return table;
}

} // namespace vo::updater::detail
