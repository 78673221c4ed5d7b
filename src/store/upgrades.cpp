#include "store/upgrades.h"

#include "store/schema.h"

#include <QHash>
#include <cmath>

using namespace Qt::StringLiterals;

namespace cvd::store {

namespace {

// The first row of a table stands for "the one row" of the old settings table.
const QString kFirstSettingsRow = u"rowid = (SELECT min(rowid) FROM cv_settings)"_s;

void add_text_column(Database& db, const QString& table, const QString& column, int size)
{
    db.exec(u"ALTER TABLE "_s + table + u" ADD COLUMN "_s + text_column_definition(column, size));
}

void add_column(Database& db, const QString& table, const QString& definition)
{
    db.exec(u"ALTER TABLE "_s + table + u" ADD COLUMN "_s + definition);
}

void drop_column(Database& db, const QString& table, const QString& column)
{
    db.exec(u"ALTER TABLE "_s + table + u" DROP COLUMN "_s + column);
}

void set_old_version(Database& db, int version)
{
    Statement update = db.prepare(u"UPDATE cv_settings SET cv_dbversion = ?1 WHERE "_s + kFirstSettingsRow);
    update.bind(1, version);
    update.exec();
}

// A number or boolean of the old settings row as the text a setting stores: "30", "-1".
QString number_text(const std::optional<QString>& value)
{
    QString trimmed = value.value_or(QString()).trimmed();
    bool ok = false;
    const double number = trimmed.toDouble(&ok);
    if (ok && std::isfinite(number) && number == std::floor(number) && std::fabs(number) < 9.0e15) {
        return QString::number(static_cast<qint64>(number));
    }
    return trimmed;
}

// The values of the old settings row by lower-cased column name; null columns are absent.
class OldSettingsRow
{
public:
    explicit OldSettingsRow(Database& db)
    {
        Statement select = db.prepare(u"SELECT * FROM cv_settings WHERE "_s + kFirstSettingsRow);
        if (!select.step()) {
            throw Error(1, u"the settings table has no row"_s);
        }
        for (int column = 0; column < select.column_count(); ++column) {
            if (const std::optional<QString> value = select.text(column)) {
                m_values.insert(select.column_name(column).toLower(), *value);
            }
        }
    }

