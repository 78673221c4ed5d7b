#include "reports/send_report.h"

#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path.h"
#include "core/text.h"
#include "queue/enqueue.h"
#include "store/database.h"
#include "store/tables.h"

#include <QStringBuilder>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace recipients = store::tables::recipients;
namespace carriers = store::tables::carriers;

QList<ReportAddressee> report_addressees(store::Database& db)
{
    store::Statement statement =
        db.prepare(u"SELECT r."_s % recipients::name % u", r."_s % recipients::full_name % u", r."_s %
                   recipients::carrier % u", r."_s % recipients::maxchars % u" FROM "_s % recipients::table %
                   u" r JOIN "_s % carriers::table % u" c ON c."_s % carriers::name % u" = r."_s % recipients::carrier %
                   u" WHERE COALESCE(r."_s % recipients::group % u", 0) = 0 AND (substr(c."_s % carriers::dial_type %
                   u", 1, 3) IN (?1, ?2, ?3)) ORDER BY r."_s % recipients::full_name);
    statement.bind(1, u"eml"_s).bind(2, u"fax"_s).bind(3, u"fxs"_s);
    QList<ReportAddressee> addressees;
    while (statement.step()) {
        addressees.append(ReportAddressee{statement.text(0).value_or(QString()), statement.text(1).value_or(QString()),
                                          statement.text(2).value_or(QString()), statement.integer(3).value_or(0)});
    }
    return addressees;
}

SentReport queue_report(AppState& state, const ReportAddressee& addressee, const QString& text)
{
    SentReport sent;
    QString body = text;
    if (addressee.maxchars > 0 && body.size() > addressee.maxchars) {
        body = cut_to(body, addressee.maxchars);
        sent.cut = true;
    }
    sent.characters = body.size();
    state.clear_error_counters();
    const qint32 retry_interval =
        with_retry(state, u"Procedure: frmSendReport send"_s, [&] { return queue::retry_interval_seconds(state); });
    // As SEND leaves it: no carrier and no sender; the scheduler settles carrier and pin.
    const queue::NewMessage row{addressee.name, body, {}, {}};
    sent.message_id = with_retry(state, u"Procedure: frmSendReport send"_s, [&] {
        store::Transaction commit(state.global_db);
        const qint64 id = queue::insert_waiting_message(state.global_db, state.clock.now(), row, retry_interval);
        commit.commit();
        return id;
    });
    QString text_of_box = QString::number(sent.characters) + u" characters of the report were queued for "_s +
                          (addressee.full_name.isEmpty() ? addressee.name : addressee.full_name) + u'.';
    if (sent.cut) {
        text_of_box += u" The report was cut to the recipient's limit of "_s + QString::number(addressee.maxchars) +
                       u" characters."_s;
    } else {
        text_of_box += u" The whole report went."_s;
    }
    sent.notice = Notice{text_of_box, u"Report Sent"_s, BoxIcon::Information};
    return sent;
}

} // namespace cvd::reports
