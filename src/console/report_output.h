#pragma once

#include "reports/report_request.h"

class QCheckBox;
class QGridLayout;
class QGroupBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QWidget;

namespace cvd::console {

struct ConsoleContext;

// The three ways a report leaves frmReports and frmRecipientList.
enum class ReportOutput { Print, Save, Send };

// To the printer: the printer dialog first (cancelling generates nothing), then the preview, or the pages
// straight to the printer and the "Report Printed" box.
void print_report(ConsoleContext& context, QWidget& caller, const reports::ReportRequest& request, bool preview);

// To the file, replaced without a question: the quoted text, or a PDF for a name ending in ".pdf".
void save_report_file(ConsoleContext& context, QWidget& caller, const reports::ReportRequest& request,
                      const QString& path);

// The save dialog of btnBrowse: the chosen name, or empty when it was cancelled.
QString browse_report_file(ConsoleContext& context, const QString& current);

// The Output group of both report windows: print (with or without the preview) or write to a file, print and
// preview chosen. The grid's row 3 is left for a window's own way out.
struct ReportOutputControls
{
    QGroupBox* fraOutput = nullptr;
    QRadioButton* optPrint = nullptr;
    QCheckBox* chkPreview = nullptr;
    QRadioButton* optSave = nullptr;
    QLineEdit* txtSaveTo = nullptr;
    QPushButton* btnBrowse = nullptr;
    QGridLayout* grid = nullptr;
};
ReportOutputControls make_report_output(QWidget* parent);

// The list of a report window: the "(ALL)" row first and selected, then the rows.
void fill_report_list(QListWidget& list, const QStringList& rows);

// The list into the request: its rows (without "(ALL)") and the rows selected.
void read_report_list(const QListWidget& list, reports::ReportRequest& request);

} // namespace cvd::console
