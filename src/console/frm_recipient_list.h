#pragma once

#include "reports/report_request.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;

namespace cvd::console {

struct ConsoleContext;

// The choice of an address-book list (report types 31 to 33) and where it goes.
class frmRecipientList : public QDialog
{
    Q_OBJECT

public:
    frmRecipientList(ConsoleContext& context, QWidget* parent);

    reports::ReportRequest report_request() const;

private:
    void build_controls();
    void set_up();
    void output_changed();
    void apply();

    ConsoleContext& m_context;
    int m_type = 0;
    QLabel* lblRecipient = nullptr;
    QListWidget* lstRecipients = nullptr;
    QRadioButton* optSummary = nullptr;
    QRadioButton* optDetail = nullptr;
    QCheckBox* chkRecipients = nullptr;
    QRadioButton* optPrint = nullptr;
    QCheckBox* chkPreview = nullptr;
    QRadioButton* optSave = nullptr;
    QLineEdit* txtSaveTo = nullptr;
    QPushButton* btnBrowse = nullptr;
    QPushButton* btnPrint = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
