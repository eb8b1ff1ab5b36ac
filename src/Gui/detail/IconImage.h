#pragma once

#include <Gui/VoIcons.h>

#include <QtCore/QByteArray>
#include <QtGui/QImage>

namespace vo::detail {

/// One image of an icon, as it was registered.
struct IconImage
{
    QByteArray bytes;
    int size = 0; ///< The longer side of a PNG image; 0 of SVG, which has any.
    VoIcons::Background background = VoIcons::Background::Any;
    bool recolours = false; ///< Whether its colours are the library's own, which have others before a dark window.
};

/// What an image is, from its bytes; null bytes for what is no icon.
IconImage RecogniseIcon(const QByteArray& bytes);

/// Draws an image in the middle of a square of so many pixels.
QImage DrawIcon(const IconImage& image, int pixels, bool isDark);

/// Grey and pale.
QImage Disabled(const QImage& image);

} // namespace vo::detail
