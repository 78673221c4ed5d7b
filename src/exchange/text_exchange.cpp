#include "exchange/text_exchange.h"

#include "core/app_state.h"
#include "core/file_ops.h"
#include "core/record_format.h"
#include "intake/registry_transfer.h"
#include "store/database.h"
#include "store/tables.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QStringList>
#include <variant>

using namespace Qt::Literals::StringLiterals;

namespace cvd::exchange {

namespace {

namespace carriers = store::tables::carriers;
namespace recipients = store::tables::recipients;
namespace groups = store::tables::groups;

enum class ColumnType { Text, Number, Flag };

struct Column
{
    const char16_t* heading;
    store::tables::Name name;
    ColumnType type;
};

// The fields after the version, in file order.
const QList<Column>& carrier_columns()
{
    static const QList<Column> columns = {
        {u"Name", carriers::name, ColumnType::Text},
        {u"PhoneNumber", carriers::phone_number, ColumnType::Text},
        {u"ModemSettings", carriers::modem_settings, ColumnType::Text},
        {u"MaxChars", carriers::maxchars, ColumnType::Number},
        {u"InitString", carriers::init_string, ColumnType::Text},
        {u"MessageLimit", carriers::message_limit, ColumnType::Number},
        {u"DialType", carriers::dial_type, ColumnType::Text},
        {u"AuthType", carriers::auth_type, ColumnType::Number},
        {u"AuthUser", carriers::auth_user, ColumnType::Text},
        {u"AuthPassword", carriers::auth_pass, ColumnType::Text},
        {u"RelayMail", carriers::relay_mail, ColumnType::Flag},
        {u"RelayServer", carriers::relay_server, ColumnType::Text},
        {u"Priority", carriers::priority, ColumnType::Number},
    };
    return columns;
}

const QList<Column>& recipient_columns()
{
    static const QList<Column> columns = {
        {u"Name", recipients::name, ColumnType::Text},
        {u"FullName", recipients::full_name, ColumnType::Text},
        {u"Id", recipients::id, ColumnType::Text},
        {u"Carrier", recipients::carrier, ColumnType::Text},
        {u"MaxChars", recipients::maxchars, ColumnType::Number},
        {u"Alpha", recipients::alpha, ColumnType::Flag},
        {u"OnCall", recipients::on_call, ColumnType::Flag},
        {u"AdHoc", recipients::ad_hoc, ColumnType::Flag},
        {u"DropControl", recipients::drop_control, ColumnType::Flag},
        {u"Group", recipients::group, ColumnType::Flag},
        {u"SendSubject", recipients::send_subject, ColumnType::Flag},
        {u"RemoveFrom", recipients::remove_from, ColumnType::Flag},
        {u"Extra1", recipients::extra1, ColumnType::Text},
        {u"Extra2", recipients::extra2, ColumnType::Text},
        {u"Priority", recipients::priority, ColumnType::Number},
    };
    return columns;
}

const QList<Column>& member_columns()
{
    static const QList<Column> columns = {
        {u"Group", groups::group, ColumnType::Text},
        {u"Recipient", groups::recipient, ColumnType::Text},
    };
    return columns;
}

const QList<Column>& columns_of(ExchangeKind kind)
{
    switch (kind) {
    case ExchangeKind::Carriers:
        return carrier_columns();
    case ExchangeKind::Recipients:
    case ExchangeKind::Groups:
        return recipient_columns();
    case ExchangeKind::Members:
        break;
    }
    return member_columns();
}

QString column_list(const QList<Column>& columns)
{
    QList<store::tables::Name> names;
    for (const Column& column : columns) {
        names.append(column.name);
    }
    return store::tables::column_list(names);
}

// The table and condition of the export query, from constants only. A row whose cv_group is null is a
// recipient, as everywhere else.
QString export_sql(ExchangeKind kind)
{
    const QString select = u"SELECT "_s % column_list(columns_of(kind)) % u" FROM "_s;
    switch (kind) {
    case ExchangeKind::Carriers:
        return select % carriers::table % u" ORDER BY "_s % carriers::name;
    case ExchangeKind::Recipients:
        return select % recipients::table % u" WHERE "_s % store::tables::is_false(recipients::group) %
               u" ORDER BY "_s % recipients::name;
    case ExchangeKind::Groups:
        return select % recipients::table % u" WHERE "_s % store::tables::is_true(recipients::group) % u" ORDER BY "_s %
               recipients::name;
    case ExchangeKind::Members:
        break;
    }
    return select % groups::table % u" ORDER BY "_s % groups::group;
}

QString kind_noun(ExchangeKind kind)
{
    switch (kind) {
    case ExchangeKind::Carriers:
        return u"carrier"_s;
    case ExchangeKind::Recipients:
        return u"recipient"_s;
    case ExchangeKind::Groups:
        return u"group"_s;
    case ExchangeKind::Members:
        break;
    }
    return u"group member"_s;
}

QString heading_line(const QList<Column>& columns)
{
    QList<QString> fields{quoted_field(u"Version"_s)};
    for (const Column& column : columns) {
        fields.append(quoted_field(QString::fromUtf16(column.heading)));
    }
    return record_line(fields);
}

QString export_field(const store::Statement& query, int index, ColumnType type)
{
    if (query.is_null(index)) {
        return null_field();
    }
    switch (type) {
    case ColumnType::Text:
        return quoted_field(query.text(index).value_or(QString()));
    case ColumnType::Number:
        return number_field(query.integer(index).value_or(0));
    case ColumnType::Flag:
        break;
    }
    return flag_field(query.flag(index));
}

QString data_line(const store::Statement& query, const QList<Column>& columns)
{
    QList<QString> fields{quoted_field(QString::number(kFormatVersion))};
    for (int i = 0; i < columns.size(); ++i) {
        fields.append(export_field(query, i, columns.at(i).type));
    }
    return record_line(fields);
}

// A file that could not be written; ends an export on its own failure path.
struct WriteFailed
{
};

void write_text(QFile& file, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size()) {
        throw WriteFailed{};
    }
}

// Writes the file when the query yields rows; returns how many records were written.
int write_export(store::Database& db, ExchangeKind kind, const QString& path)
{
    const QList<Column>& columns = columns_of(kind);
    store::Statement query = db.prepare(export_sql(kind));
    if (!query.step()) {
        return 0;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        throw WriteFailed{};
    }
    write_text(file, heading_line(columns));
    int count = 0;
    do {
        write_text(file, data_line(query, columns));
        ++count;
    } while (query.step());
    if (!file.flush()) {
        throw WriteFailed{};
    }
    file.close();
    return count;
}

// One column value read from a record, ready to bind.
using Value = std::variant<std::monostate, QString, qint64, bool>;

std::optional<Value> read_value(const Field& field, ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
        if (auto text = field_as_text(field)) {
            return text->has_value() ? Value(**text) : Value();
        }
        return std::nullopt;
    case ColumnType::Number:
        if (auto number = field_as_number(field)) {
            return number->has_value() ? Value(**number) : Value();
        }
        return std::nullopt;
    case ColumnType::Flag:
        break;
    }
    if (auto flag = field_as_flag(field)) {
        return flag->has_value() ? Value(**flag) : Value();
    }
    return std::nullopt;
}

