#include "reports/report_text.h"

#include "core/record_format.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

QString time_format_with_seconds(const QLocale& locale)
{
    QString format = locale.timeFormat(QLocale::ShortFormat);
    if (!format.contains(u's')) {
        const qsizetype minutes = format.indexOf(u"mm"_s);
        if (minutes >= 0) {
            format.insert(minutes + 2, u":ss"_s);
        }
    }
    return format;
}

} // namespace

QString general_date(const QDateTime& value)
{
    if (!value.isValid()) {
        return {};
    }
    const QLocale locale = QLocale::system();
    return locale.toString(value.date(), QLocale::ShortFormat) + u' ' +
           locale.toString(value.time(), time_format_with_seconds(locale));
}

QString short_date(const QDate& value)
{
    return value.isValid() ? QLocale::system().toString(value, QLocale::ShortFormat) : QString();
}

QString range_text(const QDateTime& start, const QDateTime& end)
{
    const QLocale locale = QLocale::system();
    const QString time_format = time_format_with_seconds(locale);
    return short_date(start.date()) + u' ' + locale.toString(start.time(), time_format) + u" to "_s +
           short_date(end.date()) + u' ' + locale.toString(end.time(), time_format);
}

QString subject_line(const QString& kind, const ReportRequest& request)
{
    if (request.selected.contains(kAllRow)) {
        return u"Report for "_s + kind + u": all "_s + kind;
    }
    QStringList names;
    for (const QString& row : request.selected) {
        names.append(row_name(row));
    }
    return u"Report for "_s + kind + u": "_s + names.join(u", "_s);
}

QString row_name(const QString& row)
{
    return row.startsWith(u'(') ? row.mid(3).trimmed() : row;
}

FileField text_field(const QString& text)
{
    return FileField{text, true};
}

FileField value_field(qint64 value)
{
    return FileField{QString::number(value), false};
}

FileField value_field(const QString& number_text)
{
    return FileField{number_text, false};
}

void ReportWriter::title(const QString& text)
{
    m_result.title = text;
    if (m_to_file) {
        record({text_field(text)});
        empty_line();
        return;
    }
    Row& row = m_result.document.add_header_row({text});
    row.centred = true;
    row.bold = true;
}

void ReportWriter::subject(const QString& text)
{
    if (m_to_file) {
        record({text_field(text)});
        empty_line();
        return;
    }
    m_result.document.add_header_row({text}).centred = true;
}

void ReportWriter::page_heading(const QStringList& cells)
{
    Row& row = m_result.document.add_header_row(cells);
    row.bold = true;
    row.line_bottom = true;
}

Row& ReportWriter::row(const QStringList& cells, bool bold)
{
    Row& added = m_result.document.add_body_row(cells);
    added.bold = bold;
    return added;
}

void ReportWriter::blank_row()
{
    m_result.document.add_body_row({});
}

void ReportWriter::record(const QList<FileField>& fields)
{
    QList<QString> written;
    written.reserve(fields.size());
    for (const FileField& field : fields) {
        written.append(field.quoted ? quoted_field(field.text) : field.text);
    }
    m_result.file_text += record_line(written);
}

} // namespace cvd::reports
