#include <Gui/detail/IconImage.h>

#include <Core/VoByteArray.h>
#include <Gui/detail/MimeTypes.h>

#include <QtCore/QBuffer>
#include <QtGui/QImageReader>
#include <QtGui/QPainter>
#include <QtSvg/QSvgRenderer>

#include <algorithm>

namespace vo::detail {

namespace {

constexpr int MostBytes = 4 << 20;
constexpr int LongestSide = 4096;

// The colours that the library's own icons are drawn with, and what they become before a dark window.
struct Recoloured
{
    const char* light;
    const char* dark;
};

constexpr Recoloured Colours[] = {
    {"#37474f", "#cfd8dc"}, // lines
    {"#ffffff", "#2f3b43"}, // paper
    {"#1769c4", "#6db3ff"}, // blue
    {"#e06a00", "#ffa64d"}, // orange
    {"#178a52", "#5fd39a"}, // green
    {"#7b34b8", "#c999f5"}, // purple
    {"#c62828", "#ff7d75"}, // red
    {"#90a0aa", "#8fa3ae"}, // grey
};

QByteArray OnDark(QByteArray svg)
{
    for (const Recoloured& colour : Colours)
        svg.replace(colour.light, colour.dark);
    return svg;
}

QRectF Centred(QSizeF size, int pixels)
{
    size.scale(pixels, pixels, Qt::KeepAspectRatio);
    return {QPointF((pixels - size.width()) / 2, (pixels - size.height()) / 2), size};
}

QImage PNGImage(const QByteArray& bytes)
{
    return QImage::fromData(bytes, "PNG");
}

} // namespace

IconImage RecogniseIcon(const QByteArray& bytes)
{
    if (bytes.size() > MostBytes)
        return {};
    if (mime::IsPNG(VoByteArray(bytes.constData(), static_cast<std::size_t>(bytes.size())))) {
        QByteArray copy = bytes;
        QBuffer buffer(&copy);
        const QSize size = QImageReader(&buffer, "PNG").size(); // before a pixel is unpacked
        const int longest = std::max(size.width(), size.height());
        if (longest > LongestSide || PNGImage(bytes).isNull())
            return {};
        return {bytes, longest, VoIcons::Background::Any, false};
    }
    return QSvgRenderer(bytes).isValid() ? IconImage{bytes, 0, VoIcons::Background::Any, false} : IconImage();
}

QImage DrawIcon(const IconImage& image, int pixels, bool isDark)
{
    QImage drawn(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (image.size == 0) {
        QSvgRenderer svg(isDark && image.recolours ? OnDark(image.bytes) : image.bytes);
        svg.render(&painter, Centred(svg.defaultSize(), pixels));
    } else {
        const QImage source = PNGImage(image.bytes);
        const QRectF place = Centred(source.size(), pixels);
        // Smaller in one step would leave pixels out.
        painter.drawImage(place.topLeft(),
                          source.scaled(place.size().toSize(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    }
    return drawn;
}

QImage Disabled(const QImage& image)
{
    constexpr int percent = 45;
    QImage pale = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < pale.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(pale.scanLine(y));
        std::transform(line, line + pale.width(), line, [](QRgb pixel) {
            const int grey = qGray(pixel);
            return qRgba(grey, grey, grey, qAlpha(pixel) * percent / 100);
        });
    }
    return pale;
}

} // namespace vo::detail
