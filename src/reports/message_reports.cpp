#include "reports/message_reports.h"

#include "reports/message_rows.h"
#include "reports/report_text.h"

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace {

struct Layout
{
    QString title;
    QString subject_kind; // "recipients", "carriers" or empty
    MessageFilter::Key key = MessageFilter::Key::None;
    bool scheduled = false;
};

Layout layout_of(int type)
{
    switch (type) {
    case SentByCarrier:
        return {u"Sent Message Report - By Carrier - "_s, u"carriers"_s, MessageFilter::Key::Carrier, false};
    case SentByDate:
        return {u"Sent Message Report - By Date/Time - "_s, {}, MessageFilter::Key::None, false};
    case ScheduledByRecipient:
        return {u"Scheduled Message Report - By Recipient - "_s, u"recipients"_s, MessageFilter::Key::Recipient, true};
    case ScheduledByCarrier:
        return {u"Scheduled Message Report - By Carrier - "_s, u"carriers"_s, MessageFilter::Key::Carrier, true};
    case ScheduledByDate:
        return {u"Scheduled Message Report - By Date/Time - "_s, {}, MessageFilter::Key::None, true};
    default:
        return {u"Sent Message Report - By Recipient - "_s, u"recipients"_s, MessageFilter::Key::Recipient, false};
    }
}

QString one_line(const QString& text)
{
    QString line = text;
    line.replace(u"\r\n"_s, u" "_s).replace(u'\n', u' ').replace(u'\r', u' ');
    return line;
}

QString status_of(const MessageRow& row)
{
    return row.error ? u"Failed"_s : u"Successful"_s;
}

// "Repeat Interval - Days:1  Hours:2  Minutes:3" at `position`, or nothing for a message that does not repeat.
QStringList repeat_cells(const MessageRow& row, int interval_at, int stop_at)
{
    if (row.repeat_interval <= 0) {
        return {};
    }
    const RepeatParts parts = repeat_parts(row.repeat_interval);
    return {u"#"_s + QString::number(interval_at) + u"#Repeat Interval - Days:"_s + QString::number(parts.days) +
                u"  Hours:"_s + QString::number(parts.hours) + u"  Minutes:"_s + QString::number(parts.minutes),
            u"#"_s + QString::number(stop_at) + u"#Repeat Stop: "_s + general_date(row.repeat_stop)};
}

QList<FileField> repeat_fields(const MessageRow& row)
{
    if (row.repeat_interval <= 0) {
        return {text_field({}), text_field({}), text_field({}), text_field({})};
    }
    const RepeatParts parts = repeat_parts(row.repeat_interval);
    return {value_field(parts.days), value_field(parts.hours), value_field(parts.minutes),
            text_field(general_date(row.repeat_stop))};
}

// The message text of a detail row wraps at about this many twips a character of the report's type, and its
// continuation rows stand this far in from the label.
constexpr int kTwipsPerCharacter = 105;
constexpr int kMessageIndent = 900;

class MessageReport
{
public:
    MessageReport(store::Database& db, const ReportRequest& request, ReportResult& result)
        : m_db(db), m_request(request), m_layout(layout_of(request.type)), m_out(result, request.to_file)
    {
    }

    void run()
    {
        frame();
        if (m_layout.key == MessageFilter::Key::None) {
            by_date();
        } else {
            by_entry();
        }
        if (!m_out.to_file()) {
            m_out.row({u"#0#Total Messages:"_s + QString::number(m_total)}, true);
        } else if (m_request.type == SentByDate) {
            m_out.record({text_field(u"Total Messages:"_s), value_field(m_total)});
        }
    }

private:
    bool detail() const { return m_request.depth == Depth::Detail; }
    bool totals_only() const { return m_request.depth == Depth::Totals; }
    bool carrier_report() const { return m_layout.key == MessageFilter::Key::Carrier; }

    void frame()
    {
        const QString when =
            m_layout.scheduled ? general_date(m_request.now) : range_text(m_request.start, m_request.end);
        m_out.title(m_layout.title + when);
        if (!m_layout.subject_kind.isEmpty()) {
            m_out.subject(subject_line(m_layout.subject_kind, m_request));
        }
        headings();
    }

    void headings()
    {
        const int type = m_request.type;
        if (m_out.to_file()) {
            m_out.record(file_heading());
            return;
        }
        if (m_layout.scheduled || detail()) {
            return;
        }
        if (type == SentByCarrier) {
            m_out.page_heading({u"#500#Sent"_s, u"#2500#Recipient"_s, u"#5500#Status"_s, u"#7000#Message"_s});
        } else if (type == SentByDate) {
            m_out.page_heading({u"#500#Recipient"_s, u"#3500#Status"_s, u"#5000#Message"_s});
        } else {
            m_out.page_heading({u"#500#Sent"_s, u"#3000#Status"_s, u"#5000#Message"_s});
        }
    }

    QList<FileField> file_heading() const
    {
        QStringList names;
        const QStringList repeat{u"Repeat Days"_s, u"Repeat Hours"_s, u"Repeat Minutes"_s, u"Repeat Stop"_s};
        if (m_layout.scheduled) {
            names = QStringList{u"Recipient"_s, u"Message"_s, u"Requested"_s} + repeat;
            if (carrier_report()) {
                names.prepend(u"Carrier"_s);
            }
        } else if (detail()) {
            names = QStringList{u"Recipient"_s, u"Requested"_s, u"Sent"_s, u"Status"_s, u"Message"_s} + repeat;
            if (carrier_report()) {
                names.prepend(u"Carrier"_s);
            }
        } else if (carrier_report()) {
            names = {u"Carrier"_s, u"Sent"_s, u"Recipient"_s, u"Status"_s, u"Message"_s};
        } else if (m_request.type == SentByDate) {
            names = {u"Sent"_s, u"Recipient"_s, u"Status"_s, u"Message"_s};
        } else {
            names = {u"Recipient"_s, u"Sent"_s, u"Status"_s, u"Message"_s};
        }
        QList<FileField> fields;
        for (const QString& name : names) {
            fields.append(text_field(name));
        }
        return fields;
    }

    MessageFilter filter_for(const QString& value) const
    {
        return MessageFilter{m_layout.key, value, !m_layout.scheduled, m_request.start, m_request.end, m_request.which};
    }

    void by_entry()
    {
        for (const QString& row : rows_to_report(m_request)) {
            const QString name = row_name(row);
            QString key = name;
            if (m_layout.key == MessageFilter::Key::Recipient) {
                const std::optional<QString> found = recipient_key(m_db, name);
                if (!found) {
                    continue; // a name without a row: on with the next
                }
                key = *found;
            }
            qint64 count = 0;
            for_each_message(m_db, filter_for(key), [&](const MessageRow& message) {
                if (count == 0 && !m_out.to_file() && !totals_only()) {
                    const QString heading = carrier_report() ? name : name + u' ' + message.pin;
                    m_out.row({u"#0#"_s + heading}, true);
                }
                if (!totals_only()) {
                    write_message(message, name, count == 0);
                }
                ++count;
            });
            m_total += count;
            if (m_request.zero || count > 0) {
                entry_total(name, count);
            }
            if (m_request.page_breaks) {
                m_out.new_page();
            }
        }
    }

    void entry_total(const QString& name, qint64 count)
    {
        if (m_out.to_file()) {
            if (!detail() || m_layout.scheduled) {
                m_out.record({text_field(name + u" Total:"_s), value_field(count)});
            }
            return;
        }
        m_out.row({u"#0#"_s + name + u" Total: "_s + QString::number(count)}, true);
        if (!totals_only()) {
            m_out.blank_row();
        }
    }

    void by_date()
    {
        qint64 group_count = 0;
        QDate group_day;
        bool open = false;
        const auto close_group = [&] {
            if (!open) {
                return;
            }
            if (m_out.to_file()) {
                if (!detail()) {
                    m_out.record({text_field(u"Total:"_s), value_field(group_count)});
                }
            } else {
                const QString day = totals_only() ? short_date(group_day) + u"  "_s : QString();
                m_out.row({u"#0#"_s + day + u"Total: "_s + QString::number(group_count)}, true);
                m_out.blank_row();
            }
            if (m_request.page_breaks) {
                m_out.new_page();
            }
        };
        for_each_message(m_db, filter_for({}), [&](const MessageRow& message) {
            const bool grouped = m_request.type == SentByDate;
            if (grouped && (!open || message.sent.date() != group_day)) {
                close_group();
                open = true;
                group_day = message.sent.date();
                group_count = 0;
                if (!m_out.to_file() && !totals_only()) {
                    m_out.row({u"#0#"_s + short_date(group_day)}, true);
                }
            }
            if (!totals_only()) {
                write_message(message, message.recipient, group_count == 0);
            }
            ++group_count;
            ++m_total;
        });
        close_group();
    }

    void write_message(const MessageRow& message, const QString& entry, bool first)
    {
        if (m_out.to_file()) {
            m_out.record(message_record(message, entry));
        } else if (detail() || m_layout.scheduled) {
            if (!first) {
                m_out.blank_row();
            }
            detail_rows(message);
        } else {
            summary_row(message);
        }
    }

    QString label_of(const MessageRow& message)
    {
        if (!carrier_report()) {
            return message.recipient;
        }
        return recipient_label(m_db, message.recipient);
    }

    void summary_row(const MessageRow& message)
    {
        const QString sent = general_date(message.sent);
        const QString text = one_line(message.message);
        if (m_request.type == SentByCarrier) {
            m_out.row({u"#500#"_s + sent, u"#2500#"_s + label_of(message), u"#5500#"_s + status_of(message),
                       u"#7000#"_s + text});
        } else if (m_request.type == SentByDate) {
            m_out.row({u"#500#"_s + message.recipient, u"#3500#"_s + status_of(message), u"#5000#"_s + text});
        } else {
            m_out.row({u"#500#"_s + sent, u"#3000#"_s + status_of(message), u"#5000#"_s + text});
        }
    }

    void add_row(const QStringList& cells)
    {
        if (!cells.isEmpty()) {
            m_out.row(cells);
        }
    }

    // "Message: " and the text, carried on in rows of its own when it is longer than the line, indented under
    // the label, so that a detail report shows the whole message.
    void add_message(QStringList cells, int position, const QString& text)
    {
        const int continuation = position + kMessageIndent;
        const qsizetype width = (m_request.page.printable_width() - continuation) / kTwipsPerCharacter;
        const QStringList lines = wrap_words(text, width);
        cells.append(u"#"_s + QString::number(position) + u"#Message: "_s + lines.first());
        add_row(cells);
        for (qsizetype i = 1; i < lines.size(); ++i) {
            add_row({u"#"_s + QString::number(continuation) + u'#' + lines[i]});
        }
    }

    void detail_rows(const MessageRow& message)
    {
        const QString requested = general_date(message.requested);
        const QString sent = general_date(message.sent);
        const QString status = status_of(message);
        const QString text = one_line(message.message);
        switch (m_request.type) {
        case SentByCarrier:
            add_row({u"#0#Recipient: "_s + label_of(message), u"#4000#Status: "_s + status});
            add_row({u"#0#Requested: "_s + requested, u"#4000#Sent: "_s + sent});
            add_row(repeat_cells(message, 0, 6000));
            add_message({}, 0, text);
            break;
        case SentByDate:
            add_row({u"#0#Recipient: "_s + message.recipient, u"#3000#Status: "_s + status,
                     u"#5000#Requested: "_s + requested, u"#8000#Sent: "_s + sent});
            add_row(repeat_cells(message, 0, 5000));
            add_message({}, 0, text);
            break;
        case ScheduledByRecipient:
            add_row(QStringList{u"#0#Requested: "_s + requested} + repeat_cells(message, 3500, 8200));
            add_message({}, 0, text);
            break;
        case ScheduledByCarrier:
            add_message({u"#0#Recipient: "_s + label_of(message)}, 3500, text);
            add_row(QStringList{u"#0#Requested: "_s + requested} + repeat_cells(message, 3500, 8200));
            break;
        case ScheduledByDate:
            add_row(QStringList{u"#0#Requested: "_s + requested} + repeat_cells(message, 3100, 7900));
            add_message({u"#0#Recipient: "_s + message.recipient}, 3100, text);
            break;
        default:
            add_row({u"#0#Status: "_s + status, u"#2300#Requested:"_s + requested, u"#6000#Sent: "_s + sent});
            add_row(repeat_cells(message, 0, 6000));
            add_message({}, 0, text);
            break;
        }
    }

    QList<FileField> message_record(const MessageRow& message, const QString& entry)
    {
        const FileField sent = text_field(general_date(message.sent));
        const FileField requested =
            text_field(m_layout.scheduled || detail() ? general_date(message.requested) : QString());
        const FileField status = text_field(status_of(message));
        const FileField text = text_field(message.message);
        if (m_layout.scheduled) {
            QList<FileField> fields{text_field(label_of(message)), text, requested};
            fields += repeat_fields(message);
            if (carrier_report()) {
                fields.prepend(text_field(entry));
            }
            return fields;
        }
        if (detail()) {
            const QString who = m_request.type == SentByRecipient ? entry : label_of(message);
            QList<FileField> fields{text_field(who), requested, sent, status, text};
            fields += repeat_fields(message);
            if (carrier_report()) {
                fields.prepend(text_field(entry));
            }
            return fields;
        }
        if (carrier_report()) {
            return {text_field(entry), sent, text_field(label_of(message)), status, text};
        }
        if (m_request.type == SentByDate) {
            return {sent, text_field(message.recipient), status, text};
        }
        return {text_field(entry + u' ' + message.pin), sent, status, text};
    }

    store::Database& m_db;
    const ReportRequest& m_request;
    Layout m_layout;
    ReportWriter m_out;
    qint64 m_total = 0;
};

} // namespace

void message_report(store::Database& db, const ReportRequest& request, ReportResult& result)
{
    MessageReport(db, request, result).run();
}

} // namespace cvd::reports
