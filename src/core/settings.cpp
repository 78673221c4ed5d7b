#include "core/settings.h"

#include "core/text.h"
#include "store/database.h"

using namespace Qt::StringLiterals;

namespace cvd {

const QVariant* SettingTable::find(const QString& name) const
{
    const auto it = m_index.constFind(name.toLower());
    return it == m_index.constEnd() ? nullptr : &m_entries.at(*it).second;
}

void SettingTable::set(const QString& name, const QVariant& value)
{
    const QString key = name.toLower();
    const auto it = m_index.constFind(key);
    if (it != m_index.constEnd()) {
        m_entries[*it].second = value;
        return;
    }
    m_index.insert(key, m_entries.size());
    m_entries.append({name, value});
}

void SettingTable::clear()
{
    m_entries.clear();
    m_index.clear();
}

const QStringList& SettingsStore::global_categories()
{
    static const QStringList categories{u"database"_s, u"connector"_s, u"logging"_s,
                                        u"security"_s, u"display"_s,   u"level"_s};
    return categories;
}

const QStringList& SettingsStore::user_categories()
{
    static const QStringList categories{u"database"_s, u"connector"_s, u"logging"_s, u"security"_s, u"display"_s};
    return categories;
}

SettingTable* SettingsStore::global_table(const QString& category)
{
    const QString key = category.toLower();
    if (!global_categories().contains(key)) {
        return nullptr;
    }
    return &m_global[key];
}

SettingTable* SettingsStore::user_table(const QString& category)
{
    const QString key = category.toLower();
    if (!user_categories().contains(key)) {
        return nullptr;
    }
    return &m_user[key];
}

bool SettingsStore::user_switch_on(const QString& name)
{
    const QString switch_name = u"user_"_s + name;
    return get_setting_flag({u"level", switch_name}) != 0;
}

std::optional<QVariant> SettingsStore::get_setting(SettingKey setting)
{
    const QString cat = setting.category.toString().toLower();
    const QString key = setting.name.toString().toLower();
    if (cat == u"level") {
        const QVariant* value = global_table(cat)->find(key);
        return value ? std::optional<QVariant>(*value) : std::nullopt;
    }
    SettingTable* global = global_table(cat);
    SettingTable* user = user_table(cat);
    if (global == nullptr || user == nullptr) {
        return std::nullopt;
    }
    if (!user_switch_on(key)) {
        const QVariant* value = global->find(key);
        return value ? std::optional<QVariant>(*value) : std::nullopt;
    }
    if (const QVariant* value = user->find(key)) {
        return *value;
    }
    if (const QVariant* value = global->find(key)) {
        const QVariant copy = *value;
        user->set(key, copy);
        return copy;
    }
    return std::nullopt;
}

void SettingsStore::put_setting(SettingKey setting, const QVariant& value)
{
    const QString cat = setting.category.toString().toLower();
    const QString key = setting.name.toString().toLower();
    if (cat == u"level") {
        global_table(cat)->set(key, value);
        return;
    }
    SettingTable* global = global_table(cat);
    SettingTable* user = user_table(cat);
    if (global == nullptr || user == nullptr) {
        return;
    }
    (user_switch_on(key) ? user : global)->set(key, value);
}

QString SettingsStore::get_setting_text(SettingKey key)
{
    const std::optional<QVariant> value = get_setting(key);
    if (!value) {
        return {};
    }
    return unescape_setting_text(setting_value_text(*value));
}

qint32 SettingsStore::get_setting_long(SettingKey key)
{
    const std::optional<QVariant> value = get_setting(key);
    if (!value) {
        return 0;
    }
    return to_int32(numeric_prefix(setting_value_text(*value)));
}

qint32 SettingsStore::get_setting_flag(SettingKey key)
{
    const std::optional<QVariant> value = get_setting(key);
    if (!value) {
        return 0;
    }
    const QString text = setting_value_text(*value).trimmed();
    if (text.isEmpty()) {
        return 0;
    }
    if (text.compare(u"true", Qt::CaseInsensitive) == 0) {
        return -1;
    }
    bool ok = false;
    const double number = text.toDouble(&ok);
    // A text that is no number reads as 0 rather than stopping the program.
    return ok ? to_int32(number) : 0;
}

namespace {

void load_categories(store::Database& db, const QStringList& categories, QHash<QString, SettingTable>& tables)
{
    store::Statement select =
        db.prepare(u"SELECT cv_name, cv_value FROM cv_settings WHERE (cv_category = ?1) ORDER BY cv_id"_s);
    for (const QString& category : categories) {
        SettingTable& table = tables[category];
        table.clear();
        select.reset();
        select.bind(1, category);
        while (select.step()) {
            table.set(select.text(0).value_or(QString()), select.text(1).value_or(QString()));
        }
    }
}

void save_categories(store::Database& db, const QStringList& categories, const QHash<QString, SettingTable>& tables)
{
    store::Transaction transaction(db);
    db.exec(u"DELETE FROM cv_settings"_s);
    store::Statement insert =
        db.prepare(u"INSERT INTO cv_settings (cv_category, cv_name, cv_value) VALUES (?1, ?2, ?3)"_s);
    for (const QString& category : categories) {
        const auto table = tables.constFind(category);
        if (table == tables.constEnd()) {
            continue;
        }
        for (const auto& [name, value] : table->entries()) {
            insert.reset();
            insert.bind(1, category).bind(2, name).bind(3, setting_value_text(value));
            insert.exec();
        }
    }
    transaction.commit();
}

} // namespace

void SettingsStore::load_global(store::Database& db)
{
    load_categories(db, global_categories(), m_global);
    m_loaded = true;
}

void SettingsStore::load_user(store::Database& db)
{
    load_categories(db, user_categories(), m_user);
}

void SettingsStore::save_global(store::Database& db) const
{
    save_categories(db, global_categories(), m_global);
}

void SettingsStore::save_user(store::Database& db) const
{
    save_categories(db, user_categories(), m_user);
}

QString setting_value_text(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool) {
        return value.toBool() ? u"-1"_s : u"0"_s;
    }
    return value.toString();
}

} // namespace cvd
