#include "reports/report_text.h"

#include "core/record_format.h"

#include <QLocale>
#include <algorithm>

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

// The locale and its formats are looked up once: a report formats hundreds of thousands of dates, and most of
// them share their day with the one before.
struct DateTexts
{
    QLocale locale = QLocale::system();
    QString date_format = locale.dateFormat(QLocale::ShortFormat);
    QString time_format = time_format_with_seconds(locale);
    QDate last_date;
    QString last_date_text;

    const QString& date_text(const QDate& date)
    {
        if (date != last_date) {
            last_date = date;
            last_date_text = locale.toString(date, date_format);
        }
        return last_date_text;
    }
};

DateTexts& date_texts()
{
    thread_local DateTexts texts;
    return texts;
}

} // namespace

QString general_date(const QDateTime& value)
{
    if (!value.isValid()) {
        return {};
    }
    DateTexts& texts = date_texts();
    return texts.date_text(value.date()) + u' ' + texts.locale.toString(value.time(), texts.time_format);
}

QString short_date(const QDate& value)
{
    return value.isValid() ? date_texts().date_text(value) : QString();
}

QString range_text(const QDateTime& start, const QDateTime& end)
{
    return general_date(start) + u" to "_s + general_date(end);
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

QStringList wrap_words(const QString& text, qsizetype width)
{
    QStringList lines;
    QString rest = text;
    width = std::max<qsizetype>(width, 10);
    while (rest.size() > width) {
        qsizetype cut = rest.lastIndexOf(u' ', width);
        if (cut <= 0) {
            cut = width;
        }
        lines.append(rest.left(cut));
        rest = rest.mid(cut).trimmed();
    }
    lines.append(rest);
    return lines;
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
