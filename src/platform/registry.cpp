#include "platform/registry.h"

#include "platform/files.h"
#include "platform/folders.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace cvd::platform {

namespace {

const char* hive_folder(Hive hive)
{
    return hive == Hive::LocalMachine ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER";
}

QStringList key_levels(const QString& key)
{
    QString normalised = key;
    normalised.replace(u'\\', u'/');
    return normalised.split(u'/', Qt::SkipEmptyParts);
}

// Whether a subkey's name can be one level of a key path: the lone "%" of a default value, or a name with a
// separator in it, would address some other key or none.
bool is_key_level(const QString& name)
{
    return !name.isEmpty() && !name.contains(u'\\') && !name.contains(u'/');
}

// The bytes of a text value. Reading drops one newline; a value that ends in one gets another so that it reads
// back as written.
QByteArray value_bytes(const QString& value)
{
    QByteArray bytes = value.toUtf8();
    if (bytes.endsWith('\n')) {
        bytes += '\n';
    }
    return bytes;
}

// Writes a value file into a folder nobody else reads yet; no temporary file is needed there.
bool write_new_value(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) {
        return false;
    }
    const bool written = ::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    return ::close(fd) == 0 && written;
}

int hex_digit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1; // lower-case digits are not what encode_name writes, so such a name is not ours
}

// The folder exists and can be written, or it is missing and its nearest existing parent can be written.
bool can_write_below(const QString& path)
{
    QString probe = without_trailing_slash(path);
    while (!probe.isEmpty() && !path_exists(probe)) {
        probe = probe.left(probe.lastIndexOf(u'/'));
    }
    if (probe.isEmpty()) {
        probe = u"/"_s;
    }
    return is_directory(probe) && ::access(QFile::encodeName(probe).constData(), W_OK | X_OK) == 0;
}

} // namespace

Registry::Registry(QString root) : m_root(std::move(root)) {}

QString Registry::default_root()
{
    return default_root(u"/var/lib/halvern/registry"_s);
}

QString Registry::default_root(const QString& system_candidate)
{
    QString configured = qEnvironmentVariable("CVD_REGISTRY_ROOT");
    if (!configured.isEmpty()) {
        return configured;
    }
    if (can_write_below(system_candidate)) {
        return system_candidate;
    }
    const QString state = state_home();
    return state.isEmpty() ? QString() : without_trailing_slash(state) + u"/halvern/registry"_s;
}

QByteArray Registry::encode_name(const QString& name)
{
    if (name.isEmpty()) {
        return QByteArrayLiteral("%");
    }
    QString escaped;
    escaped.reserve(name.size());
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name.at(i);
        if (c == u'%') {
            escaped += u"%25"_s;
        } else if (c == u'/') {
            escaped += u"%2F"_s;
        } else if (c == QChar(0)) {
            escaped += u"%00"_s;
        } else if (c == u'.' && i == 0) {
            escaped += u"%2E"_s;
        } else {
            escaped += c;
        }
    }
    return escaped.toUtf8();
}

