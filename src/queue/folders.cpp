#include "queue/folders.h"

#include "store/database.h"
#include "store/unique.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace cvd::queue {

namespace {

// The conditions of each view. The flags stand as literals so that the planner can use the partial index on
// waiting rows; the transaction bound, ?1, reaches the index on cv_transaction.
QString view_condition(Folder folder)
{
    switch (folder) {
    case Folder::Scheduled:
        return u"(m.cv_scheduled = 0) AND (m.cv_sent = 0) AND (m.cv_error = 0)"_s;
    case Folder::Pending:
        return u"(m.cv_scheduled <> 0) AND (m.cv_sent = 0) AND (m.cv_error = 0) AND (m.cv_transaction > ?1)"_s;
    case Folder::Sent:
        return u"(m.cv_sent <> 0) AND (m.cv_error = 0) AND (m.cv_transaction > ?1)"_s;
    case Folder::Bad:
        return u"(m.cv_error <> 0) AND (m.cv_transaction > ?1)"_s;
    }
    return {};
}

QString date_column(Folder folder)
{
    return folder == Folder::Sent ? u"m.cv_date_time_sent"_s : u"m.cv_date_time_requested"_s;
}

// The change test always leaves the screen rows out; the pending row query's misspelt name lets them in,
// as it always has.
QString screen_condition(Folder folder, bool row_query)
{
    return row_query && folder == Folder::Pending ? u" AND (m.cv_recipient <> 'cvdscrenn')"_s
                                                  : u" AND (m.cv_recipient <> 'cvdscreen')"_s;
}

void bind_bound(store::Statement& statement, Folder folder, qint64 first_transaction)
{
    if (folder != Folder::Scheduled) {
        statement.bind(1, first_transaction);
    }
}

QString one_line(QString text)
{
    text.replace(u'\t', u' ').replace(u'\r', u' ').replace(u'\n', u' ');
    return text;
}

// The folder's own test on a row read back for Copy and Edit.
QString copy_condition(Folder folder)
{
    switch (folder) {
    case Folder::Scheduled:
    case Folder::Pending:
        return u"(cv_sent = 0)"_s;
    case Folder::Sent:
        return u"(cv_sent <> 0)"_s;
    case Folder::Bad:
        return u"(cv_error <> 0)"_s;
    }
    return {};
}

} // namespace

qint64 folder_id_total(store::Database& db, Folder folder, qint64 first_transaction)
{
    store::Statement& total = db.cached(u"SELECT SUM(m.cv_message_id) FROM cv_messages m WHERE "_s +
                                        view_condition(folder) + screen_condition(folder, false));
    bind_bound(total, folder, first_transaction);
    const qint64 sum = total.step() ? total.integer(0).value_or(0) : 0;
    total.reset();
    return sum;
}

ContentMark content_mark(store::Database& db)
{
    store::Statement& mark = db.cached(u"SELECT (SELECT data_version FROM pragma_data_version()), total_changes()"_s);
    ContentMark result;
    if (mark.step()) {
        result = {mark.integer(0).value_or(-1), mark.integer(1).value_or(-1)};
    }
    mark.reset();
    return result;
}

QList<FolderRow> folder_rows(store::Database& db, Folder folder, qint64 first_transaction)
{
    // One recipient row per message even where a name was stored twice: the first, as a look-up finds it.
    const QString date = date_column(folder);
    store::Statement select = db.prepare(
        u"SELECT m.cv_message_id, "_s + date + u", julianday("_s + date +
        u") - 2415018.5, m.cv_recipient, m.cv_pin, m.cv_message, r.cv_full_name, r.cv_ad_hoc, r.rowid "
        "FROM cv_messages m LEFT JOIN cv_recipients r ON r.rowid = "
        "(SELECT rowid FROM cv_recipients WHERE cv_name = m.cv_recipient LIMIT 1) WHERE "_s +
        view_condition(folder) + screen_condition(folder, true) + u" ORDER BY "_s + date + u", m.cv_message_id"_s);
    bind_bound(select, folder, first_transaction);
    QList<FolderRow> rows;
    while (select.step()) {
        FolderRow row;
        row.id = select.integer(0).value_or(0);
        row.date = select.text(1).value_or(QString());
        row.date_number = select.real(2).value_or(0.0);
        const bool known = !select.is_null(8);
        row.label = known ? select.text(6).value_or(QString()) : select.text(3).value_or(QString());
        // A recipient that is gone reads as not ad hoc.
        if (known && select.flag(7)) {
            row.label += u':' + select.text(4).value_or(QString());
        }
        row.message = one_line(select.text(5).value_or(QString()));
        rows.append(std::move(row));
    }
    return rows;
}

std::optional<StoredMessage> read_folder_message(store::Database& db, Folder folder, qint64 id)
{
    return read_stored_message(db, id, copy_condition(folder));
}

bool delete_waiting_message(store::Database& db, qint64 id)
{
    store::Statement remove =
        db.prepare(u"DELETE FROM cv_messages WHERE (cv_message_id = ?1) AND (cv_scheduled = 0) AND (cv_sent = 0)"_s);
    remove.bind(1, id);
    remove.exec();
    return db.changes() > 0;
}

int cancel_messages(store::Database& db, const QList<qint64>& ids, const QDateTime& now)
{
    store::Transaction transaction(db);
    store::Statement update =
        db.prepare(u"UPDATE cv_messages SET cv_scheduled = -1, cv_sent = -1, cv_error = -1, cv_date_time_sent = ?1 "
                   "WHERE (cv_message_id = ?2) AND (cv_sent = 0)"_s);
    int changed = 0;
    for (const qint64 id : ids) {
        update.reset();
        update.bind(1, now).bind(2, id);
        update.exec();
        changed += db.changes();
    }
    transaction.commit();
    return changed;
}

int requeue_messages(store::Database& db, const QList<qint64>& ids, const QDateTime& now)
{
    store::Transaction transaction(db);
    store::Statement update =
        db.prepare(u"UPDATE cv_messages SET cv_scheduled = 0, cv_sent = 0, cv_error = 0, cv_date_time_requested = ?1, "
                   "cv_transaction = ?2 WHERE (cv_message_id = ?3) AND (cv_sent <> 0)"_s);
    int changed = 0;
    for (const qint64 id : ids) {
        const qint32 transaction_number = store::get_unique(db);
        update.reset();
        update.bind(1, now).bind(2, transaction_number).bind(3, id);
        update.exec();
        changed += db.changes();
    }
    transaction.commit();
    return changed;
}

QString general_date_text(const QString& stored)
{
    if (stored.isEmpty()) {
        return {};
    }
    const std::optional<QDateTime> value = store::parse_date(stored);
    if (!value) {
        return {};
    }
    static const QString format = []() -> QString {
        const QLocale locale = QLocale::system();
        QString time = locale.timeFormat(QLocale::ShortFormat);
        if (!time.contains(u"ss"_s)) {
            time.replace(u"mm"_s, u"mm:ss"_s);
        }
        return locale.dateFormat(QLocale::ShortFormat) + u' ' + time;
    }();
    return QLocale::system().toString(*value, format);
}

} // namespace cvd::queue
