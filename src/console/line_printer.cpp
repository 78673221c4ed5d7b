#include "console/line_printer.h"

#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPrinter>
#include <algorithm>

namespace cvd::console {

namespace {

constexpr double kTwipsPerPoint = 20.0;

} // namespace

void print_lines(QPrinter& printer, const QStringList& lines, const QFont& font, int margin_twips, bool wrap)
{
    const double margin = margin_twips / kTwipsPerPoint;
    printer.setPageMargins(QMarginsF(margin, margin, margin, margin), QPageLayout::Point);
    QPainter painter;
    if (!painter.begin(&printer)) {
        return;
    }
    painter.setFont(QFont(font, painter.device()));
    const QFontMetricsF metrics(painter.font());
    const QRectF page(QPointF(0, 0), QSizeF(printer.pageLayout().paintRectPixels(printer.resolution()).size()));
    const qsizetype columns =
        std::max<qsizetype>(1, static_cast<qsizetype>(page.width() / metrics.horizontalAdvance(u'M')));
    const double line_height = metrics.lineSpacing();
    double y = metrics.ascent();
    auto print_one = [&](const QString& text) {
        if (y > page.height() && y > metrics.ascent()) {
            printer.newPage();
            y = metrics.ascent();
        }
        painter.drawText(QPointF(0, y), text);
        y += line_height;
    };
    for (const QString& line : lines) {
        if (!wrap || line.size() <= columns) {
            print_one(line);
            continue;
        }
        for (qsizetype from = 0; from < line.size(); from += columns) {
            print_one(line.mid(from, columns));
        }
    }
    painter.end();
}

} // namespace cvd::console
