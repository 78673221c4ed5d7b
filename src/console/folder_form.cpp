#include "console/folder_form.h"

#include "console/busy_lock.h"
#include "console/console_context.h"
#include "console/controls.h"
#include "console/folder_grid_model.h"
#include "console/geometry.h"
#include "core/app_state.h"
#include "core/clock.h"
#include "core/error_path_impl.h"
#include "core/prompter.h"
#include "desk/folder_rules.h"
#include "queue/stored_message.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollBar>
#include <QTableView>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kMarginTwips = 120;
constexpr int kButtonRowTwips = 800;
constexpr int kDateWidthTwips = 1695;
constexpr int kToWidthTwips = 2000;
// Far wider than any window, so that the grid scrolls sideways to long messages.
constexpr int kMessageWidthTwips = 75000;
constexpr int kCellPadding = 12;

QString procedure(queue::Folder folder, const QString& routine)
{
    // The scheduled folder's refresh has always reported under the send window's name.
    if (folder == queue::Folder::Scheduled && routine == u"refresh_button"_s) {
        return u"Procedure: send_form refresh_button"_s;
    }
    return u"Procedure: "_s + desk::folder_face(folder).window_name + u' ' + routine;
}

} // namespace

FolderForm::FolderForm(ConsoleContext& context, queue::Folder folder, Buttons buttons)
    : QWidget(nullptr), m_context(context), m_folder(folder)
{
    const desk::FolderFace& face = desk::folder_face(folder);
    setObjectName(face.window_name);
    setWindowTitle(face.title);
    build_controls(buttons);
    publish_accessibility(*this);
    const desk::GridSize minimum = desk::folder_minimum_client(folder);
    setMinimumSize(twips_to_pixels(minimum.width, *this), twips_to_pixels(minimum.height, *this));
    if (!restore_geometry(*this, m_context.state.settings, face.geometry_prefix)) {
        place_first_time();
    }
}

void FolderForm::build_controls(const Buttons& buttons)
{
    const desk::FolderFace& face = desk::folder_face(m_folder);
    m_model = new FolderGridModel(face.date_heading, face.number_heading, this);
    Status_Grid = make_control<QTableView>(this, "Status_Grid");
    Status_Grid->setAccessibleName(face.title);
    Status_Grid->setModel(m_model);
    Status_Grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    Status_Grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    Status_Grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    Status_Grid->setWordWrap(false);
    Status_Grid->verticalHeader()->hide();
    Status_Grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    Status_Grid->verticalHeader()->setDefaultSectionSize(Status_Grid->fontMetrics().height() + 6);
    QHeaderView* header = Status_Grid->horizontalHeader();
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    Status_Grid->setColumnHidden(desk::kIdColumn, true);
    Status_Grid->setColumnHidden(desk::kDateNumberColumn, true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // At least the old width, and wide enough for a whole date and time in this locale and font.
    const QString widest_date = queue::general_date_text(u"2026-12-28 22:58:58"_s);
    header->resizeSection(desk::kDateColumn,
                          std::max(twips_to_pixels(kDateWidthTwips, *this),
                                   Status_Grid->fontMetrics().horizontalAdvance(widest_date) + kCellPadding));
    header->resizeSection(desk::kToColumn, twips_to_pixels(kToWidthTwips, *this));
    header->resizeSection(desk::kMessageColumn, twips_to_pixels(kMessageWidthTwips, *this));
    connect(header, &QHeaderView::sectionClicked, this, &FolderForm::heading_clicked);
    connect(Status_Grid, &QTableView::doubleClicked, this, [this] { show_details(); });

    m_button_row = new QWidget(this);
    auto* row = new QHBoxLayout(m_button_row);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add_button = [this, row](const char* name, const QString& caption) {
        auto* button = make_control<QPushButton>(this, name, caption);
        button->setParent(m_button_row);
        row->addWidget(button);
        return button;
    };
    const bool scheduled = m_folder == queue::Folder::Scheduled;
    btnDetails = add_button("btnDetails", u"Details"_s);
    btnEdit = add_button("btnEdit", scheduled ? u"Edit"_s : u"Copy"_s);
    connect(btnDetails, &QPushButton::clicked, this, &FolderForm::show_details);
    // Edit holds a scheduled message in the send window; every other such button copies it there.
    connect(btnEdit, &QPushButton::clicked, this, [this, scheduled] { load_into_send_form(scheduled); });
    if (buttons.has_copy) {
        btnCopy = add_button("btnCopy", u"Copy"_s);
        connect(btnCopy, &QPushButton::clicked, this, [this] { load_into_send_form(false); });
    }
    if (buttons.cancel_name != nullptr) {
        m_cancel = add_button(buttons.cancel_name, u"Cancel"_s);
        connect(m_cancel, &QPushButton::clicked, this, &FolderForm::cancel_selected);
    }
    if (buttons.requeue_name != nullptr) {
        m_requeue = add_button(buttons.requeue_name, u"Requeue"_s);
        connect(m_requeue, &QPushButton::clicked, this, &FolderForm::requeue_selected);
    }
    row->addStretch();
    refresh_button = add_button("refresh_button", u"Refresh"_s);
    btnClose = add_button("btnClose", u"Close"_s);
    connect(refresh_button, &QPushButton::clicked, this, &FolderForm::refresh);
    connect(btnClose, &QPushButton::clicked, this, &QWidget::close);
}

void FolderForm::place_first_time()
{
    const desk::GridSize minimum = desk::folder_minimum_client(m_folder);
    resize(twips_to_pixels(minimum.width * 2, *this), twips_to_pixels(minimum.height * 3, *this));
    if (m_context.send_form != nullptr) {
        center_on_form(*this, m_context.send_form->window());
    }
}

void FolderForm::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    if (m_first_show) {
        m_first_show = false;
        refresh();
    }
}

