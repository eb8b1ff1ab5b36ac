#include <VoTestSupport.h>

#include <Core/VoDeque.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoVariant.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoDataTableRow.h>
#include <Documents/detail/HTMLTable.h>

using vo::detail::TableFromHTML;

namespace {

// "a|b:2|[c;d] / ..." : cells with spans and stacked values, header rows in front of "=".
std::string Shape(const std::optional<VoDataTable>& table)
{
    std::string shape;
    for (std::size_t row = 0; table && row < table->numberRows(); ++row) {
        shape += row > 0 ? " / " : "";
        for (const auto& item : table->rows()[row]->items) {
            shape += &item == &*table->rows()[row]->items.begin() ? "" : "|";
            std::string values;
            for (const VoVariant& value : item->values())
                values += (values.empty() ? "" : ";") + (value.isNull() ? "-" : value.toString().toStdString());
            shape += values + (item->columnSpan() > 1 ? ":" + std::to_string(item->columnSpan()) : "");
        }
        shape += table->isHeader(row) ? "=" : "";
    }
    return shape;
}

std::string Repeated(const std::string& text, std::size_t times)
{
    std::string repeated;
    for (std::size_t i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

} // namespace

TEST(HTMLTable, IsFoundInWhateverPeopleCopy)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<table><tr><td>1</td><td>x</td></tr><tr><td>2</td></tr></table>", "1|x / 2"},
        {"<TABLE><TR><TD>1<TD>x<TR><TH>h<TH>i", "1|x / h|i="},
        {"<table><thead><tr><th>h<tbody><tr><td>1</table>after <td>this", "h= / 1"},
        {"<td>before</td><table></table><table><td>1</td></table><table><td>2</table>", "1"},
        {"<table><tr><td colspan=2 rowspan='2'>a<td>b<tr><td>c<tr><td>d", "a:2|b / -:2|c / d"},
        {"<table><tr><td rowspan=3>a<tr><tr><td>b", "a / - / -|b"},
        {"<table><tr><td colspan=0>a<td colspan=-1>b<td colspan=x>c<td colspan=\"2\"style=''>d", "a|b:1000|c|d:2"},
        {"<table><tr><td>a<table><tr><td>b<td>c</table>d<td>e", "a b c\nd|e"},
        {"<table><tr><td>a<br>b<td>c<br style='mso-data-placement:same-cell'>d<td><p>e</p><p>f</p>", "a;b|c\nd|e\nf"},
        {"<table><tr><td> a \n\t b <b> c</b> <td>&nbsp;<td>", "a b c|-|-"},
        {"<table><tr><td>&lt;&amp;&#181;&#xB5;&Omega;&#0;&#xD800;&unknown;&;&",
         "<&\xc2\xb5\xc2\xb5\xce\xa9\xef\xbf\xbd\xef\xbf\xbd&unknown;&;&"},
        {"<table><tr><td>1<script>var x = '</td><td>2';</script><style>td{}</STYLE><td>3", "1|3"},
        {"<table><tr><td>1<script>never ends<td>2", "1"},
        {"<table><tr><td>1<!-- <td>2 --><td>3<!-- never ends <td>4", "1|3"},
        {"<table><tr><td title=\"</td><td>x\" a=b>1<td title='never ends>2", "1|-"},
        {"<table><tr><td>1 < 2 <> 3 </ 4", "1 < 2 <> 3 </ 4"},
        {"<table><tr><td sdval=\"1234.5678\">1,234.57<td style=\"MSO-NUMBER-FORMAT:'\\@'\">007<td>007<td>1e3",
         "1234.57|007|007|1000"},
        {"<p>no table</p>", ""},
        {"<table><tr></tr></table>", ""},
        {"", ""},
    };
    for (const auto& [html, expected] : cases)
        EXPECT_EQ(Shape(TableFromHTML(html)), expected) << html;
}

TEST(HTMLTable, BoundsWhatAStrangerMakesOfIt)
{
    const auto refuses = [](const std::string& html) {
        EXPECT_THROW_MSG(TableFromHTML(html), VoInvalidConversionException, "HTML table is too large");
    };
    refuses("<table><tr>" + Repeated("<td colspan=1000>", 17));
    // A few cells that reach over many.
    const auto wide =
        TableFromHTML("<table><tr>" + Repeated("<td colspan=1000 rowspan=65534>", 16) + Repeated("<tr>", 9999));
    EXPECT_TRUE(wide && wide->numberRows() == 10000 && wide->numberColumns() == 16000);
    // Nothing of this takes longer than its length.
    EXPECT_EQ(Shape(TableFromHTML(Repeated("<table>", 1 << 16) + "<td>1")), "");
    EXPECT_EQ(Shape(TableFromHTML("<table><td>1" + Repeated("<tr>", 1 << 20))), "1");
    EXPECT_EQ(Shape(TableFromHTML("<table><td>1" + Repeated("<script>", 1 << 16))), "1");
    EXPECT_EQ(Shape(TableFromHTML("<table><td>" + Repeated("&", 1 << 18))), std::string(1 << 18, '&'));
}
