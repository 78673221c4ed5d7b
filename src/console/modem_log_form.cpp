#include "console/modem_log_form.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/line_printer.h"
#include "console/printer_choice.h"
#include "core/app_state.h"
#include "core/error_path.h"
#include "core/prompter.h"
#include "engine_link/engine_log.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFile>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QListView>
#include <QPrinter>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

const QString kGeometryPrefix = u"activity_"_s;

constexpr int kMinimumWidthTwips = 6300;
constexpr int kMinimumHeightTwips = 1700;
constexpr int kFirstWidthTwips = 9500;
constexpr int kFirstHeightTwips = 6000;
constexpr int kPrintPointSize = 8;
constexpr int kPrintMarginTwips = 720;

} // namespace

modem_log_form::modem_log_form(ConsoleContext& context) : m_context(context)
{
    setWindowTitle(u"Activity Log"_s);
    build_controls();
    setMinimumSize(twips_to_pixels(kMinimumWidthTwips, *this), twips_to_pixels(kMinimumHeightTwips, *this));
    if (!restore_geometry(*this, m_context.state.settings, kGeometryPrefix)) {
        resize(twips_to_pixels(kFirstWidthTwips, *this), twips_to_pixels(kFirstHeightTwips, *this));
        if (m_context.send_form != nullptr) {
            center_on_form(*this, m_context.send_form->window());
        }
    }
    publish_accessibility(*this);
}

void modem_log_form::build_controls()
{
    log_list = make_control<QListView>(this, "log_list");
    m_lines = new QStringListModel(this);
    log_list->setModel(m_lines);
    log_list->setUniformItemSizes(true);
    log_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    log_list->setSelectionMode(QAbstractItemView::SingleSelection);
    log_list->setAccessibleName(u"Activity Log"_s);
    log_list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

    btnFind = make_control<QPushButton>(this, "btnFind", u"Find"_s);
    btnRefresh = make_control<QPushButton>(this, "btnRefresh", u"Refresh"_s);
    Command4 = make_control<QPushButton>(this, "Command4", u"Purge"_s);
    Command3 = make_control<QPushButton>(this, "Command3", u"Clipboard"_s);
    Command1 = make_control<QPushButton>(this, "Command1", u"Print"_s);
    btnClose = make_control<QPushButton>(this, "btnClose", u"Close"_s);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(log_list, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {btnFind, btnRefresh, Command4, Command3, Command1}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(btnClose);
    layout->addLayout(buttons);

    connect(btnFind, &QPushButton::clicked, this, [this] {
        m_context.shared.find_target = 1;
        m_context.catalog.open(u"frmFind"_s, this);
    });
    connect(btnRefresh, &QPushButton::clicked, this, &modem_log_form::load_log);
    connect(Command4, &QPushButton::clicked, this, &modem_log_form::purge);
    connect(Command3, &QPushButton::clicked, this, &modem_log_form::copy_to_clipboard);
    connect(Command1, &QPushButton::clicked, this, &modem_log_form::print_log);
    connect(btnClose, &QPushButton::clicked, this, &QWidget::close);
}

QString modem_log_form::log_path() const
{
    return engine_link::engine_log_path(m_context.state.user_db_folder);
}

void modem_log_form::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_first_activation) {
        m_first_activation = false;
        load_log();
    }
}

void modem_log_form::closeEvent(QCloseEvent* event)
{
    save_geometry(*this, m_context.state.settings, kGeometryPrefix);
    QWidget::closeEvent(event);
}

void modem_log_form::load_log()
{
    BusyLock busy(*this);
    m_lines->setStringList(engine_link::read_engine_log_tail(log_path()));
    // The list shows its end: the last row current, marked and unmarked again.
    if (m_lines->rowCount() > 0) {
        const QModelIndex last = m_lines->index(m_lines->rowCount() - 1);
        log_list->setCurrentIndex(last);
        log_list->selectionModel()->select(last, QItemSelectionModel::Deselect);
        log_list->scrollToBottom();
    }
}

void modem_log_form::purge()
{
    const BoxAnswer answer = m_context.state.prompter.show_box(Notice{
        u"Are you sure you want to delete this log?"_s, u"Purge Confirmation"_s, BoxIcon::None, BoxButtons::YesNo});
    if (answer != BoxAnswer::Yes) {
        return;
    }
    BusyLock busy(*this);
    AppState& state = m_context.state;
    state.clear_error_counters();
    const QString path = log_path();
    with_retry(state, u"Procedure: modem_log_form purge"_s, [&] {
        if (const int error = engine_link::purge_engine_log(path); error != 0) {
            throw FileError(error);
        }
    });
    m_lines->setStringList({});
}

void modem_log_form::print_log()
{
    BusyLock busy(*this);
    const QString path = log_path();
    // A missing log is no failure: there is nothing to print.
    if (!QFile::exists(path)) {
        return;
    }
    QPrinter printer;
    if (!choose_printer(printer, this)) {
        return;
    }
    // The whole file as it stands, not only the part the list shows.
    QStringList lines{u"   "_s, u"                             Communication Log"_s, u" "_s};
    lines += engine_link::read_engine_log_lines(path);
    QFont font(u"Courier"_s, kPrintPointSize);
    font.setStyleHint(QFont::TypeWriter);
    print_lines(printer, lines, font, kPrintMarginTwips, false);
}

void modem_log_form::copy_to_clipboard()
{
    QString text;
    for (const QString& line : m_lines->stringList()) {
        text += line + u"\r\n"_s;
    }
    QClipboard* clipboard = QApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}

qint64 modem_log_form::log_row_count() const
{
    return m_lines->rowCount();
}

std::optional<qint64> modem_log_form::first_marked_row() const
{
    const QModelIndexList rows = log_list->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        return std::nullopt;
    }
    return rows.front().row();
}

void modem_log_form::unmark_row(qint64 row)
{
    log_list->selectionModel()->select(m_lines->index(static_cast<int>(row)), QItemSelectionModel::Deselect);
}

void modem_log_form::mark_row(qint64 row)
{
    const QModelIndex index = m_lines->index(static_cast<int>(row));
    log_list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select);
    log_list->scrollTo(index);
}

std::optional<qint64> modem_log_form::find_row(const QString& search_text, qint64 start, desk::FindDirection direction)
{
    return desk::find_in_lines(m_lines->stringList(), search_text, start, direction);
}

} // namespace cvd::console
