#include "console/about_form.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "core/app_state.h"
#include "core/version.h"
#include "store/database.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QtGlobal>

using namespace Qt::StringLiterals;

namespace cvd::console {

about_form::about_form(ConsoleContext& context, QWidget* parent) : QDialog(parent)
{
    setWindowTitle(u"About Corvane Desk"_s);
    const AppState& state = context.state;
    lblProgram = make_control<QLabel>(this, "lblProgram", u"Corvane Desk "_s + QLatin1StringView(CVD_VERSION_TEXT));
    lblLibraries = make_control<QLabel>(
        this, "lblLibraries",
        u"Qt %1\nSQLite %2"_s.arg(QString::fromLatin1(qVersion()), store::sqlite_library_version()));
    lblFolders = make_control<QLabel>(this, "lblFolders",
                                      u"Program: %1\nUser Database: %2\nGlobal Database: %3"_s.arg(
                                          state.program_folder, state.user_db_folder, state.global_db_folder));
    btnOK = make_control<QPushButton>(this, "btnOK", u"OK"_s);
    QFont heading = lblProgram->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 1.4);
    lblProgram->setFont(heading);
    for (QLabel* label : {lblLibraries, lblFolders}) {
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    btnOK->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblProgram);
    layout->addWidget(lblLibraries);
    layout->addWidget(lblFolders);
    layout->addLayout(buttons);
    connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
    publish_accessibility(*this);
}

} // namespace cvd::console
