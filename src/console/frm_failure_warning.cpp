#include "console/frm_failure_warning.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmFailureWarning::frmFailureWarning(ConsoleContext& context, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(u"Corvane Desk Warning"_s);
    Label1 = make_control<QLabel>(this, "Label1", u"WARNING"_s);
    Label2 = make_control<QLabel>(this, "Label2", u"One or more messages have failed"_s);
    btnOK = make_control<QPushButton>(this, "btnOK", u"OK"_s);
    QFont heading = Label1->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 2);
    Label1->setFont(heading);
    Label1->setStyleSheet(u"color: #b00000"_s);
    for (QLabel* label : {Label1, Label2}) {
        label->setAlignment(Qt::AlignCenter);
    }
    btnOK->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Label1);
    layout->addWidget(Label2);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    setMinimumWidth(320);

    connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
    // finished comes once for every way out: OK, Escape and the window's close button.
    connect(this, &QDialog::finished, this, [&context] {
        if (context.send_form != nullptr) {
            context.send_form->update_counters();
        }
    });
    publish_accessibility(*this);
    adjustSize();
    center_on_screen(*this);
}

} // namespace cvd::console
