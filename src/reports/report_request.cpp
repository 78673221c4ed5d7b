#include "reports/report_request.h"

#include "reports/directory_reports.h"
#include "reports/message_reports.h"
#include "reports/statistics_reports.h"
#include "store/database.h"

namespace cvd::reports {

QStringList rows_to_report(const ReportRequest& request)
{
    if (request.selected.contains(kAllRow)) {
        return request.rows;
    }
    QStringList chosen;
    for (const QString& row : request.rows) {
        if (request.selected.contains(row) && !chosen.contains(row)) {
            chosen.append(row);
        }
    }
    return chosen;
}

ReportResult build_report(store::Database& db, const ReportRequest& request)
{
    ReportResult result{{}, ReportDocument(request.page), {}};
    const store::ReadTransaction snapshot(db);
    if (request.type >= RecipientList) {
        directory_report(db, request, result);
    } else if (request.type >= StatisticsByRecipient) {
        statistics_report(db, request, result);
    } else {
        message_report(db, request, result);
    }
    return result;
}

} // namespace cvd::reports