void bind_value(store::Statement& statement, int index, const Value& value)
{
    if (const auto* text = std::get_if<QString>(&value)) {
        statement.bind(index, *text);
    } else if (const auto* number = std::get_if<qint64>(&value)) {
        statement.bind(index, *number);
    } else if (const auto* flag = std::get_if<bool>(&value)) {
        statement.bind_bool(index, *flag);
    } else {
        statement.bind_null(index);
    }
}

// A record that cannot be taken as a row of its kind; ends an import on its own failure path.
struct BadRecord
{
};

// The values of a data record after its version field, checked against the kind's columns.
QList<Value> record_values(const Record& record, const QList<Column>& columns)
{
    if (record.size() != columns.size() + 1) {
        throw BadRecord{};
    }
    QList<Value> values;
    for (int i = 0; i < columns.size(); ++i) {
        std::optional<Value> value = read_value(record.at(i + 1), columns.at(i).type);
        if (!value) {
            throw BadRecord{};
        }
        values.append(*value);
    }
    return values;
}

struct Counts
{
    int imported = 0;
    int skipped = 0;
};

// The statements of one import run, prepared once for all its records. The caller holds the run's
// transaction.
class Importer
{
public:
    Importer(store::Database& db, ExchangeKind kind, bool overwrite)
        : m_kind(kind), m_overwrite(overwrite),
          m_table(kind == ExchangeKind::Carriers ? carriers::table : recipients::table),
          m_find(db.prepare(u"SELECT rowid FROM "_s % m_table % u" WHERE "_s %
                            (kind == ExchangeKind::Carriers ? carriers::name : recipients::name) % u" = ?1 LIMIT 1"_s)),
          m_recipient_found(db.prepare(u"SELECT 1 FROM "_s % recipients::table % u" WHERE "_s % recipients::name %
                                       u" = ?1 LIMIT 1"_s)),
          m_remove(
              db.prepare(kind == ExchangeKind::Members
                             ? QString(u"DELETE FROM "_s % groups::table % u" WHERE "_s % groups::group % u" = ?1"_s)
                             : QString(u"DELETE FROM "_s % m_table % u" WHERE rowid = ?1"_s))),
          m_member_found(db.prepare(u"SELECT 1 FROM "_s % groups::table % u" WHERE "_s % groups::group %
                                    u" = ?1 AND "_s % groups::recipient % u" = ?2 LIMIT 1"_s)),
          m_insert(db.prepare(insert_sql(kind)))
    {
    }

