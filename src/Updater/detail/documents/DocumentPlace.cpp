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

std::pair<DocumentPlace, VoFilePath> DocumentPlace::Of(const VoLocation& document, const VoStopFlag& stop,
                                                       const VoDownloadPolicy& downloads)
{
    if (!document.isUrl())
        return {DocumentPlace(document.file().parent()), VoFilePath(VoString(document.file().filename()))};
    DocumentPlace place(document.url().parent(), stop, downloads);
    place.m_openedName = VoFilePath(document.url().filename());
    place.m_opened = document;
    return {place, place.m_openedName};
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
    DocumentPlace above = parent().parent().parent();
    const VoUrl* url = std::get_if<VoUrl>(&m_folder);
    if (definition.isNull())
        return {*this, definition};
    std::string text = (url ? url->appended(definition).path() : nameOf(definition)).toStdString();
    const VoFilePath packages(Layout::PackagesDirectory);
    const std::string start = (url ? above.locationOf(packages).url().path() : above.nameOf(packages)).toStdString();
    const char separator = url ? '/' : '\\';
    if (text.compare(0, start.size() + 1, start + separator) != 0)
        return {*this, definition};
    text.erase(0, start.size() - packages.path().size());
    above.m_openedName = VoFilePath(VoString(std::move(text)));
    return {above, above.m_openedName};
}

VoLocation DocumentPlace::locationOf(const VoFilePath& relative) const
{
    if (!m_opened.isNull() && relative.path().equal(m_openedName.path(), VoString::CaseSensitive))
        return m_opened;
    if (const VoUrl* url = std::get_if<VoUrl>(&m_folder))
        return url->appended(relative);
    return std::get<VoDirectoryPath>(m_folder).appended(relative);
}

VoString DocumentPlace::nameOf(const VoFilePath& relative) const
{
    const VoLocation location = locationOf(relative);
    return location.isUrl() ? vo::detail::DisplayText(location.url()) : location.toString();
}

VoString DocumentPlace::read(const VoFilePath& relative, std::uint64_t most) const
{
    if (const VoDirectoryPath* folder = std::get_if<VoDirectoryPath>(&m_folder))
        return ReadDocument(folder->appended(relative), most);
    const VoTemporaryFile file = FetchDocument(locationOf(relative).url(), m_stop, m_downloads, most);
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
