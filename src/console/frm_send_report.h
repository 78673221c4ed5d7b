#pragma once

#include "reports/report_request.h"
#include "reports/send_report.h"

#include <QDialog>
#include <QList>

class QLabel;
class QListWidget;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// Sends a report as the text of one message to a recipient reached by mail or fax.
class frmSendReport : public QDialog
{
    Q_OBJECT

public:
    frmSendReport(ConsoleContext& context, reports::ReportRequest request, QWidget* parent);

private:
    void build_controls();
    void send();

    ConsoleContext& m_context;
    reports::ReportRequest m_request;
    QList<reports::ReportAddressee> m_addressees;
    QLabel* lblRecipient = nullptr;
    QListWidget* lstRecipients = nullptr;
    QPushButton* btnSend = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
