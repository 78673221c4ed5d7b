#pragma once

#include "reports/report_request.h"

namespace cvd::reports {

// The six message reports (types 1-3 and 11-13): rows of the queue by recipient, carrier or day, with their
// totals, on the page or in the file form.
void message_report(store::Database& db, const ReportRequest& request, ReportResult& result);

} // namespace cvd::reports
