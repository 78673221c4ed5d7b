#pragma once

#include "reports/report_request.h"

#include <QString>

namespace cvd::reports {

// The kind a carrier list shows for a stored cv_dial_type, by its first three letters; empty when unknown.
QString carrier_kind(const QString& dial_type);

// The three address-book lists (types 31-33).
void directory_report(store::Database& db, const ReportRequest& request, ReportResult& result);

} // namespace cvd::reports
