#include "reports/statistics_reports.h"

#include "core/text.h"
#include "reports/message_rows.h"
#include "reports/report_text.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

qint64 at_least_one(qint64 value)
{
    return value < 1 ? 1 : value;
}

// Whole units between the two moments counted by boundaries crossed, as a calendar difference counts them.
qint64 boundaries_crossed(const QDateTime& start, const QDateTime& end, qint64 unit_seconds)
{
    const qint64 from = QDateTime(start.date(), QTime(0, 0)).secsTo(start);
    const qint64 base_days = start.date().daysTo(end.date());
    const qint64 to = base_days * 86400 + QDateTime(end.date(), QTime(0, 0)).secsTo(end);
    return to / unit_seconds - from / unit_seconds;
}

QString number_text(double value)
{
    return QString::number(value, 'g', 15);
}

QString rate_text(double total, qint64 span)
{
    return QString::number(total / static_cast<double>(span), 'f', 2);
}

} // namespace

void add_delivery(Statistics& statistics, qint64 seconds, bool error)
{
    const auto value = static_cast<double>(seconds);
    if (value >= statistics.longest) {
        statistics.longest = value;
    }
    if (value < statistics.shortest) {
        statistics.shortest = value;
    }
    statistics.sum += value;
    statistics.total += 1;
    if (!error) {
        statistics.good += 1;
    }
}

void finish(Statistics& statistics)
{
    if (statistics.shortest == 99999999) {
        statistics.shortest = 0;
    }
}

Spans spans_of(const QDateTime& start, const QDateTime& end)
{
    return Spans{at_least_one(start.date().daysTo(end.date())), at_least_one(boundaries_crossed(start, end, 3600)),
                 at_least_one(boundaries_crossed(start, end, 60)), at_least_one(start.secsTo(end))};
}

QString extreme_time_text(double seconds)
{
    const qint64 minutes = to_int32(seconds) / 60;
    return QString::number(minutes) + u"(min) "_s + number_text(seconds - static_cast<double>(minutes) * 60) +
           u"(sec)"_s;
}

QString average_time_text(const Statistics& statistics)
{
    const double value = statistics.sum / statistics.total;
    const double minutes = std::floor(value / 60);
    const double seconds = std::floor(value - minutes * 60);
    return number_text(minutes) + u"(min) "_s + number_text(seconds) + u"(sec)"_s;
}

namespace {

struct StatisticsLayout
{
    QString title;
    QString subject_kind;
    MessageFilter::Key key;
};

StatisticsLayout statistics_layout(int type)
{
    if (type == StatisticsByRecipient) {
        return {u"Recipient Statistics Report - "_s, u"recipients"_s, MessageFilter::Key::Recipient};
    }
    if (type == StatisticsByCarrier) {
        return {u"Carrier Statistics Report - "_s, u"carriers"_s, MessageFilter::Key::Carrier};
    }
    return {u"Statistics Report - "_s, {}, MessageFilter::Key::None};
}

void gather(store::Database& db, const ReportRequest& request, MessageFilter::Key key, Statistics& statistics)
{
    MessageFilter filter{key, {}, true, request.start, request.end, request.which};
    const auto visit = [&statistics](const MessageRow& row) {
        if (!row.sent.isValid()) {
            return; // a sent row without its time has no delivery time
        }
        add_delivery(statistics, row.requested.secsTo(row.sent), row.error);
    };
    if (key == MessageFilter::Key::None) {
        for_each_message(db, filter, visit);
        return;
    }
    for (const QString& row : rows_to_report(request)) {
        filter.value = row_name(row);
        if (key == MessageFilter::Key::Recipient) {
            const std::optional<QString> found = recipient_key(db, filter.value);
            if (!found) {
                continue;
            }
            filter.value = *found;
        }
        for_each_message(db, filter, visit);
    }
}

// One line of the block: "#500#label" and value on the page, label and value in the file.
void line(ReportWriter& out, const QString& label, const QString& value, bool quoted_value = false)
{
    if (out.to_file()) {
        out.record({text_field(label), quoted_value ? text_field(value) : value_field(value)});
    } else {
        out.row({u"#500#"_s + label + value});
    }
}

void heading(ReportWriter& out, const QString& text)
{
    if (out.to_file()) {
        out.record({text_field(text)});
    } else {
        out.row({u"#0#"_s + text}, true);
    }
}

void gap(ReportWriter& out)
{
    if (out.to_file()) {
        out.empty_line();
    } else {
        out.blank_row();
    }
}

} // namespace

void statistics_report(store::Database& db, const ReportRequest& request, ReportResult& result)
{
    const StatisticsLayout layout = statistics_layout(request.type);
    ReportWriter out(result, request.to_file);
    out.title(layout.title + range_text(request.start, request.end));
    if (!layout.subject_kind.isEmpty()) {
        out.subject(subject_line(layout.subject_kind, request));
    }
    Statistics statistics;
    gather(db, request, layout.key, statistics);
    finish(statistics);

    const Spans spans = spans_of(request.start, request.end);
    const bool file = out.to_file();
    heading(out, u"Throughput"_s);
    line(out, file ? u"Messages per day:"_s : u"Messages per day: "_s, rate_text(statistics.total, spans.days));
    line(out, file ? u"Messages per hour:"_s : u"Messages per hour: "_s, rate_text(statistics.total, spans.hours));
    line(out, file ? u"Messages per minute:"_s : u"Messages per minute: "_s,
         rate_text(statistics.total, spans.minutes));
    line(out, file ? u"Messages per second:"_s : u"Messages per second: "_s,
         rate_text(statistics.total, spans.seconds));
    gap(out);
    heading(out, u"Timing"_s);
    line(out, u"Longest Delivery Time:"_s, extreme_time_text(statistics.longest), true);
    line(out, u"Shortest Delivery Time:"_s, extreme_time_text(statistics.shortest), true);
    if (statistics.total > 0) {
        line(out, u"Average Delivery Time:"_s, average_time_text(statistics), true);
    } else if (file) {
        out.record({text_field(u"Average Delliver Time: 0(min) 0(sec)"_s)});
    } else {
        out.row({u"#500#Average Delliver Time: 0(min) 0(sec)"_s}); // the old spelling, kept
    }
    gap(out);
    heading(out, u"Delivery Results"_s);
    line(out, u"Total messages:"_s, number_text(statistics.total));
    if (request.which != Which::All) {
        return;
    }
    line(out, u"Successful:"_s, number_text(statistics.good));
    const double failed = std::floor(statistics.total - statistics.good);
    line(out, u"Failed:"_s, number_text(failed));
    if (statistics.total > 0) {
        line(out, u"Failure Rate:"_s, number_text(failed / statistics.total * 100) + u'%', true);
    } else if (file) {
        line(out, u"Failure Rate:"_s, u"0"_s, true);
    } else {
        out.row({u"#500#failure Rate: 0"_s}); // lower case, as it has always been printed
    }
}

} // namespace cvd::reports
