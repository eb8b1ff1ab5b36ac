#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoString.h>
#include <Gui/VoGuiExport.h>

#include <cstdint>

class QIcon;
class VoFilePath;
class VoFileType;

/// The icons of a program, by name, in every size and for light and dark windows.
///
///     VoIcons::AddFile("part.resistor", directory.file("resistor.svg"));
///     action.setIcon(VoIcons::Icon("part.resistor"));
///
/// The library brings those that VoFileType::icon() names, and those of the usual actions under the names that desktops
/// have for them ("edit-undo", "document-save", ...). A name that nobody registered is looked for in the desktop's
/// theme; where that has none either, a placeholder that catches the eye is shown, and the category "icons" is warned
/// once.
///
/// Names ignore case; ":/GraphIcon.png", as file types have it, is the name "GraphIcon". Registering and PNG() may be
/// done from all threads and need no display, but for what the desktop's theme brings; Icon() is for the thread of the
/// graphical application. Images are drawn as they are given: register none from a stranger.
class VOCOREGUI_EXPORT VoIcons
{
public:
    VoIcons() = delete;

    /// What an icon stands before.
    enum class Background : std::int32_t
    {
        Any,   ///< Registering: for both. Drawing: as the application's windows are, light without one.
        Light, ///< A light window.
        Dark   ///< A dark window.
    };

    /// How an icon is drawn.
    enum class State : std::int32_t
    {
        Normal,  ///< As it is.
        Disabled ///< Grey and pale, for what cannot be used now.
    };

    /// @name Registering
    /// An image of SVG is drawn in every size. Of several PNG images of one name, the smallest is taken that is large
    /// enough, else the largest; and what is for a background before what is for any. An image in the place of an
    /// earlier one (same size and background) replaces it.
    /// @throws VoInvalidParameterException "Invalid icon: " + name, when the name is empty or the image is neither SVG
    ///         nor PNG, has more than 4 MiB or more than 4096 pixels on a side
    /// @{
    static void Add(const VoString& name, const VoByteArray& image, Background background = Background::Any);
    /// Reads a file, now. Throws what reading does.
    static void AddFile(const VoString& name, const VoFilePath& file, Background background = Background::Any);
    /// Reads a resource of the framework's, as ":/images/part.svg".
    /// @throws VoFileNotFoundException with the resource
    static void AddResource(const VoString& name, const VoString& resource, Background background = Background::Any);
    /// Takes the desktop's icon of that name first, from now on; what is registered stands in where the desktop has
    /// none.
    static void PreferTheme(const VoString& name, const VoString& themeName);
    /// @}

    static bool Contains(const VoString& name); ///< Whether the name is registered.
    static VoDeque<VoString> Names();           ///< The registered names, in the order of the alphabet.

    /// The icon of a name for the framework's widgets: drawn anew for each size, screen and state.
    /// @throws VoInvalidCallException "Icons need a graphical application" without one
    static QIcon Icon(const VoString& name);
    /// The icon of a type of files, of texts for those that have none.
    static QIcon Icon(const VoFileType& type);

    /// The icon as a PNG image. Its sides have `size` pixels of a screen of ratio 1, from 1 to 1024, and `ratio`
    /// pixels, from 1 to 4, for each of these.
    /// @throws VoDomainException for a size or a ratio beyond that
    static VoByteArray PNG(const VoString& name, int size, double ratio = 1, State state = State::Normal,
                           Background background = Background::Any);
};
