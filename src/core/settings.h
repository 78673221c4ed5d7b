#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVariant>
#include <optional>
#include <utility>

namespace cvd {

namespace store {
class Database;
}

// A setting's category and name: one value wherever the setting is read or written. The settings the program
// knows by name are listed in core/setting_keys.h; the setup dialogs also build keys from the rows they show.
struct SettingKey
{
    QStringView category;
    QStringView name;
};

// One category of settings: keys compared without regard to case, kept in the order they arrived.
class SettingTable
{
public:
    const QVariant* find(const QString& name) const;
    // Replaces the value of an existing key (keeping its spelling) or appends the key.
    void set(const QString& name, const QVariant& value);
    void clear();
    bool contains(const QString& name) const { return find(name) != nullptr; }
    const QList<std::pair<QString, QVariant>>& entries() const { return m_entries; }

private:
    QList<std::pair<QString, QVariant>> m_entries;
    QHash<QString, qsizetype> m_index; // lower-cased key -> position in m_entries
};

// The settings of both databases, held in memory from load on. The memory copy is the master: nothing
// reaches a database before save. Whether a setting is kept per user is decided by the switch "user_" plus
// its name in category `level`, which exists only in the global database.
class SettingsStore
{
public:
    // Categories in the order in which they are loaded and saved.
    static const QStringList& global_categories(); // database connector logging security display level
    static const QStringList& user_categories();   // database connector logging security display

    // The value, or nullopt for a setting that is not there (and for an unknown category).
    // With the user switch on, a value found only in the global table is copied into the user table, so that
    // it is saved in the user database and later global changes no longer reach this user.
    std::optional<QVariant> get_setting(SettingKey key);
    void put_setting(SettingKey key, const QVariant& value);

    // Typed readers: text through the escape rule (null gives empty text); a whole number from the numeric
    // prefix (null gives 0); a flag as an integer (null and empty give 0, -1 as a rule for true).
    QString get_setting_text(SettingKey key);
    qint32 get_setting_long(SettingKey key);
    qint32 get_setting_flag(SettingKey key);

    // nullptr for a category the database does not keep.
    SettingTable* global_table(const QString& category);
    SettingTable* user_table(const QString& category);

    // Reads each category's rows (null values become empty text; the last of duplicate names wins).
    // Throws store::Error.
    void load_global(store::Database& db);
    void load_user(store::Database& db);
    // Rewrites the database's whole settings table in one transaction. Throws store::Error.
    void save_global(store::Database& db) const;
    void save_user(store::Database& db) const;

    bool is_loaded() const { return m_loaded; }

private:
    bool user_switch_on(const QString& name);

    QHash<QString, SettingTable> m_global;
    QHash<QString, SettingTable> m_user;
    bool m_loaded = false;
};

// The text a value is stored as: booleans as -1 and 0, numbers in decimal.
QString setting_value_text(const QVariant& value);

} // namespace cvd
