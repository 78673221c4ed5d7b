#include "intake/registry_transfer.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "core/text.h"
#include "platform/files.h"
#include "queue/enqueue.h"
#include "store/database.h"
#include "store/tables.h"
#include "store/unique.h"

#include <QCoreApplication>
#include <QSet>
#include <QThreadPool>
#include <cstdio>
#include <mutex>
#include <optional>

using namespace Qt::StringLiterals;

namespace cvd::intake {

namespace {

constexpr platform::Hive kHive = platform::Hive::LocalMachine;

QString runtime_file(const QString& runtime_dir, const char* name)
{
    QString folder = runtime_dir;
    if (!folder.endsWith(u'/')) {
        folder += u'/';
    }
    return folder + QLatin1StringView(name);
}

// One list is written at a time, whether by the program's thread or by the publishing worker.
std::mutex& publishing_mutex()
{
    static std::mutex mutex;
    return mutex;
}

// Brings one list key to a numeric 0 value per name the query gives. A list that changed in a few names
// (the usual start, or one recipient added) gets just those names written or deleted: a start over ten
// thousand recipients writes no file. A list that changed in most of its names (an import) is written anew
// beside the key and put in place at once, in half the file operations, so that other programs never read
// half a list. Only this program writes these values, so one whose name is there already is kept as it is.
// Every failure is passed over: the list is left with the names read until then.
void publish_names(store::Database& db, platform::Registry& registry, const QString& key, const QString& sql)
{
    const std::lock_guard lock(publishing_mutex());
    QSet<QString> wanted;
    QStringList in_order;
    try {
        store::Statement select = db.prepare(sql);
        while (select.step()) {
            const QString name = select.text(0).value_or(QString());
            if (!wanted.contains(name)) {
                wanted.insert(name);
                in_order.append(name);
            }
        }
    } catch (const store::Error&) {
        // The lists are a courtesy to other programs: a failure leaves them short and nothing more.
    }
    const QStringList present = registry.value_names(kHive, key);
    const QSet<QString> already(present.cbegin(), present.cend());
    QStringList gone;
    QStringList added;
    for (const QString& name : present) {
        if (!wanted.contains(name)) {
            gone.append(name);
        }
    }
    for (const QString& name : std::as_const(in_order)) {
        if (!already.contains(name)) {
            added.append(name);
        }
    }
    if (!registry.key_exists(kHive, key) || 2 * (gone.size() + added.size()) > in_order.size()) {
        QList<std::pair<QString, QString>> values;
        values.reserve(in_order.size());
        for (const QString& name : std::as_const(in_order)) {
            values.append({name, u"0"_s});
        }
        registry.replace_key(kHive, key, values);
        return;
    }
    for (const QString& name : std::as_const(gone)) {
        registry.delete_value(kHive, key, name);
    }
    for (const QString& name : std::as_const(added)) {
        registry.write_number(kHive, key, name, 0);
    }
}

QString recipient_names_sql()
{
    namespace recipients = store::tables::recipients;
    return u"SELECT " % recipients::name % u" FROM " % recipients::table % u" WHERE " %
           store::tables::is_false(recipients::group);
}

QString group_names_sql()
{
    namespace recipients = store::tables::recipients;
    return u"SELECT " % recipients::name % u" FROM " % recipients::table % u" WHERE " %
           store::tables::is_true(recipients::group);
}

// The worker of publish_lists_later: one thread, so publications keep the order they were asked in.
QThreadPool& publishing_worker()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    return pool;
}

// One subkey of `Messages` as the other program left it.
struct TransferMessage
{
    QString recipient;
    QString sender;
    QString message;
};

QString why_unreadable(const platform::Registry::ValueText& value)
{
    switch (value.outcome) {
    case platform::ReadOutcome::NotRegular:
        return u"not a regular file"_s;
    case platform::ReadOutcome::TooLarge:
        return u"larger than %1 bytes"_s.arg(platform::Registry::kMaxValueBytes);
    default:
        return platform::error_text(value.error);
    }
}

// A value of a message subkey; nullopt when it is missing. A value that is there but cannot be read (not a
// regular file, too large, unreadable) is named on stderr, and *refused is set: the subkey is passed over.
std::optional<QString> read_field(AppState& state, const QString& subkey, const QString& name, bool* refused)
{
    const platform::Registry::ValueText value = state.registry.read_value_text(kHive, subkey, name);
    if (value.outcome == platform::ReadOutcome::Ok) {
        return value.text;
    }
    if (value.outcome != platform::ReadOutcome::Missing) {
        std::fprintf(stderr, "cvd: registry value %s\\%s passed over: %s\n", qUtf8Printable(subkey),
                     qUtf8Printable(name), qUtf8Printable(why_unreadable(value)));
        *refused = true;
    }
    return std::nullopt;
}

// The message of a subkey, or nullopt when one of its values cannot be read.
std::optional<TransferMessage> read_transfer_message(AppState& state, const QString& subkey)
{
    bool refused = false;
    const auto text = [&](const QString& name) {
        return refused ? QString() : trim_blanks(read_field(state, subkey, name, &refused).value_or(QString()));
    };
    TransferMessage message{text(u"To"_s).toLower(), text(u"From"_s), text(u"Message"_s)};
    if (refused) {
        return std::nullopt;
    }
    return message;
}

// Whether the writer has marked the subkey complete with a `Ready` of 1.
bool is_ready(AppState& state, const QString& subkey)
{
    bool refused = false;
    const std::optional<QString> ready = read_field(state, subkey, u"Ready"_s, &refused);
    return ready && platform::parse_decimal(*ready) == 1;
}

} // namespace

