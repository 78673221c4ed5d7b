#pragma once

#include "console/console_context.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace cvd::console {

// "Connection Settings": the modem port, dialing prefix and retries the engine uses, and the endpoints the
// port scan tries. Apply stores them and saves the settings; the window stays open.
class modem_setup : public QDialog
{
    Q_OBJECT

public:
    modem_setup(ConsoleContext& context, QWidget* parent);

private:
    void fill_boxes();
    void on_apply();

    ConsoleContext& m_context;
    QComboBox* lstPort;
    QLineEdit* fPrefix;
    QLineEdit* fRetries;
    QLineEdit* fInterval;
    QLineEdit* txtScanSmtpHost;
    QLineEdit* txtScanWctpHost;
    QLineEdit* txtScanSnppHost;
    QPushButton* apply;
    QPushButton* bye;
};

} // namespace cvd::console
