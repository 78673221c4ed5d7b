#include "queue/history.h"

#include "store/database.h"
#include "store/unique.h"

#include <QLocale>
#include <array>
#include <atomic>

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace {

// Positions deeper than this are read from the worked-out order rather than by skipping rows in the index.
constexpr qint64 kDirectDepth = 5000;

const std::array<QString, kHistoryColumnCount> kHeadings = {
    u"Message ID"_s, u"Requested"_s,          u"Sent"_s,          u"Status"_s, u"Sent To"_s, u"Sent From"_s,
    u"Message"_s,    u"Requested as Float"_s, u"Sent as Float"_s,
};

struct SortDefinition
{
    HistorySort sort;
    const char16_t* name;
    int column;
    bool ascending;
    std::array<int, 6> keys;
};

constexpr std::array<SortDefinition, 12> kSorts = {{
    {HistorySort::RequestedAscending, u"SortByRequestedAscending", 1, true, {7, 8, 4, 3, 5, 6}},
    {HistorySort::RequestedDescending, u"SortByRequestedDescending", 1, false, {7, 8, 4, 3, 5, 6}},
    {HistorySort::SentAscending, u"SortBySentAscending", 2, true, {8, 7, 4, 3, 5, 6}},
    {HistorySort::SentDescending, u"SortBySentDescending", 2, false, {8, 7, 4, 3, 5, 6}},
    {HistorySort::StatusAscending, u"SortByStatusAscending", 3, true, {3, 7, 8, 4, 5, 6}},
    {HistorySort::StatusDescending, u"SortByStatusDescending", 3, false, {3, 7, 8, 4, 5, 6}},
    {HistorySort::ToAscending, u"SortByToAscending", 4, true, {4, 7, 8, 3, 5, 6}},
    {HistorySort::ToDescending, u"SortByToDescending", 4, false, {4, 7, 8, 3, 5, 6}},
    {HistorySort::FromAscending, u"SortByFromAscending", 5, true, {5, 7, 8, 3, 4, 6}},
    {HistorySort::FromDescending, u"SortByFromDescending", 5, false, {5, 7, 8, 3, 4, 6}},
    {HistorySort::MessageAscending, u"SortByMessageAscending", 6, true, {6, 7, 8, 4, 3, 5}},
    {HistorySort::MessageDescending, u"SortByMessageDescending", 6, false, {6, 7, 8, 4, 3, 5}},
}};

const SortDefinition& definition(HistorySort sort)
{
    return kSorts.at(static_cast<std::size_t>(sort));
}

struct FieldLayout
{
    QString heading;
    QString rule;
    std::array<int, 5> widths;
};

FieldLayout field_layout(HistoryLayout layout)
{
    if (layout == HistoryLayout::Print) {
        return {u"Requested            Sent                 Status     Sent To                             "
                u"Sent From                           Message"_s,
                u"---------            ----                 ------     -------                             "
                u"---------                           -------"_s,
                {20, 20, 10, 35, 35}};
    }
    return {u"Requested            Sent                 Status     Sent To                                  "
            u"Sent From                                Message"_s,
            u"---------            ----                 ------     -------                                  "
            u"---------                                -------"_s,
            {20, 20, 10, 40, 40}};
}

QString with_seconds(const QString& format)
{
    const qsizetype minutes = format.indexOf(u"mm"_s);
    if (format.contains(u"ss"_s) || minutes < 0) {
        return format;
    }
    return format.left(minutes + 2) + u":ss"_s + format.mid(minutes + 2);
}

// The general date: the locale's short date, then its time with seconds.
const QString& general_day_format()
{
    static const QString format = QLocale().dateFormat(QLocale::ShortFormat);
    return format;
}

const QString& general_time_format()
{
    static const QString format = with_seconds(QLocale().timeFormat(QLocale::ShortFormat));
    return format;
}

// A stored date as its day and time, read without the general text parser and without a local time
// conversion, both slow when a search reads a million rows. Text of another shape goes the general way.
struct DayAndTime
{
    QDate day;
    QTime time;
};

std::optional<DayAndTime> stored_date(const std::optional<QString>& text)
{
    if (!text) {
        return std::nullopt;
    }
    const QString& value = *text;
    auto number = [&value](qsizetype from, qsizetype length) {
        int result = 0;
        for (qsizetype i = from; i < from + length; ++i) {
            const char16_t digit = value.at(i).unicode();
            if (digit < u'0' || digit > u'9') {
                return -1;
            }
            result = result * 10 + (digit - u'0');
        }
        return result;
    };
    if (value.size() == 19 && value.at(4) == u'-' && value.at(7) == u'-' && value.at(10) == u' ' &&
        value.at(13) == u':' && value.at(16) == u':') {
        const QDate day(number(0, 4), number(5, 2), number(8, 2));
        const QTime time(number(11, 2), number(14, 2), number(17, 2));
        if (day.isValid() && time.isValid()) {
            return DayAndTime{day, time};
        }
    }
    if (const std::optional<QDateTime> parsed = store::parse_date(value)) {
        return DayAndTime{parsed->date(), parsed->time()};
    }
    return std::nullopt;
}

QString general_date_text(const std::optional<DayAndTime>& value)
{
    if (!value) {
        return {};
    }
    // Rows of one day share its text; only the time is formatted for each.
    static QDate last_day;
    static QString last_day_text;
    const QLocale locale;
    if (value->day != last_day) {
        last_day = value->day;
        last_day_text = locale.toString(last_day, general_day_format());
    }
    return last_day_text + u' ' + locale.toString(value->time, general_time_format());
}

double ole_date_number(const std::optional<DayAndTime>& value)
{
    if (!value) {
        return 0;
    }
    static const QDate kEpoch(1899, 12, 30);
    constexpr double kMillisecondsADay = 86400000.0;
    return static_cast<double>(kEpoch.daysTo(value->day)) +
           static_cast<double>(value->time.msecsSinceStartOfDay()) / kMillisecondsADay;
}

std::optional<DayAndTime> day_and_time(const std::optional<QDateTime>& value)
{
    if (!value || !value->isValid()) {
        return std::nullopt;
    }
    return DayAndTime{value->date(), value->time()};
}

QString status_case(StatusRule rule)
{
    return u"(CASE WHEN IFNULL(m.cv_sent, 0) <> 0 THEN (CASE WHEN IFNULL(m.cv_error, 0) <> 0 THEN '%1' ELSE '%2' END) "
           u"WHEN IFNULL(m.cv_scheduled, 0) <> 0 THEN '%3' ELSE '%4' END)"_s.arg(
               history_status(true, true, false, rule), history_status(true, false, false, rule),
               history_status(false, false, true, rule), history_status(false, false, false, rule));
}

// The recipient's full name, or the stored key when no recipient row has it, then ":" and the pin.
const QString kSentToExpression =
    u"(IFNULL((SELECT r.cv_full_name FROM cv_recipients r WHERE r.cv_name = m.cv_recipient LIMIT 1), "
    u"IFNULL(m.cv_recipient, '')) || CASE WHEN TRIM(IFNULL(m.cv_pin, '')) <> '' THEN ':' || m.cv_pin ELSE '' "
    u"END)"_s;
const QString kFromExpression = u"IFNULL(m.cv_from, '')"_s;
const QString kMessageExpression =
    u"replace(replace(replace(IFNULL(m.cv_message, ''), char(9), ' '), char(13), ' '), char(10), ' ')"_s;

// The SQL that a sort key stands for. The two float columns sort as the stored dates do: text order is time
// order and a missing date, like the 0 it shows as, comes first.
QString key_expression(int position, StatusRule rule)
{
    switch (position) {
    case kHistoryRequestedFloat:
        return u"m.cv_date_time_requested"_s;
    case kHistorySentFloat:
        return u"m.cv_date_time_sent"_s;
    case kHistoryStatus:
        return status_case(rule);
    case kHistorySentTo:
        return kSentToExpression + u" COLLATE NOCASE"_s;
    case kHistorySentFrom:
        return kFromExpression + u" COLLATE NOCASE"_s;
    default:
        return kMessageExpression + u" COLLATE NOCASE"_s;
    }
}

QString order_by(HistorySort sort, StatusRule rule)
{
    const SortDefinition& sorting = definition(sort);
    const QString direction = sorting.ascending ? u" ASC"_s : u" DESC"_s;
    QStringList terms;
    for (const int key : sorting.keys) {
        terms.append(key_expression(key, rule) + direction);
    }
    // Rows equal in every key keep one fixed order, so that a page read twice reads the same rows.
    terms.append(u"m.cv_message_id"_s + direction);
    return u" ORDER BY "_s + terms.join(u", "_s);
}

const QString kRowColumns = u"SELECT m.cv_message_id, m.cv_date_time_requested, m.cv_date_time_sent, m.cv_sent, "
                            u"m.cv_error, m.cv_scheduled, "_s +
                            kSentToExpression + u", "_s + kFromExpression + u", "_s + kMessageExpression;

HistoryRow read_row(const store::Statement& select, StatusRule rule)
{
    HistoryRow row;
    row.message_id = select.integer(0).value_or(0);
    const std::optional<DayAndTime> requested = stored_date(select.text(1));
    const std::optional<DayAndTime> sent = stored_date(select.text(2));
    row.columns[kHistoryMessageId] = QString::number(row.message_id);
    row.columns[kHistoryRequested] = general_date_text(requested);
    row.columns[kHistorySent] = general_date_text(sent);
    row.columns[kHistoryStatus] = history_status(select.flag(3), select.flag(4), select.flag(5), rule);
    row.columns[kHistorySentTo] = select.text(6).value_or(QString());
    row.columns[kHistorySentFrom] = select.text(7).value_or(QString());
    row.columns[kHistoryMessage] = select.text(8).value_or(QString());
    row.columns[kHistoryRequestedFloat] = general_number_text(ole_date_number(requested));
    row.columns[kHistorySentFloat] = general_number_text(ole_date_number(sent));
    return row;
}

std::atomic<int> g_order_tables{0};

} // namespace

