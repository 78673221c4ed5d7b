// The rows the message reports read: their times are the local times stored, across the clocks' changes too.
#include "reports/message_rows.h"
#include "support/database_test.h"

#include <ctime>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::testing {
namespace {

// Runs the test in a zone whose clocks change, and puts the zone back afterwards.
class ZoneChange
{
public:
    ZoneChange() : m_had(qEnvironmentVariableIsSet("TZ")), m_old(qgetenv("TZ"))
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }
    ~ZoneChange()
    {
        if (m_had) {
            qputenv("TZ", m_old);
        } else {
            qunsetenv("TZ");
        }
        tzset();
    }
    ZoneChange(const ZoneChange&) = delete;
    ZoneChange& operator=(const ZoneChange&) = delete;

private:
    bool m_had;
    QByteArray m_old;
};

class MessageRows : public DatabaseTest
{
};

TEST_F(MessageRows, TimesAreTheStoredLocalTimesAcrossTheClocksChanges)
{
    const ZoneChange zone;
    // Requested and sent, as stored: hours before, inside and after the spring and autumn changes.
    const QList<std::pair<QString, QString>> stored{
        {u"2026-03-29 01:59:30"_s, u"2026-03-29 03:00:10"_s}, {u"2026-03-29 03:10:00"_s, u"2026-03-29 03:59:59"_s},
        {u"2026-10-25 01:30:00"_s, u"2026-10-25 02:30:00"_s}, {u"2026-10-25 02:40:00"_s, u"2026-10-25 03:05:00"_s},
        {u"2026-10-25 03:06:00"_s, u"2026-10-25 04:00:00"_s}, {u"2026-11-02 10:00:00"_s, u"2026-11-02 10:00:43"_s},
    };
    store::Statement insert = db().prepare(
        u"INSERT INTO cv_messages (cv_recipient, cv_carrier, cv_message, cv_date_time_requested, cv_date_time_sent, "
        "cv_sent, cv_scheduled, cv_error, cv_repeat_interval) VALUES ('zed', 'TapNet', 'm', ?1, ?2, -1, -1, 0, 0)"_s);
    for (const auto& [requested, sent] : stored) {
        insert.reset();
        insert.bind(1, requested).bind(2, sent);
        insert.exec();
    }
    const auto local = [](const QString& text) { return QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s); };
    reports::MessageFilter filter;
    filter.start = local(u"2026-01-01 00:00:00"_s);
    filter.end = local(u"2026-12-31 00:00:00"_s);
    qsizetype seen = 0;
    reports::for_each_message(db(), filter, [&](const reports::MessageRow& row) {
        const auto& [requested, sent] = stored[seen++];
        EXPECT_EQ(row.requested.date(), local(requested).date()) << requested.toStdString();
        EXPECT_EQ(row.requested.time(), local(requested).time()) << requested.toStdString();
        EXPECT_EQ(row.sent.time(), local(sent).time()) << sent.toStdString();
        EXPECT_EQ(row.requested.secsTo(row.sent), local(requested).secsTo(local(sent))) << sent.toStdString();
    });
    EXPECT_EQ(seen, stored.size());
}

} // namespace
} // namespace cvd::testing