    void take(const QList<Value>& values)
    {
        if (m_kind == ExchangeKind::Members) {
            take_member(values);
        } else {
            take_named_row(values);
        }
    }

    const Counts& counts() const { return m_counts; }

private:
    static QString insert_sql(ExchangeKind kind)
    {
        const QList<Column>& columns = columns_of(kind);
        if (kind == ExchangeKind::Members) {
            return u"INSERT INTO "_s % groups::table % u" ("_s % column_list(columns) % u") VALUES (?1, ?2)"_s;
        }
        if (kind == ExchangeKind::Carriers) {
            // The engine's retry count starts afresh on the new installation: ?14 is bound to 0.
            return u"INSERT INTO "_s % carriers::table % u" ("_s % column_list(columns) % u", "_s % carriers::retries %
                   u") VALUES ("_s % store::tables::placeholders(columns.size() + 1) % u")"_s;
        }
        return u"INSERT INTO "_s % recipients::table % u" ("_s % column_list(columns) % u") VALUES ("_s %
               store::tables::placeholders(columns.size()) % u")"_s;
    }

    // The first column of the query's first row for the values given; nullopt when it finds no row.
    static std::optional<qint64> first_row(store::Statement& query, std::initializer_list<Value> values)
    {
        query.reset();
        int index = 0;
        for (const Value& value : values) {
            bind_value(query, ++index, value);
        }
        const std::optional<qint64> first = query.step() ? query.integer(0) : std::nullopt;
        query.reset(); // no read left open between records
        return first;
    }

    static void run(store::Statement& statement, std::initializer_list<Value> values)
    {
        statement.reset();
        int index = 0;
        for (const Value& value : values) {
            bind_value(statement, ++index, value);
        }
        statement.exec();
    }

    // Carriers, recipients and groups: the row of the same name is replaced under `overwrite`, otherwise the
    // record is skipped.
    void take_named_row(const QList<Value>& values)
    {
        if (const std::optional<qint64> existing = first_row(m_find, {values.at(0)})) {
            if (!m_overwrite) {
                ++m_counts.skipped;
                return;
            }
            run(m_remove, {Value(*existing)});
        }
        QList<Value> row = values;
        if (m_kind == ExchangeKind::Carriers) {
            row.append(Value(qint64{0}));
        } else {
            // Whether the row is a group follows the chosen kind, not the file: a recipient file imported as
            // groups makes every row a group.
            row[9] = Value(m_kind == ExchangeKind::Groups);
        }
        m_insert.reset();
        for (int i = 0; i < row.size(); ++i) {
            bind_value(m_insert, i + 1, row.at(i));
        }
        m_insert.exec();
        ++m_counts.imported;
    }

