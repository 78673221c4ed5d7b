#include "console/log_form.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/history_model.h"
#include "console/line_printer.h"
#include "console/printer_choice.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/databases.h"
#include "core/error_path.h"
#include "queue/stored_message.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPrinter>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr SettingKey kListSortOrder{u"display", u"list_sort_order"};
// It opens where the activity log last stood and keeps its own place under the history keys.
const QString kReadPrefix = u"activity_"_s;
const QString kWritePrefix = u"history_"_s;

constexpr int kMinimumWidthTwips = 9500;
constexpr int kMinimumHeightTwips = 1700;
// The size at first use: wide enough that the message column shows beside the others.
constexpr int kFirstWidthTwips = 14500;
constexpr int kFirstHeightTwips = 6500;
constexpr int kPrintMarginTwips = 720;

// Widths of the visible columns in pixels; the message takes the rest.
constexpr int kCellPadding = 16;
constexpr int kStatusWidth = 80;
constexpr int kToWidth = 160;
constexpr int kFromWidth = 110;

QFont fixed_pitch_font()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setFamilies({u"Courier New"_s, u"Courier"_s, font.family()});
    font.setStyleHint(QFont::TypeWriter);
    return font;
}

} // namespace

log_form::log_form(ConsoleContext& context) : m_context(context)
{
    setObjectName(u"log_form"_s);
    setWindowTitle(u"Message History"_s);
    build_controls();
    SettingsStore& settings = m_context.state.settings;
    setMinimumSize(twips_to_pixels(kMinimumWidthTwips, *this), twips_to_pixels(kMinimumHeightTwips, *this));
    if (!restore_geometry(*this, settings, kReadPrefix)) {
        resize(twips_to_pixels(kFirstWidthTwips, *this), twips_to_pixels(kFirstHeightTwips, *this));
        if (m_context.send_form != nullptr) {
            center_on_form(*this, m_context.send_form->window());
        }
    }
    publish_accessibility(*this);
}

log_form::~log_form() = default;

void log_form::build_controls()
{
    Status_Grid = make_control<QTableView>(this, "Status_Grid");
    m_model = new HistoryModel(m_context.state, this);
    Status_Grid->setModel(m_model);
    Status_Grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    Status_Grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    Status_Grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    Status_Grid->setWordWrap(false);
    Status_Grid->setAccessibleName(u"Message History"_s);
    // A million rows scroll smoothly only with rows of one fixed height and no row headings.
    Status_Grid->verticalHeader()->hide();
    Status_Grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    Status_Grid->verticalHeader()->setDefaultSectionSize(Status_Grid->fontMetrics().height() + 6);
    QHeaderView* headings = Status_Grid->horizontalHeader();
    headings->setSectionsClickable(true);
    headings->setSortIndicatorShown(true);
    headings->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // The id and the two numbers are kept out of sight; a search still reads them.
    for (const int hidden : {queue::kHistoryMessageId, queue::kHistoryRequestedFloat, queue::kHistorySentFloat}) {
        Status_Grid->setColumnHidden(hidden, true);
    }
    // The message takes what the window has left (the number columns behind it are out of sight).
    headings->setStretchLastSection(true);
    // A date column is as wide as a date of two-digit day and hour in the locale's format.
    const int date_width = Status_Grid->fontMetrics().horizontalAdvance(
                               queue::general_date_text(QDateTime(QDate(2026, 12, 28), QTime(23, 58, 58)))) +
                           kCellPadding;
    Status_Grid->setColumnWidth(queue::kHistoryRequested, date_width);
    Status_Grid->setColumnWidth(queue::kHistorySent, date_width);
    Status_Grid->setColumnWidth(queue::kHistoryStatus, kStatusWidth);
    Status_Grid->setColumnWidth(queue::kHistorySentTo, kToWidth);
    Status_Grid->setColumnWidth(queue::kHistorySentFrom, kFromWidth);

    btnDetails = make_control<QPushButton>(this, "btnDetails", u"Details"_s);
    btnFind = make_control<QPushButton>(this, "btnFind", u"Find"_s);
    btnEdit = make_control<QPushButton>(this, "btnEdit", u"Copy"_s);
    btnRequeue = make_control<QPushButton>(this, "btnRequeue", u"Requeue"_s);
    Command1 = make_control<QPushButton>(this, "Command1", u"Print"_s);
    Command3 = make_control<QPushButton>(this, "Command3", u"Clipboard"_s);
    Command2 = make_control<QPushButton>(this, "Command2", u"Close"_s);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Status_Grid, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {btnDetails, btnFind, btnEdit, btnRequeue, Command1, Command3}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(Command2);
    layout->addLayout(buttons);

    connect(headings, &QHeaderView::sectionClicked, this, &log_form::heading_clicked);
    connect(Status_Grid, &QTableView::doubleClicked, this, &log_form::show_details);
    connect(btnDetails, &QPushButton::clicked, this, &log_form::show_details);
    connect(btnFind, &QPushButton::clicked, this, &log_form::open_find);
    connect(btnEdit, &QPushButton::clicked, this, &log_form::copy_message);
    connect(btnRequeue, &QPushButton::clicked, this, &log_form::requeue);
    connect(Command1, &QPushButton::clicked, this, &log_form::print_list);
    connect(Command3, &QPushButton::clicked, this, &log_form::copy_to_clipboard);
    connect(Command2, &QPushButton::clicked, this, &QWidget::close);
}

