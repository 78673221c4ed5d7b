#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// Tells the operator that messages have failed. However it is closed, the counters are brought up to date at
// once, with the counters' own warning held back, so a failure that came in meanwhile does not warn twice.
class frmFailureWarning : public QDialog
{
    Q_OBJECT

public:
    frmFailureWarning(ConsoleContext& context, QWidget* parent);

private:
    QLabel* Label1 = nullptr;
    QLabel* Label2 = nullptr;
    QPushButton* btnOK = nullptr;
};

} // namespace cvd::console