std::optional<QString> Registry::decode_name(const QByteArray& file_name)
{
    if (file_name == "%") {
        return QString();
    }
    QByteArray bytes;
    bytes.reserve(file_name.size());
    for (qsizetype i = 0; i < file_name.size(); ++i) {
        if (file_name.at(i) != '%') {
            bytes += file_name.at(i);
            continue;
        }
        const int high = i + 2 < file_name.size() ? hex_digit(file_name.at(i + 1)) : -1;
        const int low = high >= 0 ? hex_digit(file_name.at(i + 2)) : -1;
        if (low < 0) {
            return std::nullopt;
        }
        bytes += static_cast<char>(high * 16 + low);
        i += 2;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString name = decoder.decode(bytes);
    // Only the one spelling encode_name gives is ours: "%41", a leading "." or broken UTF-8 are not.
    if (decoder.hasError() || name.isEmpty() || encode_name(name) != file_name) {
        return std::nullopt;
    }
    return name;
}

QByteArray Registry::key_path(Hive hive, const QString& key) const
{
    QByteArray path = QFile::encodeName(without_trailing_slash(m_root)) + '/' + hive_folder(hive);
    for (const QString& level : key_levels(key)) {
        path += '/' + encode_name(level);
    }
    return path;
}

QByteArray Registry::value_path(Hive hive, const QString& key, const QString& name) const
{
    return key_path(hive, key) + '/' + encode_name(name);
}

QString Registry::key_folder(Hive hive, const QString& key) const
{
    return QFile::decodeName(key_path(hive, key));
}

bool Registry::key_exists(Hive hive, const QString& key) const
{
    return is_directory(key_folder(hive, key));
}

bool Registry::create_key(Hive hive, const QString& key)
{
    const QString folder = key_folder(hive, key);
    QDir().mkpath(folder);
    return is_directory(folder);
}

bool Registry::delete_key(Hive hive, const QString& key)
{
    if (key_levels(key).isEmpty()) {
        return false; // a hive is not a key that can go
    }
    const QString folder = key_folder(hive, key);
    if (is_directory(folder)) {
        QDir(folder).removeRecursively();
    }
    return !path_exists(folder);
}

Registry::ValueText Registry::read_value_text(Hive hive, const QString& key, const QString& name) const
{
    CappedRead read = read_regular_file(value_path(hive, key, name), kMaxValueBytes);
    if (read.outcome != ReadOutcome::Ok) {
        return {read.outcome, read.error, {}};
    }
    if (read.bytes.endsWith('\n')) {
        read.bytes.chop(1);
    }
    return {ReadOutcome::Ok, 0, text_from_bytes(read.bytes)};
}

std::optional<QString> Registry::read_text(Hive hive, const QString& key, const QString& name) const
{
    ValueText value = read_value_text(hive, key, name);
    if (value.outcome != ReadOutcome::Ok) {
        return std::nullopt;
    }
    return std::move(value.text);
}

std::optional<qint64> Registry::read_number(Hive hive, const QString& key, const QString& name) const
{
    const std::optional<QString> text = read_text(hive, key, name);
    return text ? parse_decimal(*text) : std::nullopt;
}

bool Registry::write_text(Hive hive, const QString& key, const QString& name, const QString& value)
{
    if (!key_exists(hive, key)) {
        return false;
    }
    return write_file_atomically(QFile::decodeName(value_path(hive, key, name)), value_bytes(value)).ok;
}

bool Registry::replace_key(Hive hive, const QString& key, const QList<std::pair<QString, QString>>& values)
{
    if (key_levels(key).isEmpty()) {
        return false; // a hive is not a key that can be replaced
    }
    const QByteArray folder = key_path(hive, key);
    const QByteArray parent = folder.left(folder.lastIndexOf('/'));
    QDir().mkpath(QFile::decodeName(parent));
    // Hidden names, which no enumeration takes for a subkey.
    const QByteArray tag = QByteArray::number(QRandomGenerator::global()->generate64(), 16);
    const QByteArray staging = parent + "/.cvdtmp-new-" + tag;
    const QByteArray retired = parent + "/.cvdtmp-old-" + tag;
    if (::mkdir(staging.constData(), 0777) != 0) {
        return false;
    }
    bool written = true;
    for (const auto& [name, value] : values) {
        written = written && write_new_value(staging + '/' + encode_name(name), value_bytes(value));
    }
    const bool had_key = is_directory(QFile::decodeName(folder));
    if (!written || (had_key && ::rename(folder.constData(), retired.constData()) != 0)) {
        QDir(QFile::decodeName(staging)).removeRecursively();
        return false;
    }
    const bool placed = ::rename(staging.constData(), folder.constData()) == 0;
    if (!placed && had_key) {
        ::rename(retired.constData(), folder.constData()); // the old list comes back
    }
    QDir(QFile::decodeName(placed ? retired : staging)).removeRecursively();
    return placed;
}

bool Registry::write_number(Hive hive, const QString& key, const QString& name, qint64 value)
{
    return write_text(hive, key, name, QString::number(value));
}

bool Registry::delete_value(Hive hive, const QString& key, const QString& name)
{
    const FileResult removed = remove_file(QFile::decodeName(value_path(hive, key, name)));
    return removed.ok || removed.error == ENOENT;
}

QStringList Registry::entries(Hive hive, const QString& key, bool folders) const
{
    const QByteArray folder = key_path(hive, key);
    DIR* dir = ::opendir(folder.constData());
    if (!dir) {
        return {};
    }
    QList<std::pair<QByteArray, QString>> found;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray file_name(entry->d_name);
        const std::optional<QString> name = decode_name(file_name);
        struct stat info
        {
        };
        if (!name || ::fstatat(::dirfd(dir), entry->d_name, &info, 0) != 0) {
            continue;
        }
        if (folders && !is_key_level(*name)) {
            continue;
        }
        if (folders ? S_ISDIR(info.st_mode) : S_ISREG(info.st_mode)) {
            found.append({name->toUtf8(), *name});
        }
    }
    ::closedir(dir);
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList names;
    names.reserve(found.size());
    for (const auto& entry : found) {
        names.append(entry.second);
    }
    return names;
}

QString Registry::subkey_at(Hive hive, const QString& key, int index) const
{
    return subkeys(hive, key).value(index);
}

QStringList Registry::subkeys(Hive hive, const QString& key) const
{
    return entries(hive, key, true);
}

QStringList Registry::value_names(Hive hive, const QString& key) const
{
    return entries(hive, key, false);
}

QList<std::pair<QString, QString>> Registry::values(Hive hive, const QString& key) const
{
    QList<std::pair<QString, QString>> result;
    for (const QString& name : value_names(hive, key)) {
        // A value removed between the listing and the read is simply not there any more.
        if (const std::optional<QString> data = read_text(hive, key, name)) {
            result.append({name, *data});
        }
    }
    return result;
}

std::optional<qint64> parse_decimal(const QString& text)
{
    const QString trimmed = text.trimmed();
    qsizetype position = 0;
    bool negative = false;
    if (position < trimmed.size() && (trimmed.at(position) == u'+' || trimmed.at(position) == u'-')) {
        negative = trimmed.at(position) == u'-';
        ++position;
    }
    if (position == trimmed.size()) {
        return std::nullopt;
    }
    // Gathered as a negative number so that the most negative value fits too.
    qint64 value = 0;
    for (; position < trimmed.size(); ++position) {
        const char16_t c = trimmed.at(position).unicode();
        if (c < u'0' || c > u'9') {
            return std::nullopt;
        }
        const int digit = c - u'0';
        if (value < (std::numeric_limits<qint64>::min() + digit) / 10) {
            return std::nullopt;
        }
        value = value * 10 - digit;
    }
    if (!negative) {
        if (value == std::numeric_limits<qint64>::min()) {
            return std::nullopt;
        }
        value = -value;
    }
    return value;
}

std::optional<Hive> parse_hive(const QString& text)
{
    if (text.compare(u"HKLM", Qt::CaseInsensitive) == 0 ||
        text.compare(u"HKEY_LOCAL_MACHINE", Qt::CaseInsensitive) == 0) {
        return Hive::LocalMachine;
    }
    if (text.compare(u"HKCU", Qt::CaseInsensitive) == 0 ||
        text.compare(u"HKEY_CURRENT_USER", Qt::CaseInsensitive) == 0) {
        return Hive::CurrentUser;
    }
    return std::nullopt;
}

} // namespace cvd::platform
