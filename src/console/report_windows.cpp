#include "console/report_windows.h"

#include "console/console_context.h"
#include "console/frm_recipient_list.h"
#include "console/frm_reports.h"
#include "console/frm_send_report.h"
#include "console/modal_window.h"
#include "reports/report_request.h"

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// Types below 31 choose in frmReports, the lists in frmRecipientList; both are modal over the caller.
void open_report(ConsoleContext& context, QWidget* caller, int type)
{
    context.shared.report_type = type;
    QWidget* parent = dialog_owner(context, caller);
    if (type >= reports::RecipientList) {
        frmRecipientList window(context, parent);
        window.exec();
    } else {
        frmReports window(context, parent);
        window.exec();
    }
}

} // namespace

void register_report_windows(ConsoleContext& context)
{
    const std::pair<const char16_t*, int> entries[] = {
        {u"rptSentRecipient", reports::SentByRecipient},
        {u"rptSentDate", reports::SentByDate},
        {u"rptSentCarrier", reports::SentByCarrier},
        {u"mnuScheduledRecipient", reports::ScheduledByRecipient},
        {u"rptScheduledDate", reports::ScheduledByDate},
        {u"rptScheduledCarrier", reports::ScheduledByCarrier},
        {u"mnuStatisticsRecipient", reports::StatisticsByRecipient},
        {u"mnuStatisticsDate", reports::StatisticsByDate},
        {u"mnuStatisticsCarrier", reports::StatisticsByCarrier},
        {u"mnuListRecipients", reports::RecipientList},
        {u"mnuListGroups", reports::GroupList},
        {u"mnuListCarriers", reports::CarrierList},
    };
    for (const auto& entry : entries) {
        const int type = entry.second;
        context.catalog.add(QString::fromUtf16(entry.first),
                            [&context, type](QWidget* caller) { open_report(context, caller, type); });
    }
    // Reached from frmReports' send option: the report its controls describe goes to one recipient.
    context.catalog.add(u"frmSendReport"_s, [&context](QWidget* caller) {
        auto* reports_window = qobject_cast<frmReports*>(caller);
        if (reports_window == nullptr) {
            return;
        }
        frmSendReport window(context, reports_window->report_request(), reports_window);
        window.exec();
    });
}

} // namespace cvd::console
