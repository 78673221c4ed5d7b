#include "console/frm_find.h"

#include "console/console_context.h"
#include "console/controls.h"
#include "console/geometry.h"
#include "console/searchable_log.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace cvd::console {

namespace {

constexpr int kBoxMinimumWidth = 240;

} // namespace

frmFind::frmFind(ConsoleContext& context, SearchableLog& target)
    : QWidget(nullptr, Qt::Tool | Qt::WindowStaysOnTopHint), m_context(context), m_target(target)
{
    setWindowTitle(u"Find"_s);
    lblFind = make_control<QLabel>(this, "lblFind", u"Search Text"_s);
    txtFind = make_control<QLineEdit>(this, "txtFind");
    btnFindNext = make_control<QPushButton>(this, "btnFindNext", u"Find Next"_s);
    btnFindPrev = make_control<QPushButton>(this, "btnFindPrev", u"Find Prev"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"Cancel"_s);
    lblFind->setBuddy(txtFind);
    txtFind->setMinimumWidth(kBoxMinimumWidth);

    auto* grid = new QGridLayout(this);
    grid->addWidget(lblFind, 0, 0);
    grid->addWidget(txtFind, 0, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnFindNext);
    buttons->addWidget(btnFindPrev);
    buttons->addWidget(btnCancel);
    grid->addLayout(buttons, 1, 0, 1, 2);

    btnFindNext->setDefault(true);
    connect(btnFindNext, &QPushButton::clicked, this, [this] { find(desk::FindDirection::Next); });
    connect(btnFindPrev, &QPushButton::clicked, this, [this] { find(desk::FindDirection::Prev); });
    connect(txtFind, &QLineEdit::returnPressed, this, [this] { find(desk::FindDirection::Next); });
    connect(btnCancel, &QPushButton::clicked, this, &QWidget::close);
    // When its log unloads, the search goes with it; the other log's search stays.
    connect(&m_target.log_window(), &QObject::destroyed, this, &QWidget::close);
    adjustSize();
    center_on_form(*this, m_target.log_window());
    publish_accessibility(*this);
}

void frmFind::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    txtFind->setFocus();
}

void frmFind::find(desk::FindDirection direction)
{
    const std::optional<qint64> marked = m_target.first_marked_row();
    if (marked) {
        m_target.unmark_row(*marked);
    }
    const std::optional<qint64> start = desk::find_start(marked, m_target.log_row_count(), direction);
    const std::optional<qint64> hit = start ? m_target.find_row(txtFind->text(), *start, direction) : std::nullopt;
    if (hit) {
        m_target.mark_row(*hit);
        return;
    }
    // The wording stands as the program has always shown it.
    m_context.state.prompter.show_box(Notice{u"Not matches found"_s, u"No Match"_s});
}

} // namespace cvd::console
