#pragma once

#include "reports/page_document.h"

#include <QDateTime>
#include <QString>

namespace cvd::reports {

enum class StandardPdfResult {
    Written,
    OutsideFontSet, // a text has a character the standard fonts cannot show; nothing was written
    FileError,
};

// Writes the document as a PDF whose page content is set directly in the standard Helvetica faces, which every
// PDF reader has: one text run per cell, so a report of thousands of pages comes out in a moment and small. The
// file is replaced only once it is whole.
StandardPdfResult write_standard_pdf(const ReportDocument& document, const QString& path, const QString& title,
                                     const QDateTime& created);

} // namespace cvd::reports
