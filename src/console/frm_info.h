#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace cvd::console {

struct ConsoleContext;

// The details of the recipient or group an operator Shift-clicked in a pick list, or, in its filter role, the
// four boxes that narrow the send window's unpicked list. ConsoleState says which role and which entry.
class frmInfo : public QDialog
{
    Q_OBJECT

public:
    frmInfo(ConsoleContext& context, QWidget* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build_controls();
    void show_details();
    void prepare_filter();
    void run_filter();

    ConsoleContext& m_context;
    QLabel* lblFullName = nullptr;
    QLineEdit* txtFullName = nullptr;
    QLabel* lblShortName = nullptr;
    QLineEdit* txtShortName = nullptr;
    QLabel* lblComment1 = nullptr;
    QLineEdit* txtExtra1 = nullptr;
    QLabel* lblComment2 = nullptr;
    QLineEdit* txtExtra2 = nullptr;
    QPushButton* btnGroupMembers = nullptr;
    QPushButton* btnClose = nullptr;
};

} // namespace cvd::console
