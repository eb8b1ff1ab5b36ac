#include "GuiFixture.h"

#include <VoTestSupport.h>

#include <Core/VoDeque.h>
#include <Core/VoVariant.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoVariantTable.h>
#include <Gui/VoClipboard.h>
#include <Gui/VoIcons.h>
#include <Gui/VoMimeData.h>
#include <LogCapture.h>
#include <Threading/VoReceiver.h>

#include <QtCore/QMimeData>
#include <QtCore/QProcess>
#include <QtGui/QClipboard>
#include <QtGui/QImage>

using Clipboard = vo::test::GuiTest;

namespace {

VoByteArray Bytes(const std::string& text)
{
    return VoByteArray(text.data(), text.size());
}

// Texts that look like something else, and values that must not lose anything.
VoVariantTable Awkward()
{
    VoVariantTable table(3, 4);
    const std::vector<VoVariant> values = {"007",       "<b>&amp;\"", "a\tb\nc", " two  blanks ", 0.1,   1e300, true,
                                           VoVariant(), "true",       -5,        "\xc2\xb5",      "=1+2"};
    for (std::size_t i = 0; i < values.size(); ++i)
        table.at(i / 4, i % 4) = values[i];
    return table;
}

VoDataTable Spanned()
{
    VoDataTable table;
    table.addRow({VoDataTableItem("Result", 2), VoDataTableItem("Unit")}, VoDataTable::Header);
    table.addRow({VoDataTableItem(1), VoDataTableItem(VoDeque<VoVariant>{2.5, 3.5}), VoDataTableItem("V")},
                 VoDataTable::Data);
    return table;
}

// The framework's side: what another program would see.
const QMimeData& Offered()
{
    return *QGuiApplication::clipboard()->mimeData();
}

} // namespace

TEST_F(Clipboard, TablesComeBackFromEachFormByItself)
{
    const VoVariantTable awkward = Awkward();
    VoMimeData all;
    all.setTable(awkward);
    VoMimeData plain;
    plain.setText(all.text());
    VoMimeData html;
    html.setHTML(all.html());
    VoMimeData csv;
    csv.setData("text/csv", all.data("TEXT/CSV"));
    for (const VoMimeData& data : {all, plain, html, csv}) {
        VoClipboard::Set(data);
        EXPECT_EQ(VoClipboard::VariantTable(), awkward) << data.types()[0];
    }
    VoClipboard::SetText("\"5\" pipe\"\t1\nx"); // a quote that is none
    EXPECT_EQ(VoClipboard::VariantTable().at(0, 0), VoVariant("\"5\" pipe\""));
    VoClipboard::SetTable(Spanned());
    EXPECT_EQ(VoClipboard::Table(), Spanned());
    EXPECT_EQ(VoClipboard::VariantTable().at(1, 1), VoVariant("2.5\n3.5"));
}

TEST_F(Clipboard, SeveralFormsAreOfferedToOtherPrograms)
{
    const VoByteArray image = VoIcons::PNG("GraphIcon", 16);
    VoMimeData data;
    data.setTable(Spanned());
    data.setPNG(image);
    data.setData("application/x-part", Bytes(std::string("\0\xff", 2)));
    VoClipboard::Set(data);
    EXPECT_EQ(Offered().text(), QStringLiteral("Result\t\tUnit\n1\t2.5\tV\n\t3.5\t\n"));
    EXPECT_TRUE(Offered().html().contains(QStringLiteral("<th colspan=\"2\">Result</th>")));
    EXPECT_EQ(Offered().data(QStringLiteral("application/x-part")), QByteArray("\0\xff", 2));
    EXPECT_EQ(VoClipboard::PNG(), image);
    EXPECT_EQ(VoClipboard::Data("Application/X-Part"), Bytes(std::string("\0\xff", 2)));
}

TEST_F(Clipboard, WhatIsNotThereIsSaid)
{
    VoClipboard::Clear();
    EXPECT_THROW_MSG(VoClipboard::Text(), VoInvalidMimeDataException, "No MIME data available available");
    EXPECT_THROW_MSG(VoClipboard::Table(), VoInvalidMimeDataException, "No MIME data available available");
    VoClipboard::SetText("x");
    const auto missing = [](const char* type) { return VoString("No MIME data of given type available: ") + type; };
    EXPECT_THROW_MSG(VoClipboard::HTML(), VoInvalidMimeDataException, missing("text/html"));
    EXPECT_THROW_MSG(VoClipboard::Data("a/b"), VoInvalidMimeDataException, missing("a/b"));
    VoMimeData data;
    data.setHTML("<table><td colspan=1000 rowspan=65534>" +
                 VoString(std::string(std::size_t(20000), ' ')).replaced(" ", "<tr>"));
    EXPECT_THROW_MSG(data.variantTable(), VoInvalidConversionException, "Table is too large");
    data = VoMimeData();
    EXPECT_THROW_MSG(data.text(), VoInvalidMimeDataException, "No MIME data available available");
    EXPECT_THROW_MSG(data.setPNG(Bytes("GIF89a")), VoInvalidParameterException, "Invalid PNG image");
    for (const char* type : {"", "text", "/x", "text/", "te xt/x"})
        EXPECT_THROW(data.setData(type, Bytes("x")), VoInvalidParameterException) << type;
}

TEST_F(Clipboard, ChangesAreToldAlsoToThoseWhoCopySomethingThemselves)
{
    int told = 0;
    const VoReceiver receiver = VoClipboard::Connect([&](bool) {
        if (++told == 1)
            VoClipboard::SetText("from within");
    });
    const VoReceiver throwing = VoClipboard::Connect([](bool) { throw VoInvalidCallException("in a callback"); });
    const vo::test::LogCapture log;
    VoClipboard::SetText("first");
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(told, 2);
    EXPECT_EQ(log.texts("clipboard").size(), 2u);
}

TEST(ClipboardWithout, ADisplayThereIsNone)
{
    EXPECT_THROW_MSG(VoClipboard::Text(), VoNoClipboardException, "No clipboard available");
}

// Run by another test under a real display.
TEST(ClipboardWithAnotherProgram, ReadsAndWrites)
{
    const QString xclip = qEnvironmentVariable("VOCORE_XCLIP");
    if (xclip.isEmpty())
        GTEST_SKIP() << "no display to try it on";
    const vo::test::GuiApplication application;
    VoClipboard::SetTable(Spanned());
    const auto paste = [&](const char* type) {
        QProcess reader;
        QEventLoop loop; // this program answers the other one
        QObject::connect(&reader, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &loop,
                         &QEventLoop::quit);
        reader.start(xclip, {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o"),
                             QStringLiteral("-t"), QString::fromLatin1(type)});
        loop.exec();
        return reader.readAllStandardOutput().toStdString();
    };
    EXPECT_EQ(paste("UTF8_STRING"), "Result\t\tUnit\n1\t2.5\tV\n\t3.5\t\n");
    EXPECT_NE(paste("text/html").find("<th colspan=\"2\">Result</th>"), std::string::npos);

    QEventLoop loop;
    const VoReceiver receiver = VoClipboard::Connect([&](bool own) {
        if (!own)
            loop.quit();
    });
    QProcess writer;
    writer.start(xclip, {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-t"),
                         QStringLiteral("text/html")});
    writer.write("<p>Before</p><table><tr><td>\xc2\xb5<td>2.5</table>");
    writer.closeWriteChannel();
    loop.exec();
    EXPECT_EQ(VoClipboard::VariantTable(), VoVariantTable("\xc2\xb5,2.5", true));
}
