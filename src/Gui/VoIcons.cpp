#include <Gui/VoIcons.h>

#include <Core/VoDeque.h>
#include <Core/VoFileException.h>
#include <Core/VoMathsException.h>
#include <Core/VoPrintable.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileType.h>
#include <Gui/detail/IconImage.h>
#include <IO/VoFileDevice.h>
#include <Subsystem/VoLogging.h>

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtGui/QGuiApplication>
#include <QtGui/QIcon>
#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtGui/QPalette>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

using vo::detail::IconImage;

// Outside of namespaces, as the framework demands it.
static void RegisterResources()
{
    Q_INIT_RESOURCE(VoCoreGui);
}

namespace {

using Background = VoIcons::Background;
using State = VoIcons::State;

constexpr const char* Missing = "missing";

struct Entry
{
    std::vector<IconImage> images;
    VoString themeName;
};

// ":/GraphIcon.png" is the name of an image that a program may have; the icon is called as its file.
VoString IconName(const VoString& name)
{
    const std::string& text = name.toStdString();
    if (text.compare(0, 2, ":/") != 0)
        return name;
    const std::size_t begin = text.rfind('/') + 1;
    const std::size_t end = std::min(text.find('.', begin), text.size());
    return VoString(text.data() + begin, end - begin);
}

class Registry
{
public:
    // Lives until the process ends: icons are drawn while windows close.
    static Registry& Get()
    {
        static auto* const registry = new Registry;
        return *registry;
    }

    void add(const VoString& name, IconImage image)
    {
        const std::lock_guard lock(m_mutex);
        std::vector<IconImage>& images = m_entries[name].images;
        const auto same = std::find_if(images.begin(), images.end(), [&](const IconImage& other) {
            return other.size == image.size && other.background == image.background;
        });
        if (same == images.end())
            images.push_back(std::move(image));
        else
            *same = std::move(image);
    }

    void preferTheme(const VoString& name, const VoString& themeName)
    {
        const std::lock_guard lock(m_mutex);
        m_entries[name].themeName = themeName;
    }

    std::optional<Entry> find(const VoString& name) const
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_entries.find(name);
        return found == m_entries.end() ? std::nullopt : std::optional(found->second);
    }

    VoDeque<VoString> names() const
    {
        const std::lock_guard lock(m_mutex);
        VoDeque<VoString> names;
        for (const auto& entry : m_entries) {
            if (entry.first != Missing)
                names.pushBack(entry.first);
        }
        return names;
    }

    void warnOnce(const VoString& name)
    {
        constexpr std::size_t most = 1000; // names may come from documents
        {
            const std::lock_guard lock(m_mutex);
            if (m_warned.size() >= most || !m_warned.insert(name).second)
                return;
        }
        vo::logging::Logger::Get("icons").warning("Unknown icon: " + vo::Printable(name));
    }

private:
    Registry()
    {
        RegisterResources();
        const QDir directory(QStringLiteral(":/VoCoreGui/icons"));
        for (const QFileInfo& file : directory.entryInfoList()) {
            QFile resource(file.filePath());
            resource.open(QIODevice::ReadOnly);
            m_entries[VoString(file.completeBaseName())].images = {{resource.readAll(), 0, Background::Any, true}};
        }
    }

    mutable std::mutex m_mutex;
    std::map<VoString, Entry> m_entries;
    std::set<VoString> m_warned;
};

bool HasDarkWindows()
{
    constexpr int half = 128;
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) &&
           QGuiApplication::palette().color(QPalette::Window).lightness() < half;
}

// What is for the background before what is for any; SVG or large enough before what must be blown up; the closest.
const IconImage& BestImage(const std::vector<IconImage>& images, int pixels, Background background)
{
    const auto rank = [&](const IconImage& image) {
        const int foreign = image.background == background ? 0 : image.background == Background::Any ? 1 : 2;
        const bool isTooSmall = image.size != 0 && image.size < pixels;
        return std::make_tuple(foreign, isTooSmall, isTooSmall ? -image.size : image.size);
    };
    return *std::min_element(images.begin(), images.end(),
                             [&](const IconImage& a, const IconImage& b) { return rank(a) < rank(b); });
}

// The desktop's theme can be asked where there is a desktop only.
std::optional<QImage> ThemeImage(const VoString& themeName, int pixels)
{
    if (themeName.isEmpty() || !qobject_cast<QGuiApplication*>(QCoreApplication::instance()) ||
        !QIcon::hasThemeIcon(themeName.toQString()))
        return std::nullopt;
    return QIcon::fromTheme(themeName.toQString()).pixmap(pixels, pixels).toImage();
}

