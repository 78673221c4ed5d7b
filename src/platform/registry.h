#pragma once

#include "platform/files.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

namespace cvd::platform {

// The machine's key store, kept as a file tree: a key is a directory, a value a file in it.
// Text values are the file's bytes (one trailing newline is dropped on reading, so `echo bob > To`
// works); numeric values are decimal text. Writes go to a temporary file that is then renamed.
// Subkeys and values enumerate in byte order of their names (UTF-8).
//
// Names on disk. Ordinary key and value names ("To", "Ready", "DB_Password") are the file names as they are,
// so the tree can be read and edited with the shell. Names a file name cannot carry are escaped: "%" is
// written "%25", "/" "%2F", NUL "%00", a leading "." "%2E", and the empty name (a key's default value) is a
// lone "%". No escaped name starts with ".", so the temporary files of a write (".cvdtmp-...") never show up
// as values, and "." or ".." can never leave the key. Entries whose names are not in this form (hidden files,
// a hand-made "50%") are not ours and are passed over by the enumeration.
enum class Hive {
    LocalMachine, // folder HKEY_LOCAL_MACHINE
    CurrentUser,  // folder HKEY_CURRENT_USER
};

class Registry
{
public:
    // root: the folder holding the hive folders.
    explicit Registry(QString root);

    // $CVD_REGISTRY_ROOT if set, otherwise /var/lib/halvern/registry where it can be written,
    // otherwise $XDG_STATE_HOME/halvern/registry (default ~/.local/state).
    static QString default_root();
    // The same choice with the machine-wide candidate given instead of /var/lib/halvern/registry (for tests).
    static QString default_root(const QString& system_candidate);

    // The file name that holds a key or value name, and back; nullopt for a file name not in that form.
    static QByteArray encode_name(const QString& name);
    static std::optional<QString> decode_name(const QByteArray& file_name);

    const QString& root() const { return m_root; }

    // Key paths use backslashes between levels ("SOFTWARE\Halvern\Transfer"); forward slashes are accepted too.
    bool key_exists(Hive hive, const QString& key) const;
    // Creates the key and every missing parent. True when the key exists afterwards.
    bool create_key(Hive hive, const QString& key);
    // Removes the key with all its values and subkeys. True when it is gone afterwards.
    bool delete_key(Hive hive, const QString& key);

    // A value file is read only when it is a regular file of at most this many bytes; anything else (a FIFO,
    // a device, a huge file) is never waited for.
    static constexpr qint64 kMaxValueBytes = qint64{64} * 1024;

    // A value's text, or why there is none: Missing, or a value file that cannot be read (NotRegular,
    // TooLarge, Failed with error()).
    struct ValueText
    {
        ReadOutcome outcome = ReadOutcome::Missing;
        int error = 0;
        QString text;
    };
    ValueText read_value_text(Hive hive, const QString& key, const QString& name) const;

    // A missing key or value reads as nullopt, and so does one that cannot be read.
    std::optional<QString> read_text(Hive hive, const QString& key, const QString& name) const;
    // nullopt also when the value does not hold a decimal number.
    std::optional<qint64> read_number(Hive hive, const QString& key, const QString& name) const;

    // Writes need the key to exist already, as the registry's own calls do; false otherwise. A text that ends
    // in a newline is stored with one more, so that it reads back as written.
    bool write_text(Hive hive, const QString& key, const QString& name, const QString& value);
    bool write_number(Hive hive, const QString& key, const QString& name, qint64 value);
    bool delete_value(Hive hive, const QString& key, const QString& name);
    // Puts in the key's place a key holding exactly these values (name, text), its parents made as needed. The
    // values are written into a hidden folder beside the key, which then takes the key's place, so a reader
    // sees the whole old list or the whole new one, never a part; the old key's subkeys go with it. Cheaper
    // than deleting the key and writing value by value: one file each, no temporary file per value. False
    // when the new key could not be put in place; the old one then stays.
    bool replace_key(Hive hive, const QString& key, const QList<std::pair<QString, QString>>& values);

    // Enumeration by index in byte order of the names; an index past the end gives an empty text. A folder
    // whose name cannot stand as one level of a key path (empty, or holding a slash or backslash) is not a
    // subkey: it could never be opened by its name.
    QString subkey_at(Hive hive, const QString& key, int index) const;
    QStringList subkeys(Hive hive, const QString& key) const;
    QStringList value_names(Hive hive, const QString& key) const;
    // Names and data of all values of a key, in byte order of the names.
    QList<std::pair<QString, QString>> values(Hive hive, const QString& key) const;

    // The folder that holds a key (for tests and diagnostics).
    QString key_folder(Hive hive, const QString& key) const;

private:
    QByteArray key_path(Hive hive, const QString& key) const;
    QByteArray value_path(Hive hive, const QString& key, const QString& name) const;
    // The decoded names of the entries of a key that are folders (subkeys) or files (values), sorted.
    QStringList entries(Hive hive, const QString& key, bool folders) const;

    QString m_root;
};

// The number in a value's text: optional blanks around an optional sign and decimal digits, nothing else.
std::optional<qint64> parse_decimal(const QString& text);

// Parses "HKLM", "HKEY_LOCAL_MACHINE", "HKCU", "HKEY_CURRENT_USER" (any case).
std::optional<Hive> parse_hive(const QString& text);

} // namespace cvd::platform