void FolderForm::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    lay_out();
}

void FolderForm::lay_out()
{
    const desk::GridSize grid =
        desk::folder_grid_size(m_folder, pixels_to_twips(width(), *this), pixels_to_twips(height(), *this));
    const int margin = twips_to_pixels(kMarginTwips, *this);
    const int available = twips_to_pixels(grid.height, *this);
    const int frame = Status_Grid->frameWidth() * 2;
    const int header = Status_Grid->horizontalHeader()->height();
    const int grid_height =
        desk::whole_row_height(available, header, Status_Grid->verticalHeader()->defaultSectionSize(),
                               frame + Status_Grid->horizontalScrollBar()->sizeHint().height());
    Status_Grid->setGeometry(margin, margin, twips_to_pixels(grid.width, *this), grid_height);
    const int button_row = twips_to_pixels(kButtonRowTwips, *this);
    m_button_row->setGeometry(margin, margin + grid_height + margin, twips_to_pixels(grid.width, *this),
                              button_row - 2 * margin);
    // The window follows the grid to whole rows, once, so the snap cannot start a loop of resizes.
    const int snapped = grid_height + button_row;
    if (!m_snapping && isVisible() && windowState() == Qt::WindowNoState && snapped != height() &&
        snapped >= minimumHeight()) {
        m_snapping = true;
        resize(width(), snapped);
        m_snapping = false;
    }
}

void FolderForm::closeEvent(QCloseEvent* event)
{
    save_geometry(*this, m_context.state.settings, desk::folder_face(m_folder).geometry_prefix);
    if (m_context.send_form != nullptr) {
        m_context.send_form->update_counters();
    }
    event->accept();
}

void FolderForm::refresh()
{
    if (m_busy) {
        return;
    }
    m_busy = true;
    const auto done = qScopeGuard([this] { m_busy = false; });
    AppState& state = m_context.state;
    const QString routine = procedure(m_folder, u"refresh_button"_s);
    state.clear_error_counters();
    // Nothing written to the file since the last test: the sum cannot have moved.
    const queue::ContentMark mark = with_retry(state, routine, [&] { return queue::content_mark(state.global_db); });
    if (mark == m_mark && m_remembered_total != -1) {
        return;
    }
    m_mark = mark;
    const qint64 total = with_retry(
        state, routine, [&] { return queue::folder_id_total(state.global_db, m_folder, state.first_transaction); });
    if (total == m_remembered_total) {
        return;
    }
    BusyLock lock(*this);
    m_remembered_total = total;
    m_model->set_rows(with_retry(
        state, routine, [&] { return queue::folder_rows(state.global_db, m_folder, state.first_transaction); }));
    const QString key = state.settings.get_setting_text(desk::sort_key_read_on_refresh(m_folder));
    sort_by(key);
}

