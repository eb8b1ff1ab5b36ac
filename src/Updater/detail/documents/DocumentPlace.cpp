#include <Updater/detail/documents/DocumentPlace.h>

#include <Core/VoFileException.h>
#include <Download/VoDownloadException.h>
#include <Download/detail/DownloadFailure.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoTemporaryFile.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/UpdaterPaths.h>

#include <string>
#include <vector>

namespace vo::updater::detail {

namespace {

// Whether the server says that there is no such document for us. Storage services answer 403 for what is not there.
bool SaysMissing(const VoDownloadException& failure)
{
    return failure.httpStatus() == 403 || failure.httpStatus() == 404 || failure.httpStatus() == 410;
}

} // namespace

DocumentPlace::DocumentPlace(const VoDirectoryPath& folder)
    : m_folder(folder)
{
}

DocumentPlace::DocumentPlace(const VoUrl& folder, const VoStopFlag& stop, const VoDownloadPolicy& downloads)
    : m_folder(folder)
    , m_stop(stop)
    , m_downloads(downloads)
{
}

std::pair<DocumentPlace, VoFilePath> DocumentPlace::Of(const VoFilePath& document)
{
    return {DocumentPlace(document.parent()), VoFilePath(VoString(document.filename()))};
}

std::pair<DocumentPlace, VoFilePath> DocumentPlace::Of(const VoUrl& document, const VoStopFlag& stop,
                                                       const VoDownloadPolicy& downloads)
{
    return {DocumentPlace(document.parent(), stop, downloads), VoFilePath(document.filename())};
}

DocumentPlace DocumentPlace::parent() const
{
    DocumentPlace above = *this;
    if (const VoUrl* url = std::get_if<VoUrl>(&m_folder))
        above.m_folder = url->parent();
    else
        above.m_folder = std::get<VoDirectoryPath>(m_folder).parent();
    return above;
}

std::pair<DocumentPlace, VoFilePath> DocumentPlace::ofPublication(const VoFilePath& definition) const
{
    const DocumentPlace above = parent().parent().parent();
    std::string text = nameOf(definition).toStdString();
    const std::string start = above.nameOf(VoFilePath("packages")).toStdString();
    const char separator = std::holds_alternative<VoUrl>(m_folder) ? '/' : '\\';
    if (text.compare(0, start.size() + 1, start + separator) != 0)
        return {*this, definition};
    text.erase(0, start.size() - std::string("packages").size());
    return {above, VoFilePath(VoString(std::move(text)))};
}

VoUrl DocumentPlace::urlOf(const VoFilePath& relative) const
{
    return std::get<VoUrl>(m_folder).appended(relative);
}

VoString DocumentPlace::nameOf(const VoFilePath& relative) const
{
    if (std::holds_alternative<VoUrl>(m_folder))
        return vo::detail::DisplayText(urlOf(relative));
    return std::get<VoDirectoryPath>(m_folder).appended(relative).path();
}

VoString DocumentPlace::read(const VoFilePath& relative, std::uint64_t most) const
{
    if (const VoDirectoryPath* folder = std::get_if<VoDirectoryPath>(&m_folder))
        return ReadDocument(folder->appended(relative), most);
    const VoTemporaryFile file = FetchDocument(urlOf(relative), m_stop, m_downloads, most);
    return ReadDocument(file.path(), most);
}

std::optional<VoString> DocumentPlace::find(const VoFilePath& relative, std::uint64_t most) const
{
    try {
        return read(relative, most);
    } catch (const VoFileNotFoundException&) {
    } catch (const VoDownloadException& failure) {
        if (!SaysMissing(failure))
            throw;
    }
    return std::nullopt;
}

} // namespace vo::updater::detail