    QString text(const QString& column) const { return m_values.value(column); }
    QString number(const QString& column) const
    {
        return number_text(m_values.contains(column) ? std::optional<QString>(m_values.value(column)) : std::nullopt);
    }
    // A boolean column: anything but null and 0 counts as true.
    bool flag(const QString& column) const
    {
        const QString value = number(column);
        return !value.isEmpty() && value != u"0";
    }

private:
    QHash<QString, QString> m_values;
};

// The authentication kind that a carrier's link implies, by the first three characters of its dial type.
std::optional<int> auth_kind_of(const QString& link)
{
    if (link == u"eml" || link == u"snp" || link == u"tap" || link == u"ucp") {
        return 1;
    }
    if (link == u"wct") {
        return 11;
    }
    return std::nullopt;
}

struct CarrierRow
{
    qint64 rowid = 0;
    QString dial_type;
    QString password;
};

QList<CarrierRow> carrier_rows(Database& db)
{
    Statement select = db.prepare(u"SELECT rowid, cv_dial_type, cv_password FROM cv_carriers ORDER BY rowid"_s);
    QList<CarrierRow> rows;
    while (select.step()) {
        rows.append(
            {select.integer(0).value_or(0), select.text(1).value_or(QString()), select.text(2).value_or(QString())});
    }
    return rows;
}

// Splits the old carrier passwords into user and password, derives the authentication kind, and moves the
// mail relay of the old settings onto each mail carrier. A row with an empty password keeps the kind of the
// row before it, as the conversion has always done.
void convert_carriers(Database& db, const OldSettingsRow& old)
{
    Statement update = db.prepare(u"UPDATE cv_carriers SET cv_dial_type = ?1, cv_auth_type = ?2, cv_auth_user = ?3, "
                                  "cv_auth_pass = ?4, cv_relay_mail = ?5, cv_relay_server = ?6, "
                                  "cv_modem_settings = CASE WHEN ?7 THEN '25' ELSE cv_modem_settings END "
                                  "WHERE rowid = ?8"_s);
    int kind = 0;
    for (const CarrierRow& row : carrier_rows(db)) {
        const QString link = row.dial_type.left(3);
        const QString dial_type = link == u"wct" ? u"wct-0"_s : row.dial_type;
        QString user;
        QString password = row.password;
        if (!row.password.isEmpty()) {
            const qsizetype bar = row.password.indexOf(u'|');
            if (bar >= 0) {
                user = row.password.left(bar);
                password = row.password.mid(bar + 1);
            }
            kind = auth_kind_of(link).value_or(kind);
        }
        const bool mail = link == u"eml";
        update.reset();
        update.bind(1, dial_type).bind(2, kind).bind(3, user).bind(4, password);
        update.bind_bool(5, mail && old.flag(u"cv_relay_mail"_s));
        update.bind(6, mail ? old.text(u"cv_smtp_relay"_s) : QString());
        update.bind(7, mail ? 1 : 0).bind(8, row.rowid);
        update.exec();
    }
}

// The settings table becomes the table of category, name and value rows. The old row stays behind with
// no category and no name; the first save of the settings removes it.
void rebuild_settings_table(Database& db)
{
    db.exec(u"ALTER TABLE cv_settings RENAME TO cv_settings_old"_s);
    create_current_table(db, u"cv_settings"_s);
    db.exec(u"INSERT INTO cv_settings (cv_category) SELECT NULL FROM cv_settings_old ORDER BY rowid"_s);
    db.exec(u"DROP TABLE cv_settings_old"_s);
}

QString sender_email(const QString& sender, const QString& domain)
{
    const QString trimmed = sender.trimmed();
    return trimmed.contains(u'@') ? trimmed : trimmed + u'@' + domain;
}

void insert_setting_rows(Database& db, const OldSettingsRow& old, const LegacyInputs& inputs)
{
    Statement insert = db.prepare(u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES (?1, ?2, ?3)"_s);
    const auto add = [&insert](const QString& category, const QString& name, const QString& value) {
        insert.reset();
        insert.bind(1, category).bind(2, name).bind(3, value);
        insert.exec();
    };
    add(u"database"_s, u"version"_s, u"500"_s);
    add(u"database"_s, u"purge_after"_s, old.number(u"cv_purge_after"_s));
    add(u"database"_s, u"rebuild_index"_s, u"0"_s);
    add(u"connector"_s, u"retries"_s, old.number(u"cv_retries"_s));
    add(u"connector"_s, u"retry_interval"_s, old.number(u"cv_retry_interval"_s));
    add(u"connector"_s, u"dial_prefix"_s, old.text(u"cv_dial_prefix"_s));
    add(u"connector"_s, u"port"_s, old.number(u"cv_port"_s));
    // Deliberately not the old name servers: every converted installation starts from none.
    add(u"connector"_s, u"dns1"_s, u"0.0.0.0"_s);
    add(u"connector"_s, u"dns2"_s, u"0.0.0.0"_s);
    add(u"connector"_s, u"sender"_s, inputs.sender);
    add(u"connector"_s, u"sender_email"_s, sender_email(inputs.sender, old.text(u"cv_domain"_s)));
    add(u"connector"_s, u"subject_delimiter"_s, QString());
    add(u"logging"_s, u"level"_s, inputs.debug_log_present ? u"2"_s : u"1"_s);
    add(u"logging"_s, u"archive"_s, old.number(u"cv_archive_logs"_s));
    add(u"logging"_s, u"length"_s, old.number(u"cv_log_length"_s));
    for (const QString& level : {u"admin"_s, u"super"_s, u"user"_s}) {
        add(u"security"_s, level + u"_password"_s, old.text(u"cv_"_s + level + u"_password"_s));
    }
    add(u"display"_s, u"extra1_label"_s, old.text(u"cv_extra1_label"_s));
    add(u"display"_s, u"extra2_label"_s, old.text(u"cv_extra2_label"_s));
    for (const auto& [name, value] : inputs.display) {
        add(u"display"_s, name, value);
    }
    for (const auto& [name, value] : level_switch_defaults()) {
        add(u"level"_s, name, value);
    }
}

// The presets held in memory at this point are empty; the file's lines fill them from the first, and all
// 100 are then stored, so rows the file does not reach become empty too.
void store_old_presets(Database& db, const QList<OldPreset>& presets)
{
    // The message text lives in cv_recipient and the recipient in cv_message, as presets are always stored.
    Statement update = db.prepare(
        u"UPDATE cv_presets SET cv_description = ?1, cv_recipient = ?2, cv_message = ?3 WHERE (cv_index = ?4)"_s);
    constexpr int kPresetCount = 100;
    for (int index = 1; index <= kPresetCount; ++index) {
        const OldPreset preset = index <= presets.size() ? presets.at(index - 1) : OldPreset{};
        update.reset();
        update.bind(1, preset.description).bind(2, preset.message).bind(3, preset.recipient).bind(4, index);
        update.exec();
    }
}

// Single-column indexes on cv_messages' flags that an older file may carry.
QStringList flag_indexes(Database& db)
{
    Statement select = db.prepare(
        u"SELECT il.name FROM pragma_index_list('cv_messages') AS il WHERE il.partial = 0 AND "
        "(SELECT count(*) FROM pragma_index_info(il.name)) = 1 AND "
        "(SELECT ii.name FROM pragma_index_info(il.name) AS ii) IN ('cv_sent', 'cv_error', 'cv_scheduled')"_s);
    QStringList names;
    while (select.step()) {
        names.append(select.text(0).value_or(QString()));
    }
    return names;
}

// The flag indexes lead the planner to walk nearly every row of a long history; the transaction index and
// the partial index of the due rows serve the queue's queries instead.
void bring_queue_indexes_up_to_date(Database& db)
{
    for (const QString& name : flag_indexes(db)) {
        // The name comes from the file's own catalogue; quoted as an identifier.
        db.exec(u"DROP INDEX \""_s + QString(name).replace(u'"', u"\"\""_s) + u'"');
    }
    const QStringList present = db.index_names(u"cv_messages"_s);
    for (const QString& index : {u"cv_transaction_index"_s, u"cv_due_index"_s, u"cv_requested_index"_s}) {
        if (!present.contains(index, Qt::CaseInsensitive)) {
            create_current_index(db, index);
        }
    }
}

void set_version_setting(Database& db, const QString& version)
{
    Statement update =
        db.prepare(u"UPDATE cv_settings SET cv_value = ?1 WHERE cv_category = 'database' AND cv_name = 'version'"_s);
    update.bind(1, version);
    update.exec();
    if (db.changes() == 0) {
        Statement insert = db.prepare(
            u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES ('database', 'version', ?1)"_s);
        insert.bind(1, version);
        insert.exec();
    }
}

} // namespace

void convert300to301(Database& db)
{
    Transaction transaction(db);
    add_text_column(db, u"cv_recipients"_s, u"cv_extra1"_s, 80);
    add_text_column(db, u"cv_recipients"_s, u"cv_extra2"_s, 80);
    db.exec(u"UPDATE cv_recipients SET cv_extra1 = '', cv_extra2 = ''"_s);
    add_text_column(db, u"cv_settings"_s, u"cv_extra1_label"_s, 20);
    add_text_column(db, u"cv_settings"_s, u"cv_extra2_label"_s, 20);
    db.exec(u"UPDATE cv_settings SET cv_extra1_label = 'Comment1', cv_extra2_label = 'Comment2' WHERE "_s +
            kFirstSettingsRow);
    set_old_version(db, 301);
    transaction.commit();
}

void convert301to302(Database& db)
{
    Transaction transaction(db);
    const QString carriers = u"cv_carriers"_s;
    add_text_column(db, carriers, u"cv_temp"_s, 40);
    db.exec(u"UPDATE cv_carriers SET cv_temp = cv_password"_s);
    drop_column(db, carriers, u"cv_password"_s);
    add_text_column(db, carriers, u"cv_password"_s, 40);
    db.exec(u"UPDATE cv_carriers SET cv_password = cv_temp"_s);
    drop_column(db, carriers, u"cv_temp"_s);
    set_old_version(db, 302);
    transaction.commit();
}

void convert302to500(Database& db, const LegacyInputs& inputs)
{
    Transaction transaction(db);
    const QString carriers = u"cv_carriers"_s;
    add_column(db, carriers, column_definition(carriers, u"cv_relay_mail"_s));
    add_text_column(db, carriers, u"cv_relay_server"_s, 80);
    add_column(db, carriers, column_definition(carriers, u"cv_auth_type"_s));
    add_text_column(db, carriers, u"cv_auth_user"_s, 80);
    // 80 wide here where a new file has 40; nothing evens the two out.
    add_text_column(db, carriers, u"cv_auth_pass"_s, 80);

    const OldSettingsRow old(db);
    convert_carriers(db, old);

    drop_column(db, carriers, u"cv_password"_s);
    for (const QString& column :
         {u"cv_trustline"_s, u"cv_trustline_index"_s, u"cv_notify_only"_s, u"cv_notify_code"_s}) {
        drop_column(db, u"cv_recipients"_s, column);
    }
    drop_column(db, u"cv_messages"_s, u"cv_trustline_index"_s);

    rebuild_settings_table(db);
    insert_setting_rows(db, old, inputs);

    create_current_table(db, u"cv_presets"_s);
    insert_default_presets(db);
    // The counter starts afresh; the old one is not carried over.
    create_current_table(db, u"cv_counters"_s);
    db.exec(u"INSERT INTO cv_counters (cv_unique) VALUES (1)"_s);
    if (inputs.presets) {
        store_old_presets(db, *inputs.presets);
    }
    for (const QString& index : {u"cv_settings_id_index"_s, u"cv_settings_category_index"_s, u"cv_presets_id_index"_s,
                                 u"cv_counters_id_index"_s}) {
        create_current_index(db, index);
    }
    transaction.commit();
}

void convert500to501(Database& db)
{
    Transaction transaction(db);
    add_column(db, u"cv_recipients"_s, column_definition(u"cv_recipients"_s, u"cv_priority"_s));
    add_column(db, u"cv_carriers"_s, column_definition(u"cv_carriers"_s, u"cv_priority"_s));
    // Converted files keep index names of their own; nothing depends on an index's name. An index name
    // belongs to the whole file here, so the one on the queue needs a name of its own.
    db.exec(u"CREATE INDEX priority_index ON cv_carriers (cv_priority)"_s);
    drop_column(db, u"cv_carriers"_s, u"cv_pulse"_s);
    add_column(db, u"cv_messages"_s, column_definition(u"cv_messages"_s, u"cv_priority"_s));
    db.exec(u"CREATE INDEX cv_messages_priority_index ON cv_messages (cv_priority)"_s);
    for (const QString& table : {u"cv_carriers"_s, u"cv_recipients"_s, u"cv_messages"_s}) {
        db.exec(u"UPDATE "_s + table + u" SET cv_priority = 100"_s);
    }
    bring_queue_indexes_up_to_date(db);
    set_version_setting(db, u"501"_s);
    transaction.commit();
}

} // namespace cvd::store
