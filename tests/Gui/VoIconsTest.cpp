#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <Core/VoColour.h>
#include <Core/VoDeque.h>
#include <FileSystem/VoFileType.h>
#include <Gui/VoIcons.h>
#include <LogCapture.h>
#include <ScratchFolder.h>

#include <QtCore/QBuffer>
#include <QtGui/QIcon>
#include <QtGui/QImage>

using Icons = vo::test::GuiTest;

namespace {

QImage Drawn(const VoString& name, int size = 32, VoIcons::State state = VoIcons::State::Normal,
             VoIcons::Background background = VoIcons::Background::Light, double ratio = 1)
{
    const VoByteArray png = VoIcons::PNG(name, size, ratio, state, background);
    return QImage::fromData(QByteArray(png.cdata(), static_cast<int>(png.size())), "PNG");
}

VoByteArray Square(int size, Qt::GlobalColor colour)
{
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return VoByteArray(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

VoColour Middle(const QImage& image)
{
    return VoColour::FromARGB(image.pixel(image.width() / 2, image.height() / 2));
}

// How many pixels have anything on them, as a share.
double Coverage(const QImage& image)
{
    int covered = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            covered += qAlpha(image.pixel(x, y)) > 0;
    }
    return double(covered) / (image.width() * image.height());
}

} // namespace

TEST(IconsWithoutADisplay, AreDrawnInAllSizesAndStates)
{
    for (int type = VoFileType::AEExamples; type <= VoFileType::Zip; ++type) {
        const VoString name = VoFileType(static_cast<VoFileType::Type>(type)).icon();
        EXPECT_TRUE(name.isEmpty() || VoIcons::Contains(name)) << name;
    }
    for (const VoString& name : VoIcons::Names()) {
        if (name.contains("test")) // of other cases
            continue;
        for (const int size : {16, 24, 48}) {
            const QImage image = Drawn(name, size);
            EXPECT_EQ(image.size(), QSize(size, size));
            EXPECT_GT(Coverage(image), 0.15) << name << size;
        }
        EXPECT_NE(Drawn(name), Drawn(name, 32, VoIcons::State::Normal, VoIcons::Background::Dark)) << name;
        const QImage disabled = Drawn(name, 32, VoIcons::State::Disabled);
        for (int i = 0; i < disabled.width(); ++i) {
            const QRgb pixel = disabled.pixel(i, i);
            EXPECT_TRUE(qAlpha(pixel) <= 115 && qRed(pixel) == qBlue(pixel) && qRed(pixel) == qGreen(pixel)) << name;
        }
    }
    EXPECT_EQ(Drawn("GraphIcon", 16, VoIcons::State::Normal, VoIcons::Background::Light, 2.5).width(), 40);
}

TEST_F(Icons, ThatNobodyKnowsShowAPlaceholderAndWarnOnce)
{
    const vo::test::LogCapture log;
    const QImage placeholder = Drawn("test.unknown\x1b");
    EXPECT_GT(Coverage(placeholder), 0.3);
    EXPECT_EQ(Drawn("test.unknown\x1b"), placeholder);
    EXPECT_EQ(log.texts("icons"), std::vector<std::string>{"Unknown icon: test.unknown\\x1b"});
    EXPECT_FALSE(VoIcons::Contains("missing"));
}

TEST_F(Icons, OfAProgramAreTakenBySizeAndBackground)
{
    VoIcons::Add("test.square", Square(16, Qt::red));
    VoIcons::Add("TEST.square", Square(48, Qt::green));
    VoIcons::Add("test.square", Square(32, Qt::blue), VoIcons::Background::Dark);
    const VoColour red(255, 0, 0);
    const VoColour green(0, 255, 0);
    const VoColour blue(0, 0, 255);
    EXPECT_EQ(Middle(Drawn("test.square", 16)), red);
    EXPECT_EQ(Middle(Drawn("test.square", 17)), green);
    EXPECT_EQ(Middle(Drawn("test.square", 200)), green);
    EXPECT_EQ(Middle(Drawn("test.square", 16, VoIcons::State::Normal, VoIcons::Background::Dark)), blue);
    const vo::test::ScratchFolder scratch;
    VoIcons::AddFile(":/images/test.file.png",
                     scratch.write("x.svg", "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 2 1'>"
                                            "<rect width='2' height='1' fill='red'/></svg>"));
    EXPECT_EQ(Middle(Drawn(":/test.png", 32)), red);
    EXPECT_NEAR(Coverage(Drawn("test", 32)), 0.5, 0.01);
}

TEST_F(Icons, ThatAreNoneAreRefused)
{
    const auto add = [](const char* name, const std::string& bytes) {
        VoIcons::Add(name, VoByteArray(bytes.data(), bytes.size()));
    };
    const std::string png(Square(8, Qt::red).cdata(), Square(8, Qt::red).size());
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string("<svg"), png.substr(0, 20), std::string(5 << 20, ' ')})
        EXPECT_THROW_MSG(add("test.bad", bytes), VoInvalidParameterException, "Invalid icon: test.bad");
    std::string huge = png;
    huge[18] = 0x7f; // its width
    EXPECT_THROW(add("test.bad", huge), VoInvalidParameterException);
    EXPECT_THROW_MSG(VoIcons::AddResource("test.bad", ":/nowhere.svg"), VoFileNotFoundException,
                     "File not found: :/nowhere.svg");
    EXPECT_THROW(VoIcons::PNG("GraphIcon", 1025), VoDomainException);
    EXPECT_THROW(VoIcons::PNG("GraphIcon", 16, std::nan("")), VoDomainException);
}

TEST_F(Icons, OfTheFrameworkAreDrawnForTheSizeThatIsAsked)
{
    const QIcon icon = VoIcons::Icon(VoFileType(VoFileType::CSV));
    const QImage expected = Drawn(":/TextFileIcon.png", 40).convertToFormat(QImage::Format_ARGB32);
    EXPECT_EQ(icon.pixmap(40, 40).toImage().convertToFormat(QImage::Format_ARGB32), expected);
    EXPECT_NE(icon.pixmap(40, 40, QIcon::Disabled).toImage().convertToFormat(QImage::Format_ARGB32), expected);
}