QString history_heading(int column)
{
    return column >= 0 && column < kHistoryColumnCount ? kHeadings.at(static_cast<std::size_t>(column)) : QString();
}

QString history_status(bool sent, bool error, bool scheduled, StatusRule rule)
{
    if (sent) {
        return error ? u"Failed"_s : u"Successful"_s;
    }
    if (rule == StatusRule::AfterRequeue) {
        return u"Pending"_s;
    }
    return scheduled ? u"Pending"_s : u"Scheduled"_s;
}

QString general_date_text(const std::optional<QDateTime>& value)
{
    return general_date_text(day_and_time(value));
}

double ole_date_number(const std::optional<QDateTime>& value)
{
    return ole_date_number(day_and_time(value));
}

QString general_number_text(double value)
{
    return QString::number(value, 'g', 15);
}

QString HistoryRow::text() const
{
    QString text;
    for (int column = 0; column < kHistoryColumnCount; ++column) {
        if (column > 0) {
            text += u'\t';
        }
        text += columns[column];
    }
    return text;
}

QString history_sort_name(HistorySort sort)
{
    return QString::fromUtf16(definition(sort).name);
}

int history_sort_column(HistorySort sort)
{
    return definition(sort).column;
}

bool history_sort_ascending(HistorySort sort)
{
    return definition(sort).ascending;
}

