#pragma once

#include "console/console_context.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace cvd::console {

// "General Setup": the sender, spell check, the engine's log settings and the purge age. Apply stores them and
// saves the settings; the window stays open. Ctrl+Alt+S opens the raw settings window.
class setup_form : public QDialog
{
    Q_OBJECT

public:
    setup_form(ConsoleContext& context, QWidget* parent);

    // False from load on, true once Apply has stored the settings.
    bool applied() const { return m_applied; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fill_boxes();
    void on_apply();

    ConsoleContext& m_context;
    bool m_applied = false;
    QLineEdit* fsender;
    QLineEdit* fSenderEmail;
    QCheckBox* fspell;
    QLineEdit* fLogLength;
    QCheckBox* fArchiveLogs;
    QComboBox* cmbLogLevel;
    QLineEdit* fpurge;
    QPushButton* apply;
    QPushButton* bye;
};

} // namespace cvd::console
