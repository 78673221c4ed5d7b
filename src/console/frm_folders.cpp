#include "console/frm_folders.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

// A box grows with its folder's text up to this width, in twips.
constexpr int kMaxBoxTwips = 7700;
constexpr int kMinBoxPixels = 200;

} // namespace

frmFolders::frmFolders(ConsoleContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setWindowTitle(u"Application Folders"_s);
    txtProgramFolder = make_control<QLineEdit>(this, "txtProgramFolder");
    txtSettingsFolder = make_control<QLineEdit>(this, "txtSettingsFolder");
    txtDatabaseFolder = make_control<QLineEdit>(this, "txtDatabaseFolder");
    btnBrowseProgram = make_control<QPushButton>(this, "btnBrowseProgram", u"Browse..."_s);
    btnBrowseUser = make_control<QPushButton>(this, "btnBrowseUser", u"Browse..."_s);
    btnBrowseGlobal = make_control<QPushButton>(this, "btnBrowseGlobal", u"Browse..."_s);
    btnVersions = make_control<QPushButton>(this, "btnVersions", u"File Versions"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);

    auto* grid = new QGridLayout(this);
    const AppState& state = context.state;
    add_folder_row(0, "lblProgramFolder", u"Program:"_s, txtProgramFolder, btnBrowseProgram, state.program_folder,
                   u"CVD Program Folder"_s);
    add_folder_row(1, "lblSettingsFolder", u"User Database:"_s, txtSettingsFolder, btnBrowseUser, state.user_db_folder,
                   u"CVD User Database Folder"_s);
    add_folder_row(2, "lblDatabaseFolder", u"Global Database:"_s, txtDatabaseFolder, btnBrowseGlobal,
                   state.global_db_folder, u"CVD Global Database Folder"_s);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(btnVersions);
    buttons->addStretch();
    buttons->addWidget(btnClose);
    grid->addLayout(buttons, 3, 0, 1, 3);

    btnClose->setDefault(true);
    connect(btnClose, &QPushButton::clicked, this, &QDialog::accept);
    btnVersions->setEnabled(static_cast<bool>(context.doors.about));
    connect(btnVersions, &QPushButton::clicked, this, [this] { m_context.doors.about(); });
    publish_accessibility(*this);
}

void frmFolders::add_folder_row(int row, const char* label_name, const QString& caption, QLineEdit* box,
                                QPushButton* browse, const QString& folder, const QString& browse_title)
{
    auto* label = make_control<QLabel>(this, label_name, caption);
    label->setBuddy(box);
    box->setReadOnly(true);
    box->setText(folder);
    box->setCursorPosition(0);
    // The box is as wide as its folder needs, within a limit; a longer folder scrolls inside it.
    const int text_width = box->fontMetrics().horizontalAdvance(folder) + 2 * box->fontMetrics().averageCharWidth();
    box->setMinimumWidth(std::clamp(text_width, kMinBoxPixels, twips_to_pixels(kMaxBoxTwips, *box)));
    auto* grid = static_cast<QGridLayout*>(layout());
    grid->addWidget(label, row, 0);
    grid->addWidget(box, row, 1);
    grid->addWidget(browse, row, 2);
    // The choice is not used: the chooser is only a look into the folder.
    connect(browse, &QPushButton::clicked, this, [this, folder, browse_title] {
        m_context.state.prompter.choose_open_file(FileChoice{browse_title, u"All Files (*)"_s, folder});
    });
}

} // namespace cvd::console
