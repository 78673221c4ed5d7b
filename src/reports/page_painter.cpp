#include "reports/page_painter.h"

#include "reports/standard_pdf.h"

#include <QDateTime>
#include <QFile>
#include <QFont>
#include <QFontMetrics>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPen>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

QFont report_font(bool bold)
{
    QFont font(u"DejaVu Sans"_s);
    font.setStyleHint(QFont::SansSerif);
    font.setPointSize(kReportPointSize);
    font.setBold(bold);
    // Without kerning a cell is shaped faster; the columns are set by position anyway.
    font.setKerning(false);
    return font;
}

// The advances of the Latin characters of one font, measured once each: a cell of plain Latin text is as wide
// as the sum of its characters (kerning is off), so whether it fits is known without shaping it a second time.
class AdvanceTable
{
public:
    explicit AdvanceTable(const QFontMetricsF& metrics) : m_metrics(metrics) { m_advances.fill(-1.0); }

    // The width of the text, or nothing when a character lies outside the table.
    std::optional<double> width(const QString& text)
    {
        double sum = 0;
        for (const QChar c : text) {
            if (c.unicode() >= kSize) {
                return std::nullopt;
            }
            double& advance = m_advances[c.unicode()];
            if (advance < 0) {
                advance = m_metrics.horizontalAdvance(c);
            }
            sum += advance;
        }
        return sum;
    }

private:
    // Up to the end of Latin Extended-B: no combining marks, no scripts that shape.
    static constexpr char16_t kSize = 0x250;
    QFontMetricsF m_metrics;
    std::array<double, kSize> m_advances{};
};

} // namespace

namespace {

// Whether the text fits the width; a pixel of slack keeps sums of rounded advances on the safe side, and a text
// judged too wide is only clipped, which takes nothing away from one that fits.
bool fits_in(const QString& text, int width, const QFontMetrics& metrics, AdvanceTable& advances)
{
    if (const std::optional<double> sum = advances.width(text)) {
        return *sum + 1.0 <= width;
    }
    return metrics.horizontalAdvance(text) <= width;
}

} // namespace

void paint_page(QPainter& painter, const LaidOutPage& page, double pixels_per_twip)
{
    const auto px = [pixels_per_twip](int twips) { return static_cast<int>(std::lround(twips * pixels_per_twip)); };
    const QFont normal = report_font(false);
    const QFont bold = report_font(true);
    painter.setPen(Qt::black);
    painter.setFont(normal);
    const QFontMetrics normal_metrics = painter.fontMetrics();
    AdvanceTable normal_advances(QFontMetricsF(normal, painter.device()));
    painter.setFont(bold);
    const QFontMetrics bold_metrics = painter.fontMetrics();
    AdvanceTable bold_advances(QFontMetricsF(bold, painter.device()));
    painter.setFont(normal);
    const int normal_widest = normal_metrics.maxWidth();
    const int bold_widest = bold_metrics.maxWidth();
    bool bold_set = false;
    for (const PlacedCell& cell : page.cells) {
        if (cell.bold != bold_set) {
            painter.setFont(cell.bold ? bold : normal);
            bold_set = cell.bold;
        }
        const QFontMetrics& metrics = cell.bold ? bold_metrics : normal_metrics;
        const int widest = cell.bold ? bold_widest : normal_widest;
        const QRect box(px(cell.left + (cell.centred ? 0 : kCellTextInset)), px(cell.top),
                        px(cell.width - (cell.centred ? 0 : kCellTextInset)), px(cell.height));
        // Left-aligned text goes straight to its baseline: the laid-out form of drawText costs a text layout
        // per cell, which over thousands of pages is most of the time.
        const int baseline = box.top() + (box.height() + metrics.ascent() - metrics.descent()) / 2;
        if (cell.right) {
            const int width = metrics.horizontalAdvance(cell.text);
            painter.drawText(QPoint(box.right() - width, baseline), cell.text);
            continue;
        }
        if (cell.centred) {
            const int width = metrics.horizontalAdvance(cell.text);
            painter.drawText(QPoint(box.left() + std::max(0, (box.width() - width) / 2), baseline), cell.text);
            continue;
        }
        if (cell.text.size() * widest <= box.width() ||
            fits_in(cell.text, box.width(), metrics, cell.bold ? bold_advances : normal_advances)) {
            painter.drawText(QPoint(box.left(), baseline), cell.text);
            continue;
        }
        painter.save();
        painter.setClipRect(box);
        painter.drawText(QPoint(box.left(), baseline), cell.text);
        painter.restore();
    }
    QPen rule_pen(Qt::black);
    rule_pen.setWidthF(std::max(1.0, 15 * pixels_per_twip));
    painter.setPen(rule_pen);
    for (const Rule& rule : page.rules) {
        painter.drawLine(px(rule.left), px(rule.y), px(rule.right), px(rule.y));
    }
}

void render_pages(const ReportDocument& document, QPagedPaintDevice& device, qsizetype first, qsizetype last)
{
    const QList<qsizetype> starts = document.page_starts();
    first = std::max<qsizetype>(first, 1);
    last = std::min<qsizetype>(last, starts.size());
    if (first > last) {
        return;
    }
    QPainter painter(&device);
    const double scale = device.logicalDpiX() / 1440.0;
    for (qsizetype page = first; page <= last; ++page) {
        if (page > first) {
            device.newPage();
        }
        paint_page(painter, document.lay_out_page(page - 1, starts), scale);
    }
}

bool write_pdf(const ReportDocument& document, const QString& path, const QString& title)
{
    switch (write_standard_pdf(document, path, title, QDateTime::currentDateTimeUtc())) {
    case StandardPdfResult::Written:
        return true;
    case StandardPdfResult::FileError:
        return false;
    case StandardPdfResult::OutsideFontSet:
        break;
    }
    // Text beyond the Windows Latin set goes through Qt's PDF engine, which embeds the fonts that show it.
    {
        QFile probe(path);
        if (!probe.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            return false;
        }
    }
    QPdfWriter writer(path);
    writer.setTitle(title);
    writer.setCreator(u"Corvane Desk"_s);
    writer.setResolution(600);
    const PageSetup& sheet = document.setup();
    writer.setPageLayout(QPageLayout(QPageSize(QSizeF(sheet.width / 20.0, sheet.height / 20.0), QPageSize::Point),
                                     QPageLayout::Portrait, QMarginsF(0, 0, 0, 0)));
    render_pages(document, writer, 1, document.page_count());
    return true;
}

} // namespace cvd::reports
