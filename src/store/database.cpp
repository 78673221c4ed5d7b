#include "store/database.h"

#include <QFile>
#include <sqlite3.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace cvd::store {

namespace {

constexpr int kBusyTimeoutMs = 5000;
const QString kDateFormat = u"yyyy-MM-dd HH:mm:ss"_s;

QString error_text(sqlite3* db)
{
    return db ? QString::fromUtf8(sqlite3_errmsg(db)) : u"database is not open"_s;
}

QString file_of(sqlite3* db)
{
    const char* name = db ? sqlite3_db_filename(db, "main") : nullptr;
    return name ? QString::fromUtf8(name) : QString();
}

[[noreturn]] void fail(int code, sqlite3* db, const QString& context)
{
    QString message = error_text(db);
    if (!context.isEmpty()) {
        message += u" (in: "_s + context + u')';
    }
    throw Error(code, message, file_of(db));
}

} // namespace

Error::Error(int code, const QString& message, QString file)
    : std::runtime_error(QStringLiteral("SQLite error %1: %2").arg(code).arg(message).toStdString()), m_code(code),
      m_message(message), m_file(std::move(file))
{
}

QString sqlite_library_version()
{
    return QString::fromLatin1(sqlite3_libversion());
}

QString format_date(const QDateTime& value)
{
    return value.isValid() ? value.toLocalTime().toString(kDateFormat) : QString();
}

std::optional<QDateTime> parse_date(const QString& text)
{
    QDateTime value = QDateTime::fromString(text.trimmed(), kDateFormat);
    if (!value.isValid()) {
        return std::nullopt;
    }
    return value;
}

// ---- Statement ----

Statement::Statement(sqlite3* db, sqlite3_stmt* stmt) : m_db(db), m_stmt(stmt) {}

Statement::Statement(Statement&& other) noexcept
    : m_db(std::exchange(other.m_db, nullptr)), m_stmt(std::exchange(other.m_stmt, nullptr))
{
}

Statement& Statement::operator=(Statement&& other) noexcept
{
    if (this != &other) {
        sqlite3_finalize(m_stmt);
        m_db = std::exchange(other.m_db, nullptr);
        m_stmt = std::exchange(other.m_stmt, nullptr);
    }
    return *this;
}

Statement::~Statement()
{
    sqlite3_finalize(m_stmt);
}

void Statement::check(int rc) const
{
    if (rc == SQLITE_OK || rc == SQLITE_ROW || rc == SQLITE_DONE) {
        return;
    }
    if (!m_stmt) {
        throw Error(SQLITE_MISUSE, u"statement is empty (moved from)"_s);
    }
    fail(rc, m_db, QString::fromUtf8(sqlite3_sql(m_stmt)));
}

Statement& Statement::bind(int index, const QString& value)
{
    // Always text, even for an empty or null QString: null is only ever bound on purpose, with bind_null.
    const QByteArray utf8 = value.toUtf8();
    const char* data = utf8.isEmpty() ? "" : utf8.constData();
    check(m_stmt ? sqlite3_bind_text(m_stmt, index, data, int(utf8.size()), SQLITE_TRANSIENT) : SQLITE_MISUSE);
    return *this;
}

Statement& Statement::bind(int index, qint64 value)
{
    check(m_stmt ? sqlite3_bind_int64(m_stmt, index, value) : SQLITE_MISUSE);
    return *this;
}

Statement& Statement::bind(int index, int value)
{
    return bind(index, qint64{value});
}

Statement& Statement::bind(int index, double value)
{
    check(m_stmt ? sqlite3_bind_double(m_stmt, index, value) : SQLITE_MISUSE);
    return *this;
}

Statement& Statement::bind(int index, const QDateTime& value)
{
    return value.isValid() ? bind(index, format_date(value)) : bind_null(index);
}

Statement& Statement::bind_bool(int index, bool value)
{
    return bind(index, qint64{value ? -1 : 0});
}

Statement& Statement::bind_null(int index)
{
    check(m_stmt ? sqlite3_bind_null(m_stmt, index) : SQLITE_MISUSE);
    return *this;
}

