#include "console/frm_setting.h"

#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "console/setup_boxes.h"
#include "core/app_state.h"
#include "desk/setup_rules.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// Category and name are lower-cased and trimmed as they are typed and when left.
void keep_setting_name(QLineEdit* box)
{
    const auto tidy = [](QLineEdit& edit) {
        const QString tidied = desk::setting_name_text(edit.text());
        if (tidied != edit.text()) {
            const int caret = std::min(edit.cursorPosition(), static_cast<int>(tidied.size()));
            edit.setText(tidied);
            edit.setCursorPosition(caret);
        }
    };
    QObject::connect(box, &QLineEdit::textEdited, box, [box, tidy] { tidy(*box); });
    when_left(box, tidy);
}

} // namespace

frmSetting::frmSetting(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(u"frmSetting"_s);
    setWindowTitle(u"Program Settings"_s);
    txtCategory = make_control<QLineEdit>(this, "txtCategory");
    txtName = make_control<QLineEdit>(this, "txtName");
    txtValue = make_control<QLineEdit>(this, "txtValue");
    btnGet = make_control<QPushButton>(this, "btnGet", u"Get"_s);
    btnSet = make_control<QPushButton>(this, "btnSet", u"Set"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);
    keep_setting_name(txtCategory);
    keep_setting_name(txtName);
    connect(btnGet, &QPushButton::clicked, this, [this] {
        const QString category = desk::setting_name_text(txtCategory->text());
        const QString name = desk::setting_name_text(txtName->text());
        txtValue->setText(m_context.state.settings.get_setting_text({category, name}));
    });
    connect(btnSet, &QPushButton::clicked, this, [this] {
        const QString category = desk::setting_name_text(txtCategory->text());
        const QString name = desk::setting_name_text(txtName->text());
        m_context.state.settings.put_setting({category, name}, txtValue->text());
    });
    connect(btnClose, &QPushButton::clicked, this, &QDialog::reject);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblCategory", u"Category"_s, txtCategory);
    add_labelled_row(*form, this, "lblName", u"Name"_s, txtName);
    add_labelled_row(*form, this, "lblValue", u"Value"_s, txtValue);
    auto* buttons = button_row({btnGet, btnSet, btnClose});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 52);
    settle_over_parent(*this, parent);
}

} // namespace cvd::console
