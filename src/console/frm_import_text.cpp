#include "console/frm_import_text.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProgressDialog>
#include <QScopeGuard>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmImportText::frmImportText(ConsoleContext& context, QWidget* parent)
    : TextExchangeForm(context,
                       {exchange::import_window_caption(), u"Type of Data to Import"_s, u"&File to Import From:"_s,
                        u"&Import"_s, &exchange::import_option_caption},
                       parent)
{
    fOverwrite = make_control<QCheckBox>(this, "fOverwrite", u"&Overwrite existing matching records"_s);
    extra_rows().addWidget(fOverwrite);
    finish();
}

std::optional<QString> frmImportText::choose_file(const FileChoice& choice)
{
    return m_context.state.prompter.choose_open_file(choice);
}

void frmImportText::on_apply()
{
    exchange::ImportResult result;
    {
        BusyLock lock(*this);
        m_running = true;
        const auto finished = qScopeGuard([this] {
            delete m_progress;
            m_running = false;
        });
        QElapsedTimer running;
        running.start();
        result = exchange::import_text(
            m_context.state, chosen_kind(), fFile->text(), fOverwrite->isChecked(),
            [this, &running](qsizetype done, qsizetype total) { return report_progress(running, done, total); },
            exchange::ListPublishing::Later);
    }
    if (result.box) {
        m_context.state.prompter.show_box(*result.box);
    }
}

void frmImportText::reject()
{
    if (!m_running) {
        QDialog::reject();
    }
}

bool frmImportText::report_progress(const QElapsedTimer& running, qsizetype done, qsizetype total)
{
    if (m_progress == nullptr) {
        if (running.elapsed() < m_progress_delay) {
            return true;
        }
        m_progress = new QProgressDialog(u"Importing records..."_s, u"Cancel"_s, 0, static_cast<int>(total), this);
        m_progress->setObjectName(u"prgImport"_s);
        m_progress->setWindowTitle(windowTitle());
        // Not modal of its own: a modal progress dialog runs every pending event, the timer's too, on each
        // step. It is a child of this modal window, so its Cancel is reachable all the same.
        m_progress->setWindowModality(Qt::NonModal);
        m_progress->setMinimumDuration(0);
        m_progress->show();
    }
    m_progress->setValue(static_cast<int>(done));
    // The run holds the database's write transaction: the program's timer and channel wait until it ends, and
    // only painting and the operator's input (the Cancel) are let through.
    QCoreApplication::processEvents(QEventLoop::X11ExcludeTimers | QEventLoop::ExcludeSocketNotifiers);
    return !m_progress->wasCanceled();
}

} // namespace cvd::console
