#pragma once

#include "reports/page_document.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace cvd::store {
class Database;
}

namespace cvd::reports {

// The report types of the menu: 1-3 sent, 11-13 scheduled, 21-23 statistics, 31-33 directory lists.
enum ReportType : int {
    SentByRecipient = 1,
    SentByDate = 2,
    SentByCarrier = 3,
    ScheduledByRecipient = 11,
    ScheduledByDate = 12,
    ScheduledByCarrier = 13,
    StatisticsByRecipient = 21,
    StatisticsByDate = 22,
    StatisticsByCarrier = 23,
    RecipientList = 31,
    GroupList = 32,
    CarrierList = 33,
};

enum class Depth { Summary, Detail, Totals };
enum class Which { All, Bad, Good };

inline const QString kAllRow = QStringLiteral("(ALL)");

// Everything a report routine reads from its dialog.
struct ReportRequest
{
    int type = SentByRecipient;
    QStringList selected; // the list rows chosen; "(ALL)" among them means every row
    QStringList rows;     // every row of the list but "(ALL)", in the list's order
    QDateTime start;
    QDateTime end;
    QDateTime now; // the present moment, for the titles of reports without a range
    Depth depth = Depth::Summary;
    Which which = Which::All;
    bool zero = false;
    bool page_breaks = false;
    bool members = false; // chkRecipients of the list reports
    bool to_file = false;
    PageSetup page; // the sheet of the chosen printer; letter unless a printer says otherwise
};

// A report in one of its two forms: the page document, or the text of the file (quoted records, CR LF).
struct ReportResult
{
    QString title;
    ReportDocument document;
    QString file_text;
};

// Runs the routine of request.type over the global database. Throws store::Error.
ReportResult build_report(store::Database& db, const ReportRequest& request);

// The rows a routine walks: every row when "(ALL)" is chosen, else the chosen ones in list order.
QStringList rows_to_report(const ReportRequest& request);

} // namespace cvd::reports