QImage NormalImage(const VoString& name, int pixels, Background background)
{
    const std::optional<Entry> entry = Registry::Get().find(name);
    if (const std::optional<QImage> image = ThemeImage(entry ? entry->themeName : name, pixels))
        return *image;
    const bool isDark = background == Background::Dark || (background == Background::Any && HasDarkWindows());
    if (entry && !entry->images.empty()) {
        const Background actual = isDark ? Background::Dark : Background::Light;
        return DrawIcon(BestImage(entry->images, pixels, actual), pixels, isDark);
    }
    Registry::Get().warnOnce(name);
    return DrawIcon(Registry::Get().find(Missing)->images.front(), pixels, isDark);
}

QImage Image(const VoString& name, int pixels, State state, Background background)
{
    const QImage image = NormalImage(name, pixels, background);
    return state == State::Disabled ? vo::detail::Disabled(image) : image;
}

QList<QSize> UsualSizes()
{
    QList<QSize> sizes;
    for (const int side : {16, 22, 24, 32, 48, 64})
        sizes.append(QSize(side, side));
    return sizes;
}

// Draws what the registry has at that moment, so that a change of the window's colours shows.
class Engine : public QIconEngine
{
public:
    explicit Engine(VoString name)
        : m_name(std::move(name))
    {
    }

    QIconEngine* clone() const override { return new Engine(m_name); }
    QString key() const override { return QStringLiteral("VoIcons"); }
#if QT_VERSION_MAJOR < 6
    QString iconName() const override { return m_name.toQString(); }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) const override { return UsualSizes(); }
#else
    QString iconName() override { return m_name.toQString(); }
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return UsualSizes(); }
#endif

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override
    {
        const int side = std::max(1, std::min(size.width(), size.height()));
        return QPixmap::fromImage(Image(m_name, side, stateOf(mode), Background::Any));
    }

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State) override
    {
        const int side = std::max(1, std::min(place.width(), place.height()));
        const auto pixels = static_cast<int>(std::ceil(side * painter->device()->devicePixelRatioF()));
        const QRect square(place.x() + (place.width() - side) / 2, place.y() + (place.height() - side) / 2, side, side);
        painter->drawImage(square, Image(m_name, pixels, stateOf(mode), Background::Any));
    }

private:
    static State stateOf(QIcon::Mode mode) { return mode == QIcon::Disabled ? State::Disabled : State::Normal; }

    VoString m_name;
};

void AddBytes(const VoString& name, const QByteArray& bytes, Background background)
{
    IconImage image = vo::detail::RecogniseIcon(bytes);
    if (IconName(name).isEmpty() || image.bytes.isEmpty())
        throw VoInvalidParameterException("Invalid icon: " + name);
    image.background = background;
    Registry::Get().add(IconName(name), std::move(image));
}

} // namespace

void VoIcons::Add(const VoString& name, const VoByteArray& image, Background background)
{
    constexpr std::size_t beyondAll = std::size_t(1) << 30;
    if (image.size() > beyondAll)
        throw VoInvalidParameterException("Invalid icon: " + name);
    AddBytes(name, QByteArray(image.cdata(), static_cast<int>(image.size())), background);
}

void VoIcons::AddFile(const VoString& name, const VoFilePath& file, Background background)
{
    VoFileDevice device(file);
    device.open(VoIODevice::Read);
    constexpr std::size_t most = (std::size_t(4) << 20) + 1; // one more than an icon may have
    const VoString bytes = device.read(most);
    AddBytes(name, QByteArray(bytes.c_str(), static_cast<int>(bytes.size())), background);
}

void VoIcons::AddResource(const VoString& name, const VoString& resource, Background background)
{
    QFile file(resource.toQString());
    if (resource.isEmpty() || resource[0] != ':' || !file.open(QIODevice::ReadOnly))
        throw VoFileNotFoundException(resource);
    AddBytes(name, file.readAll(), background);
}

void VoIcons::PreferTheme(const VoString& name, const VoString& themeName)
{
    Registry::Get().preferTheme(IconName(name), themeName);
}

bool VoIcons::Contains(const VoString& name)
{
    return IconName(name) != Missing && Registry::Get().find(IconName(name)).has_value();
}

VoDeque<VoString> VoIcons::Names()
{
    return Registry::Get().names();
}

QIcon VoIcons::Icon(const VoString& name)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        throw VoInvalidCallException("Icons need a graphical application");
    return QIcon(new Engine(IconName(name)));
}

QIcon VoIcons::Icon(const VoFileType& type)
{
    const VoString name = type.icon();
    return Icon(name.isEmpty() ? VoFileType(VoFileType::Text).icon() : name);
}

VoByteArray VoIcons::PNG(const VoString& name, int size, double ratio, State state, Background background)
{
    constexpr double largestSize = 1024;
    constexpr double largestRatio = 4;
    if (size < 1 || size > largestSize)
        throw VoDomainException(size, 1, largestSize);
    if (!(ratio >= 1 && ratio <= largestRatio))
        throw VoDomainException(ratio, 1, largestRatio);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Image(IconName(name), static_cast<int>(std::lround(size * ratio)), state, background).save(&buffer, "PNG");
    return VoByteArray(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}