void FolderForm::sort_by(const QString& routine)
{
    const std::optional<desk::SortRoutine> found = desk::find_sort_routine(m_folder, routine);
    if (!found) {
        return;
    }
    m_context.state.settings.put_setting(desk::sort_key_written(m_folder), found->name);
    m_model->sort_rows(found->column, found->numeric, found->descending);
    QHeaderView* header = Status_Grid->horizontalHeader();
    header->setSortIndicatorShown(true);
    header->setSortIndicator(found->marked_heading, found->descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    Status_Grid->clearSelection();
}

void FolderForm::heading_clicked(int column)
{
    if (m_busy) {
        return;
    }
    const QString key = m_context.state.settings.get_setting_text(desk::sort_key_read_on_heading(m_folder));
    const std::optional<desk::SortRoutine> routine = desk::heading_click_routine(m_folder, column, key);
    if (!routine) {
        // The hidden columns and clicks beside the headings sort nothing; the mark stays where it was.
        return;
    }
    m_busy = true;
    sort_by(routine->name);
    m_busy = false;
}

QList<qint64> FolderForm::selected_ids() const
{
    QModelIndexList rows = Status_Grid->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
    QList<qint64> ids;
    ids.reserve(rows.size());
    for (const QModelIndex& row : rows) {
        ids.append(m_model->row_at(row.row()).id);
    }
    return ids;
}

void FolderForm::show_details()
{
    const QList<qint64> ids = selected_ids();
    if (ids.isEmpty()) {
        return;
    }
    m_context.shared.detail_source = desk::folder_face(m_folder).detail_source;
    m_context.shared.detail_message_id = ids.constFirst();
    m_context.catalog.open(u"frmMessageDetail"_s, this);
}

void FolderForm::load_into_send_form(bool hold)
{
    if (m_busy || m_context.send_form == nullptr) {
        return;
    }
    const QList<qint64> ids = selected_ids();
    if (ids.isEmpty()) {
        return;
    }
    AppState& state = m_context.state;
    const QString routine =
        procedure(m_folder, m_folder == queue::Folder::Scheduled && !hold ? u"btnCopy"_s : u"btnEdit"_s);
    state.clear_error_counters();
    {
        m_busy = true;
        const auto done = qScopeGuard([this] { m_busy = false; });
        BusyLock lock(*this);
        const std::optional<queue::StoredMessage> stored = with_retry(
            state, routine, [&] { return queue::read_folder_message(state.global_db, m_folder, ids.constFirst()); });
        if (!stored || !m_context.send_form->load_message(stored->recipient, stored->text)) {
            return;
        }
        if (hold) {
            with_retry(state, routine, [&] { return queue::delete_waiting_message(state.global_db, stored->id); });
            state.prompter.show_box(
                Notice{u"This message will be held until it is sent again.  Be sure to re-send it even if you don't "
                       "make any changes."_s,
                       u"Important - Message Held"_s});
        }
        m_context.shared.schedule = queue::schedule_of(*stored);
        // The schedule dialog, if open, shows the held message's times when it is opened again.
        if (hold && m_context.doors.unload_schedule) {
            m_context.doors.unload_schedule();
        }
    }
    close();
}

void FolderForm::cancel_selected()
{
    if (m_busy) {
        return;
    }
    AppState& state = m_context.state;
    const QString routine = procedure(m_folder, m_folder == queue::Folder::Scheduled ? u"btnDelete"_s : u"command1"_s);
    state.clear_error_counters();
    const QList<qint64> ids = selected_ids();
    if (!ids.isEmpty()) {
        with_retry(state, routine, [&] { return queue::cancel_messages(state.global_db, ids, state.clock.now()); });
    }
    if (m_folder == queue::Folder::Pending && m_context.send_form != nullptr) {
        m_context.send_form->note_counters_changed();
    }
    reload_after_change();
}

void FolderForm::requeue_selected()
{
    if (m_busy) {
        return;
    }
    AppState& state = m_context.state;
    state.clear_error_counters();
    const QList<qint64> ids = selected_ids();
    if (!ids.isEmpty()) {
        with_retry(state, procedure(m_folder, u"command2"_s),
                   [&] { return queue::requeue_messages(state.global_db, ids, state.clock.now()); });
    }
    reload_after_change();
}

void FolderForm::reload_after_change()
{
    m_remembered_total = -1;
    refresh();
}

} // namespace cvd::console
