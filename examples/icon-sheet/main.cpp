// Draws all icons on one sheet, for light windows and for dark ones, in two sizes and disabled.

#include <Core/VoByteArray.h>
#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Gui/VoIcons.h>

#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <cstdio>

namespace {

QImage Drawn(const VoString& name, int size, VoIcons::State state, VoIcons::Background background)
{
    const VoByteArray png = VoIcons::PNG(name, size, 1, state, background);
    return QImage::fromData(QByteArray(png.cdata(), static_cast<int>(png.size())), "PNG");
}

void DrawHalf(QPainter& painter, int top, VoIcons::Background background)
{
    constexpr int cell = 76;
    const bool isLight = background == VoIcons::Background::Light;
    painter.fillRect(0, top, painter.device()->width(), 2 * cell,
                     isLight ? QColor(Qt::white) : QColor(0x20, 0x26, 0x2b));
    const VoDeque<VoString> names = VoIcons::Names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const int x = static_cast<int>(i / 2) * cell + 8;
        const int y = top + static_cast<int>(i % 2) * cell + 8;
        painter.drawImage(x, y, Drawn(names[i], 48, VoIcons::State::Normal, background));
        painter.drawImage(x + 50, y, Drawn(names[i], 16, VoIcons::State::Normal, background));
        painter.drawImage(x + 50, y + 22, Drawn(names[i], 16, VoIcons::State::Disabled, background));
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: icon-sheet FILE.png\n");
        return 2;
    }
    QImage sheet(static_cast<int>(VoIcons::Names().size()) * 38 + 76, 4 * 76, QImage::Format_RGB32);
    QPainter painter(&sheet);
    DrawHalf(painter, 0, VoIcons::Background::Light);
    DrawHalf(painter, 2 * 76, VoIcons::Background::Dark);
    painter.end();
    return sheet.save(QString::fromLocal8Bit(argv[1])) ? 0 : 1;
}
