#include "console/password_prompt.h"

#include "console/controls.h"
#include "console/geometry.h"
#include "console/masked_entry.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

PasswordPrompt::PasswordPrompt(QWidget* parent, const QString& title, const QString& prompt, int limit)
    : QDialog(parent)
{
    setWindowTitle(title);
    lblPrompt = make_control<QLabel>(this, "lblPrompt", prompt);
    lblPrompt->setWordWrap(true);
    fpassword = make_control<MaskedEntry>(this, "fpassword", limit);
    lblPrompt->setBuddy(fpassword);
    btnApply = make_control<QPushButton>(this, "btnApply", u"Apply"_s);
    btnApply->setDefault(true);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"Cancel"_s);
    connect(btnApply, &QPushButton::clicked, this, &QDialog::accept);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnApply);
    buttons->addWidget(btnCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addWidget(fpassword);
    layout->addLayout(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 48);
    publish_accessibility(*this);
}

std::optional<QString> PasswordPrompt::ask()
{
    fpassword->set_real_text(QString());
    fpassword->setFocus();
    adjustSize();
    center_on_screen(*this);
    if (exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return fpassword->real_text();
}

} // namespace cvd::console
