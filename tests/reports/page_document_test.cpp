// The page layout of reports: the cell mark-up, clipping, the row properties and the pages.
#include "reports/page_document.h"
#include "reports/page_painter.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::reports {
namespace {

TEST(PageMarkup, CellsTakeTheirPositionsAndPlainTextCarriesOn)
{
    struct Case
    {
        QStringList strings;
        QList<Cell> cells;
    };
    const Case cases[] = {
        {{u"#4000#Type:"_s}, {{4000, u"Type:"_s}}},
        {{u"#0#"_s, u"#500#Sent"_s}, {{0, {}}, {500, u"Sent"_s}}},
        {{u"Plain title"_s}, {{0, u"Plain title"_s}}},
        {{u"#500#Messages per day: "_s, u"1.50"_s}, {{500, u"Messages per day: 1.50"_s}}},
        {{u"#12#"_s, u"#x#y"_s}, {{12, u"#x#y"_s}}},
        {{u"##no number"_s}, {{0, u"##no number"_s}}},
        {{u"#-5#neg"_s}, {{0, u"#-5#neg"_s}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.strings.join(u'|').toStdString());
        EXPECT_EQ(parse_cells(c.strings), c.cells);
    }
}

TEST(PageMarkup, RowPropertiesByTheirNames)
{
    Row row;
    set_row_property(row, u"AlignPos", 5);
    set_row_property(row, u"FontBold", -1);
    set_row_property(row, u"LineBottom", 1);
    set_row_property(row, u"Unknown", 1);
    EXPECT_TRUE(row.centred && row.bold && row.line_bottom);
    set_row_property(row, u"FontBold", 0);
    set_row_property(row, u"AlignPos", 1);
    EXPECT_FALSE(row.bold || row.centred);
}

TEST(PageLayout, ACellIsClippedAtTheNextAndTheLastRunsToTheMargin)
{
    ReportDocument document;
    document.add_body_row({u"#500#A long sent date"_s, u"#3000#Status"_s, u"#5000#Message"_s});
    const LaidOutPage page = document.lay_out().at(0);
    ASSERT_EQ(page.cells.size(), 4); // and the page number
    const PageSetup setup;
    EXPECT_EQ(page.cells[0].left, setup.margin_left + 500);
    EXPECT_EQ(page.cells[0].width, 2500);
    EXPECT_EQ(page.cells[1].left + page.cells[1].width, setup.margin_left + 5000);
    EXPECT_EQ(page.cells[2].left + page.cells[2].width, setup.width - setup.margin_right);
    EXPECT_EQ(page.cells[0].top, setup.margin_top);
}

TEST(PageLayout, TitleCentredAndBoldHeadingRuledAndRepeatedOnEveryPage)
{
    ReportDocument document;
    Row& title = document.add_header_row({u"Sent Message Report"_s});
    title.centred = true;
    title.bold = true;
    document.add_header_row({u"Report for recipients: all recipients"_s}).centred = true;
    Row& heading = document.add_header_row({u"#500#Sent"_s, u"#3000#Status"_s});
    heading.bold = true;
    heading.line_bottom = true;
    for (int i = 0; i < 60; ++i) {
        document.add_body_row({u"#500#row "_s + QString::number(i)});
    }
    const QList<LaidOutPage> pages = document.lay_out();
    ASSERT_EQ(pages.size(), 2);
    const PageSetup setup;
    for (const LaidOutPage& page : pages) {
        const PlacedCell& first = page.cells.at(0);
        EXPECT_EQ(first.text, u"Sent Message Report"_s);
        EXPECT_TRUE(first.centred && first.bold);
        EXPECT_EQ(first.left, setup.margin_left);
        EXPECT_EQ(first.width, setup.printable_width());
        EXPECT_FALSE(page.cells.at(1).bold);
        EXPECT_TRUE(page.cells.at(2).bold);
        ASSERT_EQ(page.rules.size(), 1);
        EXPECT_EQ(page.rules[0].y, setup.header_top + 3 * setup.row_height);
    }
    // The body of the second page goes on where the first stopped, under the same header.
    const qsizetype on_first = pages[0].cells.size() - 5;
    EXPECT_EQ(pages[1].cells.at(4).text, u"row "_s + QString::number(on_first));
    EXPECT_EQ(on_first + pages[1].cells.size() - 5, 60);
    const PlacedCell& last_row = pages[0].cells.at(pages[0].cells.size() - 2);
    EXPECT_GT(last_row.top, pages[0].cells.at(3).top);
    EXPECT_LE(last_row.top + setup.row_height, setup.height - setup.margin_bottom);
    EXPECT_GT(last_row.top + 2 * setup.row_height, setup.height - setup.margin_bottom); // the page is full
    // Each page carries its number at the right of the title line.
    const PlacedCell& number = pages[1].cells.last();
    EXPECT_EQ(number.text, u"Page 2 of 2"_s);
    EXPECT_TRUE(number.right);
    EXPECT_EQ(number.top, setup.header_top);
    EXPECT_EQ(number.left + number.width, setup.width - setup.margin_right);
}

TEST(PageLayout, ForcedBreaksEndPagesAndAnEmptyDocumentHasOnePage)
{
    ReportDocument document;
    EXPECT_EQ(document.page_count(), 1);
    document.new_page(); // before any row: no empty page
    document.add_body_row({u"#0#first"_s});
    document.new_page();
    document.add_body_row({u"#0#second"_s});
    document.add_body_row({u"#0#third"_s});
    document.new_page(); // after the last row: no empty page at the end
    const QList<LaidOutPage> pages = document.lay_out();
    ASSERT_EQ(pages.size(), 2);
    EXPECT_EQ(pages[0].cells.size(), 2); // the row and the page number
    EXPECT_EQ(pages[1].cells.at(1).text, u"third"_s);
}

TEST(PageLayout, ThePrintersSheetSetsThePageAndTooSmallASheetKeepsLetter)
{
    const PageSetup landscape = page_setup_for_sheet(792, 612);
    EXPECT_EQ(landscape.width, 15840);
    EXPECT_EQ(landscape.height, 12240);
    EXPECT_EQ(landscape.margin_top, 1000);
    const PageSetup tiny = page_setup_for_sheet(100, 100);
    EXPECT_EQ(tiny.width, 12240);
    EXPECT_EQ(tiny.height, 15840);
    // A wider sheet gives a longer last cell and fewer rows a page.
    ReportDocument wide(landscape);
    for (int i = 0; i < 40; ++i) {
        wide.add_body_row({u"#500#row"_s});
    }
    EXPECT_EQ(wide.lay_out().at(0).cells.at(0).width, 15840 - 500 - 360 - 500);
    EXPECT_EQ(wide.page_count(), 2);
}

TEST(PageLayout, PdfIsWrittenWithOnePagePerLaidOutPage)
{
    QTemporaryDir dir;
    ReportDocument document;
    document.add_body_row({u"#0#one"_s});
    document.new_page();
    document.add_body_row({u"#0#two"_s});
    const QString path = dir.filePath(u"r.pdf"_s);
    ASSERT_TRUE(write_pdf(document, path, u"Test"_s));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.startsWith("%PDF"));
    EXPECT_EQ(bytes.count("/Type /Page\n") + bytes.count("/Type /Page "), 2);
    EXPECT_FALSE(write_pdf(document, dir.filePath(u"missing/r.pdf"_s), u"Test"_s));
}

} // namespace
} // namespace cvd::reports
