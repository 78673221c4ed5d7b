#pragma once

#include "reports/report_request.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

namespace cvd::reports {

// The locale's short date with the time and its seconds, and its short date alone.
QString general_date(const QDateTime& value);
QString short_date(const QDate& value);

// " 2026-11-23 00:00:00 to ..." as a title ends: start date and time, " to ", end date and time.
QString range_text(const QDateTime& start, const QDateTime& end);

// "Report for recipients: a, b" or "Report for recipients: all recipients".
QString subject_line(const QString& kind, const ReportRequest& request);

// A list row's name: a row that begins with "(" loses its three-character mark.
QString row_name(const QString& row);

// The text in lines of at most `width` characters, broken after a blank where there is one; one empty line
// for an empty text.
QStringList wrap_words(const QString& text, qsizetype width);

// A field of a record of the file form: quoted text, or a bare number.
struct FileField
{
    QString text;
    bool quoted = true;
};
FileField text_field(const QString& text);
FileField value_field(qint64 value);
FileField value_field(const QString& number_text);

// Collects a report's output, page or file, as the routine's frame asks.
class ReportWriter
{
public:
    ReportWriter(ReportResult& result, bool to_file) : m_result(result), m_to_file(to_file) {}
    bool to_file() const { return m_to_file; }

    // The frame: the title (header row 1, centred and bold) and the subject line (header row 2, centred).
    void title(const QString& text);
    void subject(const QString& text);
    // The heading row of columns on the page: bold with a rule under it.
    void page_heading(const QStringList& cells);
    Row& row(const QStringList& cells, bool bold = false);
    void blank_row();
    void new_page() { m_result.document.new_page(); }
    void record(const QList<FileField>& fields);
    void empty_line() { record({text_field({})}); }

private:
    ReportResult& m_result;
    bool m_to_file;
};

} // namespace cvd::reports