    // A member row. With `overwrite` the group's existing members are deleted for every record, not once a
    // group, so only the last member of each group in the file remains; existing installations rely on that,
    // so it stays. A record whose recipient is unknown counts neither way.
    void take_member(const QList<Value>& values)
    {
        const Value& group = values.at(0);
        const Value& recipient = values.at(1);
        if (!first_row(m_recipient_found, {group})) {
            ++m_counts.skipped;
            return;
        }
        if (m_overwrite) {
            run(m_remove, {group});
        }
        if (!first_row(m_recipient_found, {recipient})) {
            return;
        }
        if (!first_row(m_member_found, {group, recipient})) {
            run(m_insert, {group, recipient});
            ++m_counts.imported;
        } else if (m_overwrite) {
            ++m_counts.imported;
        } else {
            ++m_counts.skipped;
        }
    }

    ExchangeKind m_kind;
    bool m_overwrite;
    store::tables::Name m_table;
    store::Statement m_find;
    store::Statement m_recipient_found;
    store::Statement m_remove;
    store::Statement m_member_found;
    store::Statement m_insert;
    Counts m_counts;
};

struct RunOutcome
{
    Counts counts;
    bool complete = false;  // every record was taken
    bool cancelled = false; // the progress hook stopped the run; its transaction was rolled back
};

// Takes the data records from `first` on in one transaction, so that other processes see the run all at once
// and a failed statement leaves none of its rows. A record that cannot be read ends the run, and the records
// before it are kept, as they always have been.
RunOutcome import_records(store::Database& db, ExchangeKind kind, const ParsedFile& parsed, qsizetype first,
                          bool overwrite, const ImportProgress& progress)
{
    store::Transaction transaction(db);
    RunOutcome outcome;
    const qsizetype total = parsed.records.size() - first;
    {
        Importer importer(db, kind, overwrite);
        try {
            for (qsizetype i = first; i < parsed.records.size(); ++i) {
                const qsizetype done = i - first;
                if (progress && done % kProgressStep == 0 && !progress(done, total)) {
                    outcome.cancelled = true;
                    return outcome; // the transaction rolls back: the run leaves nothing
                }
                importer.take(record_values(parsed.records.at(i), columns_of(kind)));
            }
            outcome.complete = !parsed.malformed;
        } catch (const BadRecord&) {
            outcome.complete = false;
        }
        outcome.counts = importer.counts();
    }
    // A Cancel pressed while the last records were taken still counts: the run is not kept.
    if (progress && !progress(total, total)) {
        outcome.cancelled = true;
        return outcome;
    }
    transaction.commit();
    return outcome;
}

Notice import_cancelled_box()
{
    return {u"The import was cancelled. Nothing was imported."_s, u"Import Cancelled"_s};
}

Notice import_error_box()
{
    return {u"Error importing records"_s, u"Import Error"_s};
}

Notice import_complete_box(ExchangeKind kind, const Counts& counts)
{
    const QString noun = kind_noun(kind);
    return {QString::number(counts.imported) + u" "_s + noun + u" records imported,\n"_s +
                QString::number(counts.skipped) + u" "_s + noun + u" records skipped."_s,
            u"Import Complete"_s};
}

// The first field of the first data record must be the version as a number.
bool version_matches(const Field& field)
{
    bool ok = false;
    const double value = field.text.trimmed().toDouble(&ok);
    return field.kind != Field::Kind::Hashed && ok && value == kFormatVersion;
}

bool is_heading(const Record& record)
{
    return !record.isEmpty() && record.at(0).text.trimmed().toLower() == u"version"_s;
}

} // namespace

QString suggested_file_name(ExchangeKind kind)
{
    switch (kind) {
    case ExchangeKind::Carriers:
        return u"carriers.txt"_s;
    case ExchangeKind::Recipients:
        return u"recip.txt"_s;
    case ExchangeKind::Groups:
        return u"groups.txt"_s;
    case ExchangeKind::Members:
        break;
    }
    return u"members.txt"_s;
}

