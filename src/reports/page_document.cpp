#include "reports/page_document.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

// "#4000#Type:" gives 4000 and "Type:"; anything else is plain text.
bool parse_positioned(const QString& text, Cell& cell)
{
    if (!text.startsWith(u'#')) {
        return false;
    }
    const qsizetype close = text.indexOf(u'#', 1);
    if (close <= 1) {
        return false;
    }
    bool ok = false;
    const int position = text.mid(1, close - 1).toInt(&ok);
    if (!ok || position < 0) {
        return false;
    }
    cell.position = position;
    cell.text = text.mid(close + 1);
    return true;
}

} // namespace

PageSetup page_setup_for_sheet(double width_points, double height_points)
{
    PageSetup setup;
    const int width = static_cast<int>(width_points * 20);
    const int height = static_cast<int>(height_points * 20);
    // A sheet must hold the margins and a few rows; anything smaller keeps the letter sheet.
    if (width > setup.margin_left + setup.margin_right + 2000 &&
        height > setup.margin_top + setup.margin_bottom + 2000) {
        setup.width = width;
        setup.height = height;
    }
    return setup;
}

QList<Cell> parse_cells(const QStringList& strings)
{
    QList<Cell> cells;
    for (const QString& text : strings) {
        Cell cell;
        if (parse_positioned(text, cell)) {
            cells.append(cell);
        } else if (cells.isEmpty()) {
            cells.append(Cell{0, text});
        } else {
            cells.last().text += text;
        }
    }
    return cells;
}

void set_row_property(Row& row, QStringView name, int value)
{
    if (name == u"AlignPos") {
        row.centred = value == 5;
    } else if (name == u"FontBold") {
        row.bold = value != 0;
    } else if (name == u"LineBottom") {
        row.line_bottom = value != 0;
    }
}

Row& ReportDocument::add_header_row(const QStringList& cells)
{
    m_header.append(Row{parse_cells(cells)});
    return m_header.last();
}

Row& ReportDocument::add_body_row(const QStringList& cells)
{
    m_body.append(Row{parse_cells(cells)});
    return m_body.last();
}

void ReportDocument::new_page()
{
    if (!m_body.isEmpty()) {
        m_body.last().page_break = true;
    }
}

int ReportDocument::body_top() const
{
    const int header_end = m_setup.header_top + static_cast<int>(m_header.size()) * m_setup.row_height;
    // A header taller than the top margin pushes the body down, with half a row of air under it.
    return m_header.isEmpty() ? m_setup.margin_top : std::max(m_setup.margin_top, header_end + m_setup.row_height / 2);
}

int ReportDocument::rows_per_page() const
{
    const int room = m_setup.height - m_setup.margin_bottom - body_top();
    return std::max(1, room / m_setup.row_height);
}

QList<qsizetype> ReportDocument::page_starts() const
{
    QList<qsizetype> starts{0};
    const int per_page = rows_per_page();
    int on_page = 0;
    for (qsizetype i = 0; i < m_body.size(); ++i) {
        ++on_page;
        const bool last = i + 1 == m_body.size();
        if (!last && (m_body[i].page_break || on_page == per_page)) {
            starts.append(i + 1);
            on_page = 0;
        }
    }
    return starts;
}

void ReportDocument::place_row(const Row& row, int top, LaidOutPage& page) const
{
    const int left_edge = m_setup.margin_left;
    const int right_edge = m_setup.width - m_setup.margin_right;
    if (row.centred) {
        QString text;
        for (const Cell& cell : row.cells) {
            text += cell.text;
        }
        page.cells.append(PlacedCell{left_edge, top, right_edge - left_edge, m_setup.row_height, text, row.bold, true});
    } else {
        for (qsizetype i = 0; i < row.cells.size(); ++i) {
            const Cell& cell = row.cells[i];
            const int left = std::min(left_edge + cell.position, right_edge);
            int right = right_edge;
            for (qsizetype next = i + 1; next < row.cells.size(); ++next) {
                if (row.cells[next].position > cell.position) {
                    right = std::min(right, left_edge + row.cells[next].position);
                    break;
                }
            }
            if (right > left && !cell.text.isEmpty()) {
                page.cells.append(PlacedCell{left, top, right - left, m_setup.row_height, cell.text, row.bold, false});
            }
        }
    }
    if (row.line_bottom) {
        page.rules.append(Rule{left_edge, right_edge, top + m_setup.row_height});
    }
}

LaidOutPage ReportDocument::lay_out_page(qsizetype page, const QList<qsizetype>& starts) const
{
    LaidOutPage laid_out;
    int top = m_setup.header_top;
    for (const Row& row : m_header) {
        place_row(row, top, laid_out);
        top += m_setup.row_height;
    }
    if (page < 0 || page >= starts.size()) {
        return laid_out;
    }
    const qsizetype end = page + 1 < starts.size() ? starts[page + 1] : m_body.size();
    top = body_top();
    for (qsizetype i = starts[page]; i < end; ++i) {
        place_row(m_body[i], top, laid_out);
        top += m_setup.row_height;
    }
    // "Page 2 of 7" at the right of the title line, so that loose sheets go back in order.
    const int number_width = 2200;
    laid_out.cells.append(PlacedCell{
        m_setup.width - m_setup.margin_right - number_width, m_setup.header_top, number_width, m_setup.row_height,
        u"Page "_s + QString::number(page + 1) + u" of "_s + QString::number(starts.size()), false, false, true});
    return laid_out;
}

QList<LaidOutPage> ReportDocument::lay_out() const
{
    const QList<qsizetype> starts = page_starts();
    QList<LaidOutPage> pages;
    pages.reserve(starts.size());
    for (qsizetype page = 0; page < starts.size(); ++page) {
        pages.append(lay_out_page(page, starts));
    }
    return pages;
}

} // namespace cvd::reports