bool Statement::step()
{
    if (!m_stmt) {
        check(SQLITE_MISUSE);
    }
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc != SQLITE_DONE) {
        // Leave the statement ready to run again and drop any lock it holds.
        const QString sql = QString::fromUtf8(sqlite3_sql(m_stmt));
        const QString message = error_text(m_db);
        sqlite3_reset(m_stmt);
        throw Error(rc, message + u" (in: "_s + sql + u')', file_of(m_db));
    }
    return false;
}

void Statement::exec()
{
    while (step()) {
    }
    reset();
}

void Statement::reset()
{
    if (m_stmt) {
        // The result repeats the last step's failure, which step() has reported already.
        sqlite3_reset(m_stmt);
    }
}

void Statement::clear_bindings()
{
    if (m_stmt) {
        sqlite3_clear_bindings(m_stmt);
    }
}

int Statement::column_count() const
{
    return m_stmt ? sqlite3_column_count(m_stmt) : 0;
}

QString Statement::column_name(int column) const
{
    const char* name = m_stmt ? sqlite3_column_name(m_stmt, column) : nullptr;
    return name ? QString::fromUtf8(name) : QString();
}

bool Statement::is_null(int column) const
{
    return !m_stmt || sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

std::optional<QString> Statement::text(int column) const
{
    if (is_null(column)) {
        return std::nullopt;
    }
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column));
    const int size = sqlite3_column_bytes(m_stmt, column);
    return QString::fromUtf8(data, size);
}

std::optional<qint64> Statement::integer(int column) const
{
    if (is_null(column)) {
        return std::nullopt;
    }
    return sqlite3_column_int64(m_stmt, column);
}

std::optional<double> Statement::real(int column) const
{
    if (is_null(column)) {
        return std::nullopt;
    }
    return sqlite3_column_double(m_stmt, column);
}

std::optional<QDateTime> Statement::date(int column) const
{
    const std::optional<QString> value = text(column);
    return value ? parse_date(*value) : std::nullopt;
}

bool Statement::flag(int column) const
{
    return !is_null(column) && sqlite3_column_int64(m_stmt, column) != 0;
}

// ---- Database ----

Database::Database(sqlite3* db, QString path) : m_db(db), m_path(std::move(path)) {}

Database::Database(Database&& other) noexcept
    : m_db(std::exchange(other.m_db, nullptr)), m_path(std::exchange(other.m_path, QString())),
      m_cache(std::move(other.m_cache))
{
}

Database& Database::operator=(Database&& other) noexcept
{
    if (this != &other) {
        close();
        m_db = std::exchange(other.m_db, nullptr);
        m_path = std::exchange(other.m_path, QString());
        m_cache = std::move(other.m_cache);
    }
    return *this;
}

Database::~Database()
{
    close();
}

