#include "console/modem_setup.h"

#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "console/setup_boxes.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "desk/setup_rules.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

modem_setup::modem_setup(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(u"modem_setup"_s);
    setWindowTitle(u"Connection Settings"_s);
    lstPort = make_control<QComboBox>(this, "lstPort");
    for (int port = 0; port < desk::kModemPortCount; ++port) {
        lstPort->addItem(QString::number(port));
    }
    lstPort->setMaxVisibleItems(desk::kModemPortCount);
    fPrefix = make_control<QLineEdit>(this, "fPrefix");
    fRetries = make_control<QLineEdit>(this, "fRetries");
    fInterval = make_control<QLineEdit>(this, "fInterval");
    txtScanSmtpHost = make_control<QLineEdit>(this, "txtScanSmtpHost");
    txtScanWctpHost = make_control<QLineEdit>(this, "txtScanWctpHost");
    txtScanSnppHost = make_control<QLineEdit>(this, "txtScanSnppHost");
    for (QLineEdit* host : {txtScanSmtpHost, txtScanWctpHost, txtScanSnppHost}) {
        host->setPlaceholderText(u"host or host:port"_s);
    }
    apply = make_control<QPushButton>(this, "apply", u"Apply"_s);
    bye = make_control<QPushButton>(this, "bye", u"Close"_s);
    cut_when_left(fPrefix, desk::kDialPrefixLength, false);
    clamp_when_left(fRetries, desk::kRetriesRange);
    clamp_when_left(fInterval, desk::kRetryIntervalRange);
    connect(apply, &QPushButton::clicked, this, &modem_setup::on_apply);
    connect(bye, &QPushButton::clicked, this, &QDialog::reject);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblPort", u"Modem Port"_s, lstPort);
    add_labelled_row(*form, this, "lblPrefix", u"Dialing Prefix"_s, fPrefix);
    add_labelled_row(*form, this, "lblRetries", u"Retries"_s, fRetries);
    add_labelled_row(*form, this, "lblInterval", u"Retry Interval"_s, fInterval);
    const int digit = fontMetrics().averageCharWidth();
    for (QLineEdit* number : {fRetries, fInterval}) {
        number->setMaximumWidth(digit * 8);
    }
    auto* fraScan = make_control<QGroupBox>(this, "fraScan", u"Port scan endpoints"_s);
    auto* scan_form = new QFormLayout(fraScan);
    add_labelled_row(*scan_form, fraScan, "lblScanSmtpHost", u"SMTP"_s, txtScanSmtpHost);
    add_labelled_row(*scan_form, fraScan, "lblScanWctpHost", u"WCTP"_s, txtScanWctpHost);
    add_labelled_row(*scan_form, fraScan, "lblScanSnppHost", u"SNPP"_s, txtScanSnppHost);

    auto* buttons = button_row({apply, bye});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(fraScan);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
    setMinimumWidth(digit * 52);
    settle_over_parent(*this, parent);
    fill_boxes();
}

void modem_setup::fill_boxes()
{
    const desk::ModemSetup values = desk::read_modem_setup(m_context.state.settings);
    lstPort->setCurrentIndex(values.port);
    fPrefix->setText(values.dial_prefix);
    fRetries->setText(values.retries);
    fInterval->setText(values.retry_interval);
    txtScanSmtpHost->setText(values.scan_smtp_host);
    txtScanWctpHost->setText(values.scan_wctp_host);
    txtScanSnppHost->setText(values.scan_snpp_host);
}

void modem_setup::on_apply()
{
    const desk::ModemSetup values{lstPort->currentIndex(), fPrefix->text(),         fRetries->text(),
                                  fInterval->text(),       txtScanSmtpHost->text(), txtScanWctpHost->text(),
                                  txtScanSnppHost->text()};
    if (const std::optional<Notice> refusal = desk::modem_setup_refusal(values)) {
        m_context.state.prompter.show_box(*refusal);
        return;
    }
    BusyLock lock(*this);
    desk::store_modem_setup(m_context.state.settings, values);
    save_settings(m_context.state);
    fill_boxes();
}

} // namespace cvd::console
