#include "intake/integration_client.h"

#include "intake/local_channel.h"
#include "intake/registry_transfer.h"
#include "platform/datagram.h"
#include "platform/runtime.h"

#include <QThread>
#include <utility>

using namespace Qt::StringLiterals;

namespace cvd::intake {

namespace {

constexpr auto kHive = platform::Hive::LocalMachine;

} // namespace

IntegrationClient::IntegrationClient(platform::Registry registry, QString runtime_dir)
    : m_registry(std::move(registry)), m_runtime_dir(std::move(runtime_dir))
{
}

bool IntegrationClient::program_runs() const
{
    return platform::program_is_running(m_runtime_dir);
}

QString IntegrationClient::channel_path() const
{
    const std::optional<QString> published = m_registry.read_text(kHive, transfer_key(), u"Socket"_s);
    if (published && !published->isEmpty()) {
        return *published;
    }
    return m_runtime_dir + u'/' + QLatin1StringView(platform::kSocketName);
}

qint64 IntegrationClient::program_pid() const
{
    return m_registry.read_number(kHive, transfer_key(), u"Handle"_s).value_or(0);
}

std::optional<QString> IntegrationClient::refusal(quint32 kind, const QString& text)
{
    if (kind != kActivityKind && kind != kStatusKind) {
        return u"the kind is 2 (activity line) or 3 (status text)"_s;
    }
    const qsizetype bytes = text.toUtf8().size();
    if (bytes >= platform::kDatagramTextBuffer) {
        return u"the text is %1 bytes in UTF-8; the channel carries less than %2"_s.arg(bytes).arg(
            platform::kDatagramTextBuffer);
    }
    if (text.contains(QChar::Null)) {
        return u"the text holds a NUL character, where the program would cut it"_s;
    }
    // Asked of the receiving side itself, so that its reading of a message line is stated in one place.
    LocalChannel receiver;
    LocalChannel::Changes changes;
    receiver.note({kind, text}, &changes);
    if (changes.messages_noted > 0) {
        return u"a status text that starts with \""_s + kSendPagePrefix.toString() +
               u"\" would be read as a message line; use cvdctl send, which commits it"_s;
    }
    return std::nullopt;
}

bool IntegrationClient::notify(quint32 kind, const QString& text, QString* error) const
{
    if (const std::optional<QString> refused = refusal(kind, text)) {
        *error = *refused;
        return false;
    }
    if (!program_runs()) {
        *error = u"Corvane Desk is not running"_s;
        return false;
    }
    constexpr int kTries = 50;
    for (int attempt = 1;; ++attempt) {
        if (platform::send_datagram(channel_path(), kind, text, error)) {
            return true;
        }
        if (attempt == kTries || !program_runs()) {
            return false;
        }
        QThread::msleep(100);
    }
}

bool IntegrationClient::request_stop()
{
    return m_registry.create_key(kHive, transfer_key()) && m_registry.write_number(kHive, transfer_key(), u"Stop"_s, 1);
}

bool IntegrationClient::has_stopped() const
{
    return m_registry.read_number(kHive, transfer_key(), u"Running"_s).value_or(0) == 0;
}

} // namespace cvd::intake