Database Database::open(const QString& path, OpenMode mode, Durability durability)
{
    int flags = SQLITE_OPEN_NOMUTEX;
    switch (mode) {
    case OpenMode::Existing:
        flags |= SQLITE_OPEN_READWRITE;
        break;
    case OpenMode::CreateIfMissing:
        flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
        break;
    case OpenMode::ReadOnly:
        flags |= SQLITE_OPEN_READONLY;
        break;
    }
    sqlite3* db = nullptr;
    const int rc = sqlite3_open_v2(QFile::encodeName(path).constData(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        const int code = db ? sqlite3_extended_errcode(db) : rc;
        const QString message = error_text(db) + u" (opening "_s + path + u')';
        sqlite3_close_v2(db);
        throw Error(code, message);
    }
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    Database opened(db, path);
    // A setting of the connection, not of the file: nothing is written.
    opened.exec(durability == Durability::Full ? u"PRAGMA synchronous=FULL"_s : u"PRAGMA synchronous=NORMAL"_s);
    return opened;
}

QString Database::file_name() const
{
    return file_of(m_db);
}

void Database::close()
{
    m_cache.reset();
    // close_v2 waits for statements still alive; they finalize later without touching a freed handle.
    sqlite3_close_v2(std::exchange(m_db, nullptr));
}

void Database::abandon()
{
    if (m_db) {
        sqlite3_db_config(m_db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    close();
}

Statement& Database::cached(const QString& sql)
{
    if (!m_cache) {
        m_cache = std::make_unique<std::map<QString, Statement>>();
    }
    auto found = m_cache->find(sql);
    if (found == m_cache->end()) {
        found = m_cache->emplace(sql, prepare(sql)).first;
    } else {
        found->second.reset();
        found->second.clear_bindings();
    }
    return found->second;
}

Statement Database::prepare(const QString& sql)
{
    if (!m_db) {
        throw Error(SQLITE_MISUSE, u"database is not open (in: "_s + sql + u')');
    }
    const QByteArray utf8 = sql.toUtf8();
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v2(m_db, utf8.constData(), int(utf8.size()), &stmt, &tail);
    if (rc != SQLITE_OK) {
        fail(rc, m_db, sql);
    }
    Statement result(m_db, stmt);
    if (!stmt || !QByteArray(tail).trimmed().isEmpty()) {
        // A second statement would be dropped without a word; refuse instead.
        throw Error(SQLITE_MISUSE, u"expected exactly one statement (in: "_s + sql + u')');
    }
    return result;
}

void Database::exec(const QString& sql)
{
    if (!m_db) {
        throw Error(SQLITE_MISUSE, u"database is not open (in: "_s + sql + u')');
    }
    char* message = nullptr;
    const int rc = sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        QString text = message ? QString::fromUtf8(message) : error_text(m_db);
        sqlite3_free(message);
        throw Error(rc, text + u" (in: "_s + sql + u')', file_of(m_db));
    }
}

qint64 Database::last_insert_id() const
{
    return m_db ? sqlite3_last_insert_rowid(m_db) : 0;
}

int Database::changes() const
{
    return m_db ? sqlite3_changes(m_db) : 0;
}

bool Database::in_transaction() const
{
    return m_db && sqlite3_get_autocommit(m_db) == 0;
}

bool Database::table_exists(const QString& table)
{
    // Names in SQLite ignore case, as they did in the old files.
    Statement query = prepare(u"SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1 COLLATE NOCASE"_s);
    query.bind(1, table);
    return query.step();
}

QStringList Database::column_names(const QString& table)
{
    Statement query = prepare(u"SELECT name FROM pragma_table_info(?1) ORDER BY cid"_s);
    query.bind(1, table);
    QStringList names;
    while (query.step()) {
        names.append(query.text(0).value_or(QString()));
    }
    return names;
}

QStringList Database::index_names(const QString& table)
{
    Statement query = prepare(
        u"SELECT name FROM sqlite_master WHERE type = 'index' AND tbl_name = ?1 COLLATE NOCASE ORDER BY name"_s);
    query.bind(1, table);
    QStringList names;
    while (query.step()) {
        names.append(query.text(0).value_or(QString()));
    }
    return names;
}

void Database::set_busy_timeout(int milliseconds)
{
    if (m_db) {
        sqlite3_busy_timeout(m_db, milliseconds);
    }
}

void Database::enable_wal()
{
    Statement mode = prepare(u"PRAGMA journal_mode=WAL"_s);
    const QString answer = mode.step() ? mode.text(0).value_or(QString()) : QString();
    mode.reset();
    if (answer.compare(u"wal"_s, Qt::CaseInsensitive) != 0) {
        throw Error(SQLITE_ERROR, u"could not switch to write-ahead logging, journal mode is '"_s + answer +
                                      u"' (in: "_s + m_path + u')');
    }
}

// ---- Transaction ----

Transaction::Transaction(Database& db) : m_db(db)
{
    m_db.exec(u"BEGIN IMMEDIATE"_s);
}

Transaction::~Transaction()
{
    // SQLite ends a transaction by itself after some failures; only roll back one that is still there.
    if (!m_done && m_db.in_transaction()) {
        try {
            m_db.exec(u"ROLLBACK"_s);
        } catch (const Error&) {
            // Nothing more can be done from a destructor; the connection rolls back when it closes.
        }
    }
}

void Transaction::commit()
{
    if (m_done) {
        return;
    }
    m_db.exec(u"COMMIT"_s);
    m_done = true;
}

// ---- ReadTransaction ----

ReadTransaction::ReadTransaction(Database& db) : m_db(db)
{
    m_db.exec(u"BEGIN"_s);
}

ReadTransaction::~ReadTransaction()
{
    // A read transaction has nothing to keep; ending it only gives up the snapshot and its lock.
    if (m_db.in_transaction()) {
        try {
            m_db.exec(u"ROLLBACK"_s);
        } catch (const Error&) {
            // Closing the connection ends it as well.
        }
    }
}

} // namespace cvd::store