QList<int> history_sort_keys(HistorySort sort)
{
    const auto& keys = definition(sort).keys;
    return {keys.begin(), keys.end()};
}

std::optional<HistorySort> history_heading_sort(int column, const QString& list_sort_order)
{
    if (column < kHistoryRequested || column > kHistoryMessage) {
        return std::nullopt;
    }
    const auto ascending = static_cast<HistorySort>((column - 1) * 2);
    if (list_sort_order == history_sort_name(ascending)) {
        return static_cast<HistorySort>((column - 1) * 2 + 1);
    }
    return ascending;
}

QString history_text_heading(HistoryLayout layout)
{
    const FieldLayout fields = field_layout(layout);
    return fields.heading + u"\r\n"_s + fields.rule + u"\r\n"_s;
}

QString history_text_line(const HistoryRow& row, HistoryLayout layout)
{
    const FieldLayout fields = field_layout(layout);
    QString line;
    for (int field = 0; field < 5; ++field) {
        const int width = fields.widths.at(static_cast<std::size_t>(field));
        line += row.columns[kHistoryRequested + field].left(width).leftJustified(width) + u' ';
    }
    return line + row.columns[kHistoryMessage] + u"\r\n"_s;
}

// ---- HistoryView ----

HistoryView::HistoryView(store::Database& db, HistorySort sort, StatusRule rule) : m_db(db), m_sort(sort), m_rule(rule)
{
    store::Statement count = m_db.prepare(u"SELECT COUNT(*), MAX(cv_message_id) FROM cv_messages"_s);
    if (count.step()) {
        m_count = count.integer(0).value_or(0);
        m_last_id = count.integer(1).value_or(0);
    }
}