QString export_option_caption(ExchangeKind kind)
{
    switch (kind) {
    case ExchangeKind::Carriers:
        return u"Export Carriers"_s;
    case ExchangeKind::Recipients:
        return u"Export Recipients"_s;
    case ExchangeKind::Groups:
        return u"Export Groups"_s;
    case ExchangeKind::Members:
        break;
    }
    return u"Export Group Members"_s;
}

QString import_option_caption(ExchangeKind kind)
{
    QString caption = export_option_caption(kind);
    return caption.replace(0, 6, u"Import"_s);
}

QString export_window_caption()
{
    return u"Export To Text File"_s;
}

QString import_window_caption()
{
    return u"Import From Text File"_s;
}

QString browse_filter()
{
    return u"Text File (*.txt)|*.txt"_s;
}

QString browse_name_filter()
{
    return browse_filter().section(u'|', 0, 0);
}

QString with_default_extension(const QString& path)
{
    if (path.isEmpty() || QFileInfo(path).fileName().contains(u'.')) {
        return path;
    }
    return path + u".txt"_s;
}

ExportResult export_text(AppState& state, ExchangeKind kind, const QString& path)
{
    ExportResult result;
    if (path.isEmpty()) {
        return result;
    }
    if (isfile(path) && !cankill(path)) {
        result.box = Notice{u"Unable to overwrite existing file."_s, u"Export Failed"_s};
        return result;
    }
    try {
        result.exported = write_export(state.global_db, kind, path);
    } catch (const store::Error&) {
        result.box = Notice{u"Error exporting records"_s, u"Export Error"_s};
        return result;
    } catch (const WriteFailed&) {
        result.box = Notice{u"Error exporting records"_s, u"Export Error"_s};
        return result;
    }
    if (!isfile(path)) {
        result.box = Notice{u"Unable to write export file. Invalid path or insufficient rights."_s, u"Export Failed"_s};
        return result;
    }
    result.box = Notice{QString::number(result.exported) + u" "_s + kind_noun(kind) + u" records exported"_s,
                        u"Export Complete"_s};
    result.succeeded = true;
    return result;
}

ImportResult import_text(AppState& state, ExchangeKind kind, const QString& path, bool overwrite,
                         const ImportProgress& progress, ListPublishing publishing)
{
    ImportResult result;
    if (path.isEmpty()) {
        return result;
    }
    if (!isfile(path)) {
        result.box = Notice{u"That file does not exist"_s, u"File Not Found"_s};
        return result;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.box = import_error_box();
        return result;
    }
    const ParsedFile parsed = parse_records(QString::fromUtf8(file.readAll()));
    file.close();

    qsizetype first = 0;
    if (!parsed.records.isEmpty() && is_heading(parsed.records.at(0))) {
        first = 1;
    }
    // The version is read from the first data record; a file without one cannot be imported at all.
    if (first >= parsed.records.size()) {
        result.box = import_error_box();
        return result;
    }
    if (!version_matches(parsed.records.at(first).at(0))) {
        result.box = Notice{u"Import file version mismatch"_s, u"Version Mismatch"_s};
        return result;
    }

    try {
        const RunOutcome run = import_records(state.global_db, kind, parsed, first, overwrite, progress);
        if (run.cancelled) {
            result.box = import_cancelled_box();
            result.cancelled = true;
            return result; // nothing changed, so there is nothing to publish
        }
        result.imported = run.counts.imported;
        result.skipped = run.counts.skipped;
        result.box = run.complete ? import_complete_box(kind, run.counts) : import_error_box();
        result.succeeded = run.complete;
    } catch (const store::Error&) {
        // The run's transaction is rolled back: none of its rows stay, so none count.
        result.box = import_error_box();
    }
    if (kind == ExchangeKind::Recipients || kind == ExchangeKind::Groups) {
        // Other programs see the new names, whatever part of the file was taken.
        if (publishing == ListPublishing::Later) {
            intake::publish_lists_later(state);
        } else {
            intake::publish_recipients(state);
            intake::publish_groups(state);
        }
    }
    return result;
}

} // namespace cvd::exchange
