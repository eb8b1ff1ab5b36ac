#include <Updater/detail/documents/DocumentPlace.h>

#include <Core/VoFileException.h>
#include <Download/VoDownloadException.h>
#include <Download/detail/DownloadFailure.h>
#include <FileSystem/VoUrl.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/detail/documents/RemoteDocument.h>
#include <Updater/detail/documents/UpdaterPaths.h>

#include <string>
#include <utility>

namespace vo::updater::detail {

namespace {

// Whether the server says that there is no such document for us. Storage services answer 403 for what is not there.
bool SaysMissing(const VoDownloadException& failure)
{
    return failure.httpStatus() == 403 || failure.httpStatus() == 404 || failure.httpStatus() == 410;
}

VoFilePath NameOf(const VoLocation& document)
{
    return VoFilePath(document.isUrl() ? document.url().filename() : VoString(document.file().filename()));
}

// The folder of a document, without its last separator: beside it are the documents of the folder above.
VoLocation FolderOf(const VoLocation& document)
{
    const VoString folder = document.isUrl() ? document.url().parent().toString() : document.file().parent().path();
    if (folder.size() <= 1)
        return VoFilePath();
    VoString name = folder.substring(0, folder.size() - 1).toString();
    return document.isUrl() ? VoLocation(VoUrl(name)) : VoFilePath::CreateUnchecked(std::move(name));
}

VoString PathOf(const VoLocation& location)
{
    return location.isUrl() ? location.url().path() : location.toString();
}

} // namespace

DocumentPlace::DocumentPlace(const VoDirectoryPath& folder)
    : m_document(folder.file(ReleaseManifest::FileName))
{
}

DocumentPlace::DocumentPlace(const VoLocation& document, const VoStopFlag& stop, const VoDownloadPolicy& downloads)
    : m_document(document)
    , m_openedName(NameOf(document))
    , m_opened(document)
    , m_stop(stop)
    , m_downloads(downloads)
{
}

std::pair<DocumentPlace, VoFilePath> DocumentPlace::Of(const VoLocation& document, const VoStopFlag& stop,
                                                       const VoDownloadPolicy& downloads)
{
    DocumentPlace place(document, stop, downloads);
    return {place, place.m_openedName};
}

DocumentPlace DocumentPlace::parent() const
{
    DocumentPlace above = *this;
    above.m_document = FolderOf(m_document);
    return above;
}

std::pair<DocumentPlace, VoFilePath> DocumentPlace::ofPublication(const VoFilePath& definition) const
{
    if (definition.isNull())
        return {*this, definition};
    DocumentPlace above = parent().parent().parent();
    const VoFilePath packages(Layout::PackagesDirectory);
    std::string text = PathOf(m_document.beside(definition)).toStdString();
    const std::string start = PathOf(above.m_document.beside(packages)).toStdString();
    const char separator = m_document.isUrl() ? '/' : '\\';
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
    return m_document.beside(relative);
}

VoString DocumentPlace::nameOf(const VoFilePath& relative) const
{
    const VoLocation location = locationOf(relative);
    return location.isUrl() ? vo::detail::DisplayText(location.url()) : location.toString();
}

VoString DocumentPlace::read(const VoFilePath& relative, std::uint64_t most) const
{
    const DocumentFile document(locationOf(relative), m_stop, m_downloads, most);
    return ReadDocument(document.path(), most);
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