HistoryView::~HistoryView()
{
    if (ordered_in_table() && m_db.is_open()) {
        try {
            m_db.exec(u"DROP TABLE IF EXISTS temp."_s + m_order_table);
        } catch (const store::Error&) {
            // The connection is going away; the temporary table goes with it.
        }
    }
}

void HistoryView::order_into_table()
{
    // The table's name is our own number, never text from outside.
    m_order_table = u"cv_history_order_%1"_s.arg(++g_order_tables);
    m_db.exec(u"CREATE TEMP TABLE "_s + m_order_table + u" (pos INTEGER PRIMARY KEY, id INTEGER NOT NULL)"_s);
    store::Statement fill = m_db.prepare(u"INSERT INTO temp."_s + m_order_table +
                                         u" (pos, id) SELECT NULL, m.cv_message_id FROM cv_messages m "
                                         u"WHERE +m.cv_message_id <= ?1"_s +
                                         order_by(m_sort, m_rule));
    fill.bind(1, m_last_id).exec();
}

bool HistoryView::order_table_present()
{
    store::Statement check =
        m_db.prepare(u"SELECT count(*) FROM sqlite_temp_master WHERE type = 'table' AND name = ?1"_s);
    check.bind(1, m_order_table);
    return check.step() && check.integer(0).value_or(0) > 0;
}

QString HistoryView::select_sql() const
{
    if (ordered_in_table()) {
        return kRowColumns + u", o.pos FROM temp."_s + m_order_table +
               u" o JOIN cv_messages m ON m.cv_message_id = o.id WHERE o.pos > ?1 ORDER BY o.pos LIMIT ?3"_s;
    }
    return kRowColumns + u" FROM cv_messages m WHERE +m.cv_message_id <= ?1"_s + order_by(m_sort, m_rule) +
           u" LIMIT ?3 OFFSET ?2"_s;
}

bool HistoryView::read_directly(qint64 first, qint64 limit) const
{
    // The request time's order streams from its index, so rows down to some depth are read straight. Any
    // other order needs a full sort: its first page alone is read straight (the database keeps only the best
    // rows while it scans), and anything further is worked out once into the table.
    if (definition(m_sort).keys.front() == kHistoryRequestedFloat) {
        return first <= kDirectDepth;
    }
    return limit >= 0 && first + limit <= kHistoryPageRows;
}

void HistoryView::read(qint64 first, qint64 limit, const std::function<bool(qint64, const HistoryRow&)>& visit)
{
    // A connection opened anew (after a compaction) has lost the temporary order: it is worked out again.
    if ((!ordered_in_table() && !read_directly(first, limit)) || (ordered_in_table() && !order_table_present())) {
        order_into_table();
    }
    store::Statement select = m_db.prepare(select_sql());
    select.bind(1, ordered_in_table() ? first : m_last_id).bind(2, first).bind(3, limit);
    qint64 position = first;
    while (select.step()) {
        if (ordered_in_table()) {
            position = select.integer(9).value_or(position + 1) - 1;
        }
        if (!visit(position, read_row(select, m_rule))) {
            return;
        }
        ++position;
    }
}

QList<HistoryRow> HistoryView::rows(qint64 offset, qint64 count)
{
    QList<HistoryRow> result;
    offset = std::max<qint64>(offset, 0);
    count = std::min(count, m_count - offset);
    if (count <= 0) {
        return result;
    }
    result.reserve(count);
    read(offset, count, [&result, count, offset](qint64 position, const HistoryRow& row) {
        // A row deleted since the view was taken leaves an empty place, so positions stay where they were.
        while (offset + result.size() < position) {
            result.append(HistoryRow{});
        }
        result.append(row);
        return result.size() < count;
    });
    return result;
}

void HistoryView::walk(qint64 first, const std::function<bool(qint64, const HistoryRow&)>& visit)
{
    read(std::max<qint64>(first, 0), -1, visit);
}

void requeue_history_rows(store::Database& db, const QList<qint64>& message_ids, const QDateTime& now)
{
    store::Transaction transaction(db);
    store::Statement update =
        db.prepare(u"UPDATE cv_messages SET cv_scheduled = 0, cv_sent = 0, cv_error = 0, cv_date_time_requested = ?1, "
                   u"cv_transaction = ?2 WHERE cv_message_id = ?3"_s);
    for (const qint64 id : message_ids) {
        const qint32 number = store::get_unique(db);
        update.reset();
        update.bind(1, now).bind(2, qint64{number}).bind(3, id).exec();
    }
    transaction.commit();
}

} // namespace cvd::queue
