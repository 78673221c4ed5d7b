#include "console/setup_form.h"

#include "console/busy_lock.h"
#include "console/controls.h"
#include "console/dialog_layout.h"
#include "console/geometry.h"
#include "console/setup_boxes.h"
#include "core/app_state.h"
#include "core/databases.h"
#include "desk/setup_rules.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

setup_form::setup_form(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(u"setup_form"_s);
    setWindowTitle(u"General Setup"_s);
    fsender = make_control<QLineEdit>(this, "fsender");
    fSenderEmail = make_control<QLineEdit>(this, "fSenderEmail");
    fspell = make_control<QCheckBox>(this, "fspell", u"Enable Spell Check (requires a spelling dictionary)"_s);
    fLogLength = make_control<QLineEdit>(this, "fLogLength");
    fArchiveLogs = make_control<QCheckBox>(this, "fArchiveLogs", u"Archive Log"_s);
    cmbLogLevel = make_control<QComboBox>(this, "cmbLogLevel");
    cmbLogLevel->addItems(desk::log_level_names());
    fpurge = make_control<QLineEdit>(this, "fpurge");
    apply = make_control<QPushButton>(this, "apply", u"Apply"_s);
    bye = make_control<QPushButton>(this, "bye", u"Close"_s);
    cut_when_left(fsender, desk::kSenderLength, false);
    cut_when_left(fSenderEmail, desk::kSenderLength, false);
    clamp_when_left(fLogLength, desk::kLogLengthRange);
    clamp_when_left(fpurge, desk::kPurgeAfterRange);
    connect(apply, &QPushButton::clicked, this, &setup_form::on_apply);
    connect(bye, &QPushButton::clicked, this, &QDialog::reject);

    auto* form = new QFormLayout;
    add_labelled_row(*form, this, "lblSender", u"Sender's Name"_s, fsender);
    add_labelled_row(*form, this, "lblSenderEmail", u"Sender's Email"_s, fSenderEmail);
    form->addRow(fspell);
    add_labelled_row(*form, this, "lblLogLength", u"Max Log Length"_s, fLogLength);
    form->addRow(fArchiveLogs);
    add_labelled_row(*form, this, "lblLogLevel", u"Logging Level"_s, cmbLogLevel);
    auto* purge_row = new QHBoxLayout;
    purge_row->addWidget(fpurge);
    purge_row->addWidget(make_control<QLabel>(this, "lblDays", u"(days)"_s));
    auto* purge_label = make_control<QLabel>(this, "lblPurge", u"Purge After"_s);
    purge_label->setBuddy(fpurge);
    form->addRow(purge_label, purge_row);
    fLogLength->setMaximumWidth(fontMetrics().averageCharWidth() * 14);
    fpurge->setMaximumWidth(fontMetrics().averageCharWidth() * 8);

    auto* buttons = button_row({apply, bye});
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addLayout(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 60);

    // Every key of the window passes here first, whichever box has the focus.
    installEventFilter(this);
    for (QWidget* child : findChildren<QWidget*>()) {
        child->installEventFilter(this);
    }
    publish_accessibility(*this);
    adjustSize();
    // Centred on the send window unless that one is minimised.
    if (parent != nullptr && !parent->isMinimized()) {
        center_on_form(*this, *parent);
    } else {
        center_on_screen(*this);
    }
    m_applied = false;
    fill_boxes();
}

void setup_form::fill_boxes()
{
    const desk::GeneralSetup values = desk::read_general_setup(m_context.state.settings);
    fsender->setText(values.sender);
    fSenderEmail->setText(values.sender_email);
    fspell->setChecked(values.spell_check);
    fLogLength->setText(values.log_length);
    fArchiveLogs->setChecked(values.archive_logs);
    cmbLogLevel->setCurrentIndex(values.log_level);
    fpurge->setText(values.purge_after);
}

void setup_form::on_apply()
{
    {
        BusyLock lock(*this);
        desk::store_general_setup(m_context.state.settings,
                                  {fsender->text(), fSenderEmail->text(), fspell->isChecked(), fLogLength->text(),
                                   fArchiveLogs->isChecked(), cmbLogLevel->currentIndex(), fpurge->text()});
        save_settings(m_context.state);
        fill_boxes();
    }
    m_applied = true;
}

bool setup_form::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (desk::opens_program_settings(key->key(), key->modifiers().testFlag(Qt::ControlModifier),
                                         key->modifiers().testFlag(Qt::AltModifier))) {
            m_context.catalog.open(u"frmSetting"_s);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace cvd::console
