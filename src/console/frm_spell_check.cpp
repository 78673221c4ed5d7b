#include "console/frm_spell_check.h"

#include "console/controls.h"
#include "console/enchant_dictionary.h"
#include "core/app_state.h"
#include "core/prompter.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace cvd::console {

frmSpellCheck::frmSpellCheck(ConsoleContext& context, QWidget* parent, desk::SpellWalk& walk)
    : QDialog(parent), m_context(context), m_walk(walk)
{
    setWindowTitle(u"Spell Check"_s);
    auto* lblNotInDictionary = make_control<QLabel>(this, "lblNotInDictionary", u"Not in dictionary:"_s);
    lblContext = make_control<QLabel>(this, "lblContext");
    lblContext->setTextFormat(Qt::RichText);
    lblContext->setWordWrap(true);
    lblContext->setFrameShape(QFrame::StyledPanel);
    lblContext->setMinimumHeight(fontMetrics().lineSpacing() * 3);
    auto* lblChangeTo = make_control<QLabel>(this, "lblChangeTo", u"Change &to:"_s);
    txtChangeTo = make_control<QLineEdit>(this, "txtChangeTo");
    lblChangeTo->setBuddy(txtChangeTo);
    auto* lblSuggestions = make_control<QLabel>(this, "lblSuggestions", u"&Suggestions:"_s);
    lstSuggestions = make_control<QListWidget>(this, "lstSuggestions");
    lblSuggestions->setBuddy(lstSuggestions);
    btnReplace = make_control<QPushButton>(this, "btnReplace", u"&Replace"_s);
    btnReplace->setDefault(true);
    btnIgnore = make_control<QPushButton>(this, "btnIgnore", u"&Ignore"_s);
    btnIgnoreAll = make_control<QPushButton>(this, "btnIgnoreAll", u"Ignore &All"_s);
    btnAdd = make_control<QPushButton>(this, "btnAdd", u"A&dd"_s);
    btnCancel = make_control<QPushButton>(this, "btnCancel", u"Cancel"_s);

    auto* buttons = new QVBoxLayout;
    for (QPushButton* button : {btnReplace, btnIgnore, btnIgnoreAll, btnAdd}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    auto* layout = new QGridLayout(this);
    layout->addWidget(lblNotInDictionary, 0, 0);
    layout->addWidget(lblContext, 1, 0);
    layout->addWidget(lblChangeTo, 2, 0);
    layout->addWidget(txtChangeTo, 3, 0);
    layout->addWidget(lblSuggestions, 4, 0);
    layout->addWidget(lstSuggestions, 5, 0);
    layout->addLayout(buttons, 1, 1, 5, 1);
    layout->setColumnStretch(0, 1);
    setMinimumWidth(fontMetrics().averageCharWidth() * 72);

    connect(lstSuggestions, &QListWidget::currentTextChanged, txtChangeTo, &QLineEdit::setText);
    connect(lstSuggestions, &QListWidget::itemDoubleClicked, this, &frmSpellCheck::on_replace);
    connect(btnReplace, &QPushButton::clicked, this, &frmSpellCheck::on_replace);
    connect(btnIgnore, &QPushButton::clicked, this, [this] {
        m_walk.ignore();
        show_current();
    });
    connect(btnIgnoreAll, &QPushButton::clicked, this, [this] {
        m_walk.ignore_all();
        show_current();
    });
    connect(btnAdd, &QPushButton::clicked, this, [this] {
        m_walk.add();
        show_current();
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    publish_accessibility(*this);
    show_current();
}

void frmSpellCheck::on_replace()
{
    m_walk.replace(txtChangeTo->text());
    show_current();
}

void frmSpellCheck::show_current()
{
    const std::optional<desk::Misspelling>& current = m_walk.current();
    if (!current) {
        m_context.state.prompter.show_box(desk::spell_check_complete());
        accept();
        return;
    }
    const desk::WordContext line = desk::word_context(m_walk.text(), *current);
    lblContext->setText(line.before.toHtmlEscaped() + u"<b><span style=\"color:#b00000\">"_s +
                        line.word.toHtmlEscaped() + u"</span></b>"_s + line.after.toHtmlEscaped());
    lblContext->setAccessibleName(line.before + line.word + line.after);
    const QStringList suggestions = m_walk.suggestions();
    lstSuggestions->clear();
    lstSuggestions->addItems(suggestions);
    txtChangeTo->setText(suggestions.value(0, current->word));
    if (!suggestions.isEmpty()) {
        lstSuggestions->setCurrentRow(0);
    }
    txtChangeTo->setFocus();
    txtChangeTo->selectAll();
}

std::optional<QString> check_spelling_with(ConsoleContext& context, QWidget* parent, desk::Dictionary& dictionary,
                                           const QString& text)
{
    desk::SpellWalk walk(dictionary, text);
    if (!walk.current()) {
        context.state.prompter.show_box(desk::spell_check_complete());
        return text;
    }
    frmSpellCheck dialog(context, parent, walk);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    // The message box is a Qt text box: it keeps line breaks as they are, and no paragraph mark is added at
    // the end, so the text comes back as the walk left it, without a cut last character or CR LF pairs.
    return walk.text();
}

std::optional<QString> check_spelling(ConsoleContext& context, QWidget* parent, const QString& text)
{
    const std::unique_ptr<EnchantDictionary> dictionary = EnchantDictionary::open();
    if (!dictionary) {
        context.state.prompter.show_box(desk::spell_check_not_available());
        return std::nullopt;
    }
    return check_spelling_with(context, parent, *dictionary, text);
}

} // namespace cvd::console
