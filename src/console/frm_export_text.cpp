#include "console/frm_export_text.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "core/app_state.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmExportText::frmExportText(ConsoleContext& context, QWidget* parent)
    : TextExchangeForm(context,
                       {exchange::export_window_caption(), u"Data to Export"_s, u"&File to Export To:"_s, u"&Export"_s,
                        &exchange::export_option_caption},
                       parent)
{
    finish();
}

std::optional<QString> frmExportText::choose_file(const FileChoice& choice)
{
    return m_context.state.prompter.choose_save_file(choice);
}

void frmExportText::on_apply()
{
    exchange::ExportResult result;
    {
        BusyLock lock(*this);
        result = exchange::export_text(m_context.state, chosen_kind(), fFile->text());
    }
    if (result.box) {
        m_context.state.prompter.show_box(*result.box);
    }
}

} // namespace cvd::console
