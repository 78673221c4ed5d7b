#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

struct sqlite3;
struct sqlite3_stmt;

namespace cvd::store {

// A failed database call. code() is SQLite's extended result code; its low byte is the primary code. file() is
// the database file of the connection that failed, as Database::file_name() gives it, or empty when the failure
// did not come from a connection.
class Error : public std::runtime_error
{
public:
    Error(int code, const QString& message, QString file = {});
    int code() const { return m_code; }
    int primary_code() const { return m_code & 0xff; }
    QString message() const { return m_message; }
    const QString& file() const { return m_file; }

private:
    int m_code;
    QString m_message;
    QString m_file;
};

// Result codes the rest of the program names without seeing SQLite's header.
namespace codes {
inline constexpr int Error = 1;
inline constexpr int Busy = 5;
inline constexpr int Locked = 6;
inline constexpr int IoErr = 10;
inline constexpr int Corrupt = 11;
inline constexpr int CantOpen = 14;
inline constexpr int NotADb = 26;
} // namespace codes

// Dates are stored as text 'YYYY-MM-DD HH:MM:SS' in local time, so that text order is time order.
QString format_date(const QDateTime& value);
std::optional<QDateTime> parse_date(const QString& text);

// The version of the SQLite library the program runs with, as the about box shows it ("3.40.1").
QString sqlite_library_version();

// A prepared statement. Parameters are numbered from 1; columns from 0.
class Statement
{
public:
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    Statement& bind(int index, const QString& value); // always text, even empty or null; bind_null for null
    Statement& bind(int index, qint64 value);
    Statement& bind(int index, int value);
    Statement& bind(int index, double value);
    Statement& bind(int index, const QDateTime& value); // as format_date; an invalid date binds null
    Statement& bind_bool(int index, bool value);        // -1 or 0
    Statement& bind(int index, bool value) = delete;    // would store 1 for true; use bind_bool
    Statement& bind_null(int index);

    // Advances to the next row: true while there is one, false when done. Throws Error.
    bool step();
    // Runs the statement to its end (for statements that return no rows).
    void exec();
    // Makes the statement ready to run again; bindings stay unless cleared.
    void reset();
    void clear_bindings();

    int column_count() const;
    QString column_name(int column) const;
    bool is_null(int column) const;
    std::optional<QString> text(int column) const;
    std::optional<qint64> integer(int column) const;
    std::optional<double> real(int column) const;
    std::optional<QDateTime> date(int column) const;
    // A stored boolean: null and 0 are false, anything else true.
    bool flag(int column) const;

private:
    friend class Database;
    Statement(sqlite3* db, sqlite3_stmt* stmt);
    void check(int rc) const;
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_stmt = nullptr;
};

// One connection to one database file.
class Database
{
public:
    enum class OpenMode {
        Existing, // read and write; the file must exist
        CreateIfMissing,
        ReadOnly,
    };

    // When a commit counts as done. Full: once it is on the disk, so that a power cut cannot take it back.
    // Normal: once it is in the operating system's hands; in write-ahead mode a power cut may lose the last
    // commits, never the file.
    enum class Durability {
        Full,
        Normal,
    };

    Database() = default;
    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    // Opens the file. Nothing is written to it. Throws Error.
    static Database open(const QString& path, OpenMode mode = OpenMode::Existing,
                         Durability durability = Durability::Full);

    bool is_open() const { return m_db != nullptr; }
    const QString& path() const { return m_path; }
    // The file's full name as the connection knows it; empty when closed.
    QString file_name() const;
    void close();
    // Closes the connection without another statement and without the checkpoint that the last connection to
    // a file in write-ahead mode makes on closing: for a file found damaged, to which nothing more may be
    // written. An open transaction is dropped, which in write-ahead mode leaves the file as it is.
    void abandon();

    Statement prepare(const QString& sql);
    // A statement prepared once per connection and handed out again, reset and without bindings, for loops
    // that run the same SQL many times. Valid until the connection closes.
    Statement& cached(const QString& sql);
    // Runs SQL text without parameters (schema statements, literals of our own).
    void exec(const QString& sql);

    qint64 last_insert_id() const;
    int changes() const;
    // True between BEGIN and its COMMIT or ROLLBACK.
    bool in_transaction() const;

    // Schema questions; they read and never write. Names compare without regard to case. Columns come in
    // their order in the table, indexes by name.
    bool table_exists(const QString& table);
    QStringList column_names(const QString& table);
    QStringList index_names(const QString& table);

    // The connection itself, for the store's own maintenance routines; nothing outside the store uses it.
    sqlite3* native_handle() const { return m_db; }

    // How long a statement waits for another process's lock before it fails with Busy.
    void set_busy_timeout(int milliseconds);
    // Switches the file to write-ahead logging, so that readers and one writer of several processes
    // share it. This writes to the file; callers do it only for a file they have accepted as theirs.
    void enable_wal();

private:
    explicit Database(sqlite3* db, QString path);
    sqlite3* m_db = nullptr;
    QString m_path;
    std::unique_ptr<std::map<QString, Statement>> m_cache;
};

// BEGIN IMMEDIATE on construction; rolled back on destruction unless committed.
class Transaction
{
public:
    explicit Transaction(Database& db);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Database& m_db;
    bool m_done = false;
};

// BEGIN (deferred) on construction, ended on destruction: the reads in between see one snapshot and take the
// file's read lock once instead of once per statement. Nothing is written to the file.
class ReadTransaction
{
public:
    explicit ReadTransaction(Database& db);
    ~ReadTransaction();
    ReadTransaction(const ReadTransaction&) = delete;
    ReadTransaction& operator=(const ReadTransaction&) = delete;

private:
    Database& m_db;
};

} // namespace cvd::store
