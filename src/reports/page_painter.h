#pragma once

#include "reports/page_document.h"

#include <QString>

class QPainter;
class QPagedPaintDevice;

namespace cvd::reports {

// Paints one laid-out page; the painter's origin is the sheet's top-left corner and `pixels_per_twip` the
// device's scale.
void paint_page(QPainter& painter, const LaidOutPage& page, double pixels_per_twip);

// Paints the pages first to last (1-based, inclusive, clamped to the document) onto a paged device whose
// painter starts at the sheet's corner (no device margins): a printer in full-page mode or a PDF writer.
void render_pages(const ReportDocument& document, QPagedPaintDevice& device, qsizetype first, qsizetype last);

// Writes the whole document as a PDF on the document's sheet: in the standard fonts when every text is in the
// Windows Latin set, else through Qt's PDF engine. False when the file cannot be written.
bool write_pdf(const ReportDocument& document, const QString& path, const QString& title);

} // namespace cvd::reports
