#include "console/frm_message_detail.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/error_path_impl.h"
#include "queue/message_detail.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kWidthInCharacters = 60;
constexpr int kHeightInLines = 16;

} // namespace

frmMessageDetail::frmMessageDetail(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setWindowTitle(u"Message Detail"_s);
    txtDetails = make_control<QPlainTextEdit>(this, "txtDetails");
    txtDetails->setReadOnly(true);
    txtDetails->setAccessibleName(u"Message Detail"_s);
    const QFontMetrics metrics = txtDetails->fontMetrics();
    txtDetails->setMinimumSize(metrics.averageCharWidth() * kWidthInCharacters, metrics.lineSpacing() * kHeightInLines);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    btnClose->setDefault(true);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::accept);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(txtDetails);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnClose);
    layout->addLayout(buttons);
    publish_accessibility(*this);

    AppState& state = m_context.state;
    state.clear_error_counters();
    const std::optional<QString> text = with_retry(state, u"Procedure: frmMessageDetail Load"_s, [&] {
        return queue::message_detail_text(state.global_db, m_context.shared.detail_source,
                                          m_context.shared.detail_message_id);
    });
    // A row that is gone leaves the box empty.
    txtDetails->setPlainText(text.value_or(QString()).replace(u"\r\n"_s, u"\n"_s));
    btnClose->setFocus();
}

} // namespace cvd::console
