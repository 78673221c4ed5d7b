#pragma once

#include "console/text_exchange_form.h"

#include <QPointer>

class QCheckBox;
class QElapsedTimer;
class QProgressDialog;

namespace cvd::console {

// Reads a text file of one kind of address data into the tables. A run that lasts shows its progress with a
// Cancel, and a cancelled run leaves nothing.
class frmImportText : public TextExchangeForm
{
public:
    frmImportText(ConsoleContext& context, QWidget* parent);

    // How long a run goes before its progress shows; tests shorten it.
    void set_progress_delay(int milliseconds) { m_progress_delay = milliseconds; }

    // Escape and the window's close button wait while a run holds the database.
    void reject() override;

private:
    std::optional<QString> choose_file(const FileChoice& choice) override;
    void on_apply() override;
    // The import's progress hook: shows the progress once the run has lasted, keeps the window painted and
    // its Cancel alive; false once Cancel was pressed.
    bool report_progress(const QElapsedTimer& running, qsizetype done, qsizetype total);

    QCheckBox* fOverwrite;
    QPointer<QProgressDialog> m_progress;
    int m_progress_delay = exchange::kProgressDelayMs;
    bool m_running = false;
};

} // namespace cvd::console
