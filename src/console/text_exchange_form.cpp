#include "console/text_exchange_form.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

using exchange::ExchangeKind;

TextExchangeForm::TextExchangeForm(ConsoleContext& context, const Captions& captions, QWidget* parent)
    : QDialog(parent), m_context(context), m_option_caption(captions.option)
{
    setWindowTitle(captions.window);
    auto* options = make_control<QGroupBox>(this, "fraData", captions.options_title);
    auto* option_rows = new QVBoxLayout(options);
    const std::pair<ExchangeKind, const char*> kinds[] = {{ExchangeKind::Carriers, "optCarriers"},
                                                          {ExchangeKind::Recipients, "optRecipients"},
                                                          {ExchangeKind::Groups, "optGroups"},
                                                          {ExchangeKind::Members, "optMembers"}};
    for (const auto& [kind, name] : kinds) {
        auto* option = make_control<QRadioButton>(options, name, captions.option(kind));
        option_rows->addWidget(option);
        m_options.append({kind, option});
    }
    m_options.first().second->setChecked(true);

    fFile = make_control<QLineEdit>(this, "fFile");
    auto* file_label = make_control<QLabel>(this, "lblFile", captions.file_label);
    file_label->setBuddy(fFile);
    btnBrowse = make_control<QPushButton>(this, "btnBrowse", u"&Browse..."_s);
    btnApply = make_control<QPushButton>(this, "btnApply", captions.apply);
    btnClose = make_control<QPushButton>(this, "btnClose", u"&Close"_s);

    auto* file_row = new QHBoxLayout;
    file_row->addWidget(fFile, 1);
    file_row->addWidget(btnBrowse);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(btnApply, QDialogButtonBox::ActionRole);
    buttons->addButton(btnClose, QDialogButtonBox::RejectRole);
    m_extra_rows = new QVBoxLayout;
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(options);
    layout->addWidget(file_label);
    layout->addLayout(file_row);
    layout->addLayout(m_extra_rows);
    layout->addStretch();
    layout->addWidget(buttons);

    connect(btnBrowse, &QPushButton::clicked, this, &TextExchangeForm::browse);
    connect(btnApply, &QPushButton::clicked, this, [this] { on_apply(); });
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);
}

void TextExchangeForm::finish()
{
    publish_accessibility(*this);
    resize(sizeHint().expandedTo(QSize(460, 0)));
}

ExchangeKind TextExchangeForm::chosen_kind() const
{
    for (const auto& [kind, option] : m_options) {
        if (option->isChecked()) {
            return kind;
        }
    }
    return ExchangeKind::Carriers;
}

void TextExchangeForm::browse()
{
    const ExchangeKind kind = chosen_kind();
    const std::optional<QString> path =
        choose_file({m_option_caption(kind), exchange::browse_name_filter(), exchange::suggested_file_name(kind)});
    if (path) {
        fFile->setText(exchange::with_default_extension(*path));
    }
}

} // namespace cvd::console