void log_form::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_first_activation) {
        m_first_activation = false;
        fill(queue::StatusRule::FirstFill);
    }
}

void log_form::closeEvent(QCloseEvent* event)
{
    save_geometry(*this, m_context.state.settings, kWritePrefix);
    QWidget::closeEvent(event);
}

void log_form::fill(queue::StatusRule rule)
{
    BusyLock busy(*this);
    m_model->rebuild(queue::HistorySort::RequestedAscending, rule);
    sort_history(queue::HistorySort::RequestedAscending);
}

void log_form::sort_history(queue::HistorySort sort)
{
    m_context.state.settings.put_setting(kListSortOrder, queue::history_sort_name(sort));
    if (m_model->current_sort() != sort) {
        BusyLock busy(*this);
        m_model->sort_by(sort);
    }
    Status_Grid->horizontalHeader()->setSortIndicator(queue::history_sort_column(sort),
                                                      queue::history_sort_ascending(sort) ? Qt::AscendingOrder
                                                                                          : Qt::DescendingOrder);
    Status_Grid->clearSelection();
}

void log_form::heading_clicked(int column)
{
    const std::optional<queue::HistorySort> sort =
        queue::history_heading_sort(column, m_context.state.settings.get_setting_text(kListSortOrder));
    if (sort) {
        sort_history(*sort);
        return;
    }
    // A heading that sorts nothing keeps the mark where it was.
    const queue::HistorySort current = m_model->current_sort();
    Status_Grid->horizontalHeader()->setSortIndicator(queue::history_sort_column(current),
                                                      queue::history_sort_ascending(current) ? Qt::AscendingOrder
                                                                                             : Qt::DescendingOrder);
}

qint64 log_form::log_row_count() const
{
    return m_model->rowCount();
}

std::optional<qint64> log_form::first_marked_row() const
{
    const QModelIndexList rows = Status_Grid->selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        return std::nullopt;
    }
    return std::min_element(rows.begin(), rows.end(),
                            [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); })
        ->row();
}

