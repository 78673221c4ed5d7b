#pragma once

#include "reports/report_request.h"

#include <QDateTime>
#include <QString>

namespace cvd::reports {

// The figures one statistics report gathers over all its rows.
struct Statistics
{
    double total = 0;
    double good = 0;
    double sum = 0;
    double longest = 0;
    double shortest = 99999999; // none seen yet; turned to 0 when the loop ends with it
};

// Adds one row's delivery time (seconds from requested to sent, negative when sent lies before).
void add_delivery(Statistics& statistics, qint64 seconds, bool error);
// Ends the loop: a shortest never set becomes 0.
void finish(Statistics& statistics);

// The spans of a range in whole calendar units (boundaries crossed), each at least 1.
struct Spans
{
    qint64 days = 1;
    qint64 hours = 1;
    qint64 minutes = 1;
    qint64 seconds = 1;
};
Spans spans_of(const QDateTime& start, const QDateTime& end);

// "2(min) 5(sec)" for the longest and shortest times, and for the average.
QString extreme_time_text(double seconds);
QString average_time_text(const Statistics& statistics);

// The three statistics reports (types 21-23).
void statistics_report(store::Database& db, const ReportRequest& request, ReportResult& result);

} // namespace cvd::reports
