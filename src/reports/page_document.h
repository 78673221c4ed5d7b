#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace cvd::reports {

// The face of report text, in points, and the air left of a cell's text so that neighbours do not touch, in twips.
inline constexpr int kReportPointSize = 9;
inline constexpr int kCellTextInset = 30;

// The page in twips: a letter sheet with the margins every report is printed with.
struct PageSetup
{
    int width = 12240;
    int height = 15840;
    int margin_left = 360;
    int margin_right = 500;
    int margin_top = 1000;
    int margin_bottom = 360;
    int header_top = 180; // where the header block starts, from the sheet's top edge
    int row_height = 300;

    int printable_width() const { return width - margin_left - margin_right; }
};

// The sheet of a printer's paper, in points, with the margins and row height kept; nothing for a sheet too
// small to hold them.
PageSetup page_setup_for_sheet(double width_points, double height_points);

// One cell of a row: its left edge in twips from the left margin and its text.
struct Cell
{
    int position = 0;
    QString text;
    bool operator==(const Cell&) const = default;
};

// A cell string is plain text or "#position#text". A plain string after a positioned one carries on that
// cell's text (a label and its value given as two strings); a plain string at the start of a row stands at 0.
QList<Cell> parse_cells(const QStringList& strings);

struct Row
{
    QList<Cell> cells;
    bool centred = false;     // AlignPos 5
    bool bold = false;        // FontBold -1
    bool line_bottom = false; // LineBottom: a rule beneath the row
    bool page_break = false;  // the page ends after this row
};

// Sets a row property by its literal name ("AlignPos", "FontBold", "LineBottom"); other names change nothing.
void set_row_property(Row& row, QStringView name, int value);

// A cell placed on a page, in twips from the sheet's top-left corner; the text is clipped to the rectangle.
struct PlacedCell
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    QString text;
    bool bold = false;
    bool centred = false;
    bool right = false; // set against the right edge (the page number)
};

// A horizontal rule from left to right at y, in twips.
struct Rule
{
    int left = 0;
    int right = 0;
    int y = 0;
};

struct LaidOutPage
{
    QList<PlacedCell> cells;
    QList<Rule> rules;
};

// A report as header rows, repeated on every page, and body rows.
class ReportDocument
{
public:
    explicit ReportDocument(PageSetup setup = {}) : m_setup(setup) {}

    Row& add_header_row(const QStringList& cells);
    Row& add_body_row(const QStringList& cells);
    // Ends the page after the last body row; nothing when there is no body row yet.
    void new_page();

    const QList<Row>& header() const { return m_header; }
    const QList<Row>& body() const { return m_body; }
    const PageSetup& setup() const { return m_setup; }

    // Pages in order, header rows on each. A document without body rows still gives one page.
    QList<LaidOutPage> lay_out() const;
    // Where each page's body starts in the body rows; the size is the page count.
    QList<qsizetype> page_starts() const;
    qsizetype page_count() const { return page_starts().size(); }
    // One page laid out, for painting only the pages shown.
    LaidOutPage lay_out_page(qsizetype page, const QList<qsizetype>& starts) const;

private:
    int body_top() const;
    int rows_per_page() const;
    void place_row(const Row& row, int top, LaidOutPage& page) const;

    PageSetup m_setup;
    QList<Row> m_header;
    QList<Row> m_body;
};

} // namespace cvd::reports