void log_form::unmark_row(qint64 row)
{
    Status_Grid->selectionModel()->select(m_model->index(static_cast<int>(row), 0),
                                          QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
}

void log_form::mark_row(qint64 row)
{
    const QModelIndex index = m_model->index(static_cast<int>(row), queue::kHistoryRequested);
    Status_Grid->selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    Status_Grid->scrollTo(index);
}

std::optional<qint64> log_form::find_row(const QString& search_text, qint64 start, desk::FindDirection direction)
{
    BusyLock busy(*this);
    std::optional<qint64> hit;
    if (direction == desk::FindDirection::Next) {
        m_model->walk(start, [&](qint64 position, const queue::HistoryRow& row) {
            if (desk::row_matches(row.text(), search_text)) {
                hit = position;
                return false;
            }
            return true;
        });
        return hit;
    }
    // Upwards: the last hit from the top down to the starting row.
    m_model->walk(0, [&](qint64 position, const queue::HistoryRow& row) {
        if (position > start) {
            return false;
        }
        if (desk::row_matches(row.text(), search_text)) {
            hit = position;
        }
        return true;
    });
    return hit;
}

void log_form::show_details()
{
    const std::optional<qint64> row = first_marked_row();
    if (!row) {
        return;
    }
    m_context.shared.detail_source = 5;
    m_context.shared.detail_message_id = m_model->history_row(*row).message_id;
    m_context.catalog.open(u"frmMessageDetail"_s, this);
}

void log_form::open_find()
{
    m_context.shared.find_target = 2;
    m_context.catalog.open(u"frmFind"_s, this);
}

void log_form::copy_message()
{
    const std::optional<qint64> row = first_marked_row();
    if (!row) {
        return;
    }
    {
        BusyLock busy(*this);
        AppState& state = m_context.state;
        const qint64 id = m_model->history_row(*row).message_id;
        open_database(state);
        state.clear_error_counters();
        const std::optional<queue::StoredMessage> stored = with_retry(
            state, u"Procedure: log_form btnEdit"_s, [&] { return queue::read_stored_message(state.global_db, id); });
        if (stored) {
            if (m_context.send_form == nullptr || !m_context.send_form->load_message(stored->recipient, stored->text)) {
                return;
            }
            m_context.shared.schedule = queue::schedule_of(*stored);
        }
    }
    close();
}

void log_form::requeue()
{
    BusyLock busy(*this);
    QModelIndexList selected = Status_Grid->selectionModel()->selectedRows();
    std::sort(selected.begin(), selected.end(),
              [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QList<qint64> ids;
    ids.reserve(selected.size());
    for (const QModelIndex& index : std::as_const(selected)) {
        ids.append(m_model->history_row(index.row()).message_id);
    }
    AppState& state = m_context.state;
    open_database(state);
    state.clear_error_counters();
    with_retry(state, u"Procedure: log_form requeue "_s,
               [&] { queue::requeue_history_rows(state.global_db, ids, state.clock.now()); });
    m_model->rebuild(queue::HistorySort::RequestedAscending, queue::StatusRule::AfterRequeue);
    sort_history(queue::HistorySort::RequestedAscending);
}

QString log_form::list_text(queue::HistoryLayout layout)
{
    QString text = queue::history_text_heading(layout);
    m_model->walk(0, [&](qint64, const queue::HistoryRow& row) {
        text += queue::history_text_line(row, layout);
        return true;
    });
    return text;
}

void log_form::print_list()
{
    BusyLock busy(*this);
    QPrinter printer;
    // Cancelling the dialog ends the print quietly.
    if (!choose_printer(printer, this)) {
        return;
    }
    QStringList lines = list_text(queue::HistoryLayout::Print).split(u"\r\n"_s);
    if (!lines.isEmpty() && lines.constLast().isEmpty()) {
        lines.removeLast();
    }
    print_lines(printer, lines, fixed_pitch_font(), kPrintMarginTwips, true);
}

void log_form::copy_to_clipboard()
{
    BusyLock busy(*this);
    const QString text = list_text(queue::HistoryLayout::Clipboard);
    QClipboard* clipboard = QApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}

} // namespace cvd::console
