#pragma once

#include "core/prompter.h"
#include "reports/report_request.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace cvd {
struct AppState;
}

namespace cvd::reports {

// How frmReports looks for one report type: its caption, its list, and which option groups it offers.
struct ReportsSetup
{
    QString routine; // the setup routine's name, for the error path
    QString caption;
    QString list_caption; // "Recipient(s)" or " Carrier(s)"; empty when the list is not shown
    bool carriers = false;
    bool dates = true;       // the start and end pickers
    bool depth = true;       // Summary, Details, Totals Only
    bool which = true;       // All, Bad, Good
    bool zero = true;        // chkZero
    bool page_breaks = true; // chkPageBreaks
    bool send = false;       // optSend enabled
};
ReportsSetup reports_setup(int type);

// How frmRecipientList looks for one list type.
struct ListSetup
{
    QString routine;
    QString caption;
    QString list_caption;
    QString members_caption; // chkRecipients; empty when not offered
};
ListSetup list_setup(int type);

// The list rows of frmReports: recipients as "(G) name", "(A) name" or the full name; or the carriers' names.
// Throws store::Error.
QStringList report_list_rows(store::Database& db, bool carriers);
// The list rows of frmRecipientList by type. Throws store::Error.
QStringList directory_list_rows(store::Database& db, int type);

// Start today at midnight, end now.
struct DateRange
{
    QDateTime start;
    QDateTime end;
};
DateRange default_range(const QDateTime& now);

// The refusal of Apply, or nullopt when the report may run.
std::optional<Notice> apply_refusal(int type, bool any_selected, bool to_file, const QString& file_name);

// The name of the routine of frmPP for a type, for the error path ("SentByRecipientReport").
QString routine_name(int type);

// Builds the report, taking database failures through the common error path.
ReportResult run_report(AppState& state, const ReportRequest& request);

// Where a report goes when written to a file: the quoted text form, or a PDF of the pages for a name ending
// in ".pdf".
bool is_pdf_name(const QString& path);
// Writes the report to the file, replacing it. The notice to show: "File Saved" or why it failed.
Notice save_report(AppState& state, const ReportRequest& request, const QString& path);

} // namespace cvd::reports
