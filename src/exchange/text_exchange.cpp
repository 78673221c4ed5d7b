#include "exchange/text_exchange.h"

#include "core/app_state.h"
#include "core/file_ops.h"
#include "core/record_format.h"
#include "store/database.h"

#include <QFile>
#include <QList>
#include <QStringList>
#include <variant>

using namespace Qt::Literals::StringLiterals;

namespace cvd::exchange {

namespace {

enum class ColumnType { Text, Number, Flag };

struct Column
{
    const char16_t* heading;
    const char16_t* name;
    ColumnType type;
};

// The fields after the version, in file order.
const QList<Column>& carrier_columns()
{
    static const QList<Column> columns = {
        {u"Name", u"cv_name", ColumnType::Text},
        {u"PhoneNumber", u"cv_phone_number", ColumnType::Text},
        {u"ModemSettings", u"cv_modem_settings", ColumnType::Text},
        {u"MaxChars", u"cv_maxchars", ColumnType::Number},
        {u"InitString", u"cv_init_string", ColumnType::Text},
        {u"MessageLimit", u"cv_message_limit", ColumnType::Number},
        {u"DialType", u"cv_dial_type", ColumnType::Text},
        {u"AuthType", u"cv_auth_type", ColumnType::Number},
        {u"AuthUser", u"cv_auth_user", ColumnType::Text},
        {u"AuthPassword", u"cv_auth_pass", ColumnType::Text},
        {u"RelayMail", u"cv_relay_mail", ColumnType::Flag},
        {u"RelayServer", u"cv_relay_server", ColumnType::Text},
        {u"Priority", u"cv_priority", ColumnType::Number},
    };
    return columns;
}

const QList<Column>& recipient_columns()
{
    static const QList<Column> columns = {
        {u"Name", u"cv_name", ColumnType::Text},
        {u"FullName", u"cv_full_name", ColumnType::Text},
        {u"Id", u"cv_id", ColumnType::Text},
        {u"Carrier", u"cv_carrier", ColumnType::Text},
        {u"MaxChars", u"cv_maxchars", ColumnType::Number},
        {u"Alpha", u"cv_alpha", ColumnType::Flag},
        {u"OnCall", u"cv_on_call", ColumnType::Flag},
        {u"AdHoc", u"cv_ad_hoc", ColumnType::Flag},
        {u"DropControl", u"cv_drop_control", ColumnType::Flag},
        {u"Group", u"cv_group", ColumnType::Flag},
        {u"SendSubject", u"cv_SendSubject", ColumnType::Flag},
        {u"RemoveFrom", u"cv_remove_from", ColumnType::Flag},
        {u"Extra1", u"cv_extra1", ColumnType::Text},
        {u"Extra2", u"cv_extra2", ColumnType::Text},
        {u"Priority", u"cv_priority", ColumnType::Number},
    };
    return columns;
}

const QList<Column>& member_columns()
{
    static const QList<Column> columns = {
        {u"Group", u"cv_group", ColumnType::Text},
        {u"Recipient", u"cv_recipient", ColumnType::Text},
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
    QStringList names;
    for (const Column& column : columns) {
        names.append(QString::fromUtf16(column.name));
    }
    return names.join(u", "_s);
}

// The table and condition of the export query, from constants only.
QString export_sql(ExchangeKind kind)
{
    const QString columns = column_list(columns_of(kind));
    switch (kind) {
    case ExchangeKind::Carriers:
        return u"SELECT "_s + columns + u" FROM cv_carriers ORDER BY cv_name"_s;
    case ExchangeKind::Recipients:
        return u"SELECT "_s + columns + u" FROM cv_recipients WHERE cv_group = 0 ORDER BY cv_name"_s;
    case ExchangeKind::Groups:
        return u"SELECT "_s + columns + u" FROM cv_recipients WHERE cv_group <> 0 ORDER BY cv_name"_s;
    case ExchangeKind::Members:
        break;
    }
    return u"SELECT "_s + columns + u" FROM cv_groups ORDER BY cv_group"_s;
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

std::optional<qint64> first_rowid(store::Database& db, const QString& table, const Value& name)
{
    store::Statement& query = db.cached(u"SELECT rowid FROM "_s + table + u" WHERE cv_name = ?1 LIMIT 1"_s);
    bind_value(query, 1, name);
    const std::optional<qint64> rowid = query.step() ? query.integer(0) : std::nullopt;
    query.reset(); // a cached statement must not hold its read open
    return rowid;
}

bool name_exists(store::Database& db, const Value& name)
{
    return first_rowid(db, u"cv_recipients"_s, name).has_value();
}

struct Counts
{
    int imported = 0;
    int skipped = 0;
};

// Carriers, recipients and groups: the row of the same name is replaced under `overwrite`, otherwise the
// record is skipped. The test, the delete and the insert are one transaction.
void import_named_row(store::Database& db, ExchangeKind kind, const QList<Value>& values, bool overwrite,
                      Counts& counts)
{
    const bool carriers = kind == ExchangeKind::Carriers;
    const QString table = carriers ? u"cv_carriers"_s : u"cv_recipients"_s;
    store::Transaction transaction(db);
    if (std::optional<qint64> existing = first_rowid(db, table, values.at(0))) {
        if (!overwrite) {
            ++counts.skipped;
            return;
        }
        store::Statement& remove = db.cached(u"DELETE FROM "_s + table + u" WHERE rowid = ?1"_s);
        remove.bind(1, *existing);
        remove.exec();
    }
    QList<Value> row = values;
    QString extra_column;
    if (carriers) {
        // The engine's retry count starts afresh on the new installation.
        extra_column = u", cv_retries"_s;
        row.append(Value(qint64{0}));
    } else {
        // Whether the row is a group follows the chosen kind, not the file: a recipient file imported as
        // groups makes every row a group.
        row[9] = Value(kind == ExchangeKind::Groups);
    }
    QStringList placeholders;
    for (int i = 1; i <= row.size(); ++i) {
        placeholders.append(u"?"_s + QString::number(i));
    }
    store::Statement& insert = db.cached(u"INSERT INTO "_s + table + u" ("_s + column_list(columns_of(kind)) +
                                         extra_column + u") VALUES ("_s + placeholders.join(u", "_s) + u")"_s);
    for (int i = 0; i < row.size(); ++i) {
        bind_value(insert, i + 1, row.at(i));
    }
    insert.exec();
    transaction.commit();
    ++counts.imported;
}

// A member row. With `overwrite` the group's existing members are deleted for every record, not once a group,
// so only the last member of each group in the file remains; existing installations rely on that, so it stays.
// A record whose recipient is unknown counts neither way.
void import_member(store::Database& db, const QList<Value>& values, bool overwrite, Counts& counts)
{
    const Value& group = values.at(0);
    const Value& recipient = values.at(1);
    store::Transaction transaction(db);
    if (!name_exists(db, group)) {
        ++counts.skipped;
        return;
    }
    if (overwrite) {
        store::Statement remove = db.prepare(u"DELETE FROM cv_groups WHERE cv_group = ?1"_s);
        bind_value(remove, 1, group);
        remove.exec();
    }
    if (name_exists(db, recipient)) {
        store::Statement query =
            db.prepare(u"SELECT 1 FROM cv_groups WHERE cv_group = ?1 AND cv_recipient = ?2 LIMIT 1"_s);
        bind_value(query, 1, group);
        bind_value(query, 2, recipient);
        if (!query.step()) {
            store::Statement insert = db.prepare(u"INSERT INTO cv_groups (cv_group, cv_recipient) VALUES (?1, ?2)"_s);
            bind_value(insert, 1, group);
            bind_value(insert, 2, recipient);
            insert.exec();
            ++counts.imported;
        } else if (overwrite) {
            ++counts.imported;
        } else {
            ++counts.skipped;
        }
    }
    transaction.commit();
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

ImportResult import_text(AppState& state, ExchangeKind kind, const QString& path, bool overwrite)
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

    Counts counts;
    try {
        for (qsizetype i = first; i < parsed.records.size(); ++i) {
            const QList<Value> values = record_values(parsed.records.at(i), columns_of(kind));
            if (kind == ExchangeKind::Members) {
                import_member(state.global_db, values, overwrite, counts);
            } else {
                import_named_row(state.global_db, kind, values, overwrite, counts);
            }
        }
        if (parsed.malformed) {
            throw BadRecord{};
        }
    } catch (const BadRecord&) {
        result.box = import_error_box();
    } catch (const store::Error&) {
        result.box = import_error_box();
    }
    result.imported = counts.imported;
    result.skipped = counts.skipped;
    if (!result.box) {
        result.box = import_complete_box(kind, counts);
        result.succeeded = true;
    }
    return result;
}

} // namespace cvd::exchange
