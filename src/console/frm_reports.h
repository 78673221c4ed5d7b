#pragma once

#include "reports/report_request.h"

#include <QDialog>

class QCheckBox;
class QDateEdit;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTimeEdit;

namespace cvd::console {

struct ConsoleContext;

// The choice of what a message or statistics report covers and where it goes, for report types 1 to 23.
class frmReports : public QDialog
{
    Q_OBJECT

public:
    frmReports(ConsoleContext& context, QWidget* parent);

    // The report as the controls now describe it.
    reports::ReportRequest report_request() const;

private:
    void build_controls();
    void lay_out_controls();
    void set_up();
    void MoveControls();
    void output_changed();
    void browse();
    void apply();

    ConsoleContext& m_context;
    int m_type = 0;
    QLabel* lblRecipient = nullptr;
    QListWidget* lstRecipients = nullptr;
    QGroupBox* fraDates = nullptr;
    QLabel* lblStartDate = nullptr;
    QDateEdit* dtpStartDate = nullptr;
    QTimeEdit* dtpStartTime = nullptr;
    QLabel* lblEndDate = nullptr;
    QDateEdit* dtpEndDate = nullptr;
    QTimeEdit* dtpEndTime = nullptr;
    QGroupBox* fraDepth = nullptr;
    QRadioButton* optSummary = nullptr;
    QRadioButton* optDetail = nullptr;
    QRadioButton* optTotals = nullptr;
    QGroupBox* fraWhich = nullptr;
    QRadioButton* optAll = nullptr;
    QRadioButton* optBad = nullptr;
    QRadioButton* optGood = nullptr;
    QCheckBox* chkZero = nullptr;
    QCheckBox* chkPageBreaks = nullptr;
    QGroupBox* fraOutput = nullptr;
    QRadioButton* optPrint = nullptr;
    QCheckBox* chkPreview = nullptr;
    QRadioButton* optSave = nullptr;
    QLineEdit* txtSaveTo = nullptr;
    QPushButton* btnBrowse = nullptr;
    QRadioButton* optSend = nullptr;
    QPushButton* btnPrint = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