QString transfer_key()
{
    return u"SOFTWARE\\Halvern\\Transfer"_s;
}

QString messages_key()
{
    return transfer_key() + u"\\Messages"_s;
}

QString recipients_key()
{
    return transfer_key() + u"\\Recipients"_s;
}

QString groups_key()
{
    return transfer_key() + u"\\Groups"_s;
}

void UpdateIntegrationSettings(AppState& state, IntegrationState& integration)
{
    // The store's own calls report failure by their result; where the user may not write the machine store
    // the values are simply missing, as they always have been.
    platform::Registry& registry = state.registry;
    for (const QString& key : {transfer_key(), messages_key(), recipients_key(), groups_key()}) {
        registry.create_key(kHive, key);
    }
    const QString key = transfer_key();
    registry.write_text(kHive, key, u"PollingDirectory"_s, state.global_db_folder);
    registry.write_text(kHive, key, u"StartCommand"_s, state.program_folder + u"cvd /minimized"_s);
    registry.write_text(kHive, key, u"SendCommand"_s, state.program_folder + u"cvd"_s);
    registry.write_text(kHive, key, u"DBDir"_s, state.global_db_folder);
    registry.write_number(kHive, key, u"Handle"_s, QCoreApplication::applicationPid());
    registry.write_text(kHive, key, u"Socket"_s, integration.socket_path);
    registry.write_number(kHive, key, u"Stop"_s, 0);
}

void UpdateIntegrationRunning(AppState& state, IntegrationState& integration, int value)
{
    state.registry.create_key(kHive, transfer_key());
    state.registry.write_number(kHive, transfer_key(), u"Running"_s, value);
    if (value == 1) {
        if (!integration.marker_held()) {
            integration.running_marker = platform::FileLock::try_lock(
                runtime_file(state.runtime_dir, platform::kRunningMarkerName), platform::FileLock::Mode::Shared);
        }
    } else {
        integration.running_marker.reset();
    }
}

bool IntegrationStopRequest(AppState& state)
{
    return state.registry.read_number(kHive, transfer_key(), u"Stop"_s) == 1;
}

void publish_recipients(AppState& state)
{
    publish_names(state.global_db, state.registry, recipients_key(), recipient_names_sql());
}

void publish_groups(AppState& state)
{
    publish_names(state.global_db, state.registry, groups_key(), group_names_sql());
}

void publish_lists_later(AppState& state)
{
    publishing_worker().start([path = global_db_path(state), registry = state.registry]() mutable {
        try {
            store::Database db = store::Database::open(path);
            publish_names(db, registry, recipients_key(), recipient_names_sql());
            publish_names(db, registry, groups_key(), group_names_sql());
        } catch (const store::Error&) {
            // A database that cannot be opened leaves the lists as they were; they are a courtesy.
        }
    });
}

void wait_for_publishing()
{
    publishing_worker().waitForDone();
}

void check_registry(AppState& state)
{
    const QString procedure = u"Procedure: check_registry"_s;
    state.clear_error_counters();
    for (int index = 0;; ++index) {
        const QStringList names = state.registry.subkeys(kHive, messages_key());
        if (index >= names.size()) {
            return;
        }
        const QString subkey = messages_key() + u'\\' + names.at(index);
        if (!is_ready(state, subkey)) {
            continue; // the writer has not finished
        }
        state.registry.write_number(kHive, subkey, u"Status"_s, 1);
        const std::optional<TransferMessage> read = read_transfer_message(state, subkey);
        if (!read) {
            continue; // stays, and is named again at each tick until someone sees to it
        }
        const TransferMessage& entry = *read;
        if (entry.recipient.isEmpty() || entry.message.isEmpty()) {
            continue; // stays, and is read again at each tick; a sender may be empty
        }
        // An unknown recipient's subkey goes too, without a word to anybody.
        queue::enqueue_for_known_recipient(state, procedure, entry.recipient, entry.sender, entry.message);
        state.registry.delete_key(kHive, subkey);
        // The index moves on past a deleted subkey as well, so the next one is left for the next tick. Kept on
        // purpose: other programs are used to at most every second ready message being taken per tick.
    }
}

} // namespace cvd::intake
