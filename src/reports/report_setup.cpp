#include "reports/report_setup.h"

#include "core/app_state.h"
#include "core/error_path.h"
#include "reports/page_painter.h"
#include "store/database.h"
#include "store/tables.h"

#include <QSaveFile>
#include <QStringBuilder>

using namespace Qt::StringLiterals;

namespace cvd::reports {

namespace recipients = store::tables::recipients;
namespace carriers = store::tables::carriers;

ReportsSetup reports_setup(int type)
{
    ReportsSetup setup;
    const int family = type / 10;
    const int by = type % 10;
    static const QString families[] = {u"Sent Messages"_s, u"Scheduled Messages"_s, u"Statistics"_s};
    static const QString bys[] = {u"by Recipient"_s, u"by Date/Time"_s, u"by Carrier"_s};
    setup.caption = families[std::clamp(family, 0, 2)] + u" - "_s + bys[std::clamp(by - 1, 0, 2)];
    setup.carriers = by == 3;
    setup.list_caption = by == 2 ? QString() : (setup.carriers ? u" Carrier(s)"_s : u"Recipient(s)"_s);
    setup.send = by == 2;
    setup.zero = by != 2;
    static const QString routines[3][3] = {
        {u"ShowRecipients"_s, u"ShowByDate"_s, u"ShowByCarrier"_s},
        // The scheduled reports by recipient and by date have always reported their failures under ShowRecipients.
        {u"ShowRecipients"_s, u"ShowRecipients"_s, u"ShowScheduledByCarrier"_s},
        {u"ShowStatisticsByRecipient"_s, u"ShowStatisticsByDate"_s, u"ShowStatisticsByCarrier"_s}};
    setup.routine = routines[std::clamp(family, 0, 2)][std::clamp(by - 1, 0, 2)];
    if (family == 1) {
        // Scheduled rows have no range and no outcome yet.
        setup.dates = false;
        setup.which = false;
    } else if (family == 2) {
        // One block of figures: no depth, no entries to count at zero or to break pages on.
        setup.depth = false;
        setup.zero = false;
        setup.page_breaks = false;
    }
    return setup;
}

ListSetup list_setup(int type)
{
    if (type == CarrierList) {
        return {u"ShowCarriers"_s, u"Carrier List"_s, u"  Carrier(s)"_s, u"Recipients"_s};
    }
    if (type == GroupList) {
        return {u"ShowGroups"_s, u"Group List"_s, u"  Group(s)"_s, u"Members"_s};
    }
    return {u"ShowList"_s, u"Recipient List"_s, u"Recipient(s)"_s, {}};
}

QStringList report_list_rows(store::Database& db, bool carriers_list)
{
    QStringList rows;
    if (carriers_list) {
        store::Statement statement = db.prepare(u"SELECT "_s % carriers::name % u" FROM "_s % carriers::table %
                                                u" ORDER BY "_s % carriers::name);
        while (statement.step()) {
            rows.append(statement.text(0).value_or(QString()));
        }
        return rows;
    }
    store::Statement statement = db.prepare(
        u"SELECT "_s %
        store::tables::column_list({recipients::name, recipients::full_name, recipients::group, recipients::ad_hoc}) %
        u" FROM "_s % recipients::table % u" ORDER BY "_s % recipients::full_name);
    while (statement.step()) {
        const QString full_name = statement.text(1).value_or(QString());
        if (statement.flag(2)) {
            rows.append(u"(G) "_s + full_name);
        } else if (statement.flag(3)) {
            rows.append(u"(A) "_s + full_name);
        } else {
            rows.append(full_name);
        }
    }
    return rows;
}

QStringList directory_list_rows(store::Database& db, int type)
{
    if (type == CarrierList) {
        return report_list_rows(db, true);
    }
    store::Statement statement =
        db.prepare(u"SELECT "_s % recipients::full_name % u" FROM "_s % recipients::table % u" WHERE COALESCE("_s %
                   recipients::group % u", 0) "_s % (type == GroupList ? u"<> 0"_s : u"= 0"_s) % u" ORDER BY "_s %
                   recipients::full_name);
    QStringList rows;
    while (statement.step()) {
        rows.append(statement.text(0).value_or(QString()));
    }
    return rows;
}

DateRange default_range(const QDateTime& now)
{
    return DateRange{QDateTime(now.date(), QTime(0, 0)), now};
}

std::optional<Notice> apply_refusal(int type, bool any_selected, bool to_file, const QString& file_name)
{
    const QString title = u"Can't Generate Report"_s;
    if (type == SentByRecipient && !any_selected) {
        return Notice{u"No recipients were selected"_s, title};
    }
    if (type == SentByCarrier && !any_selected) {
        return Notice{u"No carriers were selected"_s, title};
    }
    if (to_file && file_name.trimmed().isEmpty()) {
        return Notice{u"No file name was specified"_s, title};
    }
    return std::nullopt;
}

QString routine_name(int type)
{
    switch (type) {
    case SentByDate:
        return u"SentByDateReport"_s;
    case SentByCarrier:
        return u"SentByCarrierReport"_s;
    case ScheduledByRecipient:
        return u"ScheduledByRecipientReport"_s;
    case ScheduledByDate:
        return u"ScheduledByDateReport"_s;
    case ScheduledByCarrier:
        return u"ScheduledByCarrierReport"_s;
    // The two misspelt names are the ones the error path has always shown.
    case StatisticsByRecipient:
        return u"StaticticsByRecipientReport"_s;
    case StatisticsByDate:
        return u"StaticticsByDateReport"_s;
    case StatisticsByCarrier:
        return u"StatisticsByCarrierReport"_s;
    case RecipientList:
        return u"RecipientListReport"_s;
    case GroupList:
        return u"GroupListReport"_s;
    case CarrierList:
        return u"CarrierListReport"_s;
    default:
        return u"SentByRecipientReport"_s;
    }
}

ReportResult run_report(AppState& state, const ReportRequest& request)
{
    state.clear_error_counters();
    return with_retry(state, u"Procedure: frmPP "_s + routine_name(request.type),
                      [&] { return build_report(state.global_db, request); });
}

bool is_pdf_name(const QString& path)
{
    return path.trimmed().endsWith(u".pdf"_s, Qt::CaseInsensitive);
}

Notice save_report(AppState& state, const ReportRequest& request, const QString& path)
{
    const QString file = path.trimmed();
    ReportRequest form = request;
    const bool pdf = is_pdf_name(file);
    form.to_file = !pdf;
    const ReportResult result = run_report(state, form);
    bool written = false;
    if (pdf) {
        written = write_pdf(result.document, file, result.title);
    } else {
        QSaveFile out(file);
        written = out.open(QIODevice::WriteOnly) && out.write(result.file_text.toUtf8()) >= 0 && out.commit();
    }
    if (!written) {
        return Notice{u"The file "_s + file + u" could not be written"_s, u"Can't Generate Report"_s, BoxIcon::Warning};
    }
    return Notice{u"The file has been written"_s, u"File Saved"_s};
}

} // namespace cvd::reports
