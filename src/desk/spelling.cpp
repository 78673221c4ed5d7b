#include "desk/spelling.h"

#include <QTextBoundaryFinder>

using namespace Qt::StringLiterals;

namespace cvd::desk {

namespace {

bool worth_checking(QStringView word)
{
    bool has_letter = false;
    for (const QChar ch : word) {
        if (ch.isDigit()) {
            return false;
        }
        has_letter = has_letter || ch.isLetter();
    }
    return has_letter;
}

} // namespace

std::optional<Misspelling> next_misspelling(Dictionary& dictionary, const QString& text, qsizetype from)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    finder.setPosition(from);
    if (!finder.isAtBoundary()) {
        finder.toNextBoundary();
    }
    qsizetype start = finder.position();
    while (start >= 0 && start < text.size()) {
        const qsizetype end = finder.toNextBoundary();
        if (end < 0) {
            break;
        }
        const QStringView word = QStringView(text).mid(start, end - start);
        if (worth_checking(word) && !dictionary.check(word.toString())) {
            return Misspelling{start, word.toString()};
        }
        start = end;
    }
    return std::nullopt;
}

WordContext word_context(const QString& text, const Misspelling& misspelling, qsizetype width)
{
    const qsizetype end = misspelling.start + misspelling.word.size();
    qsizetype line_start = text.lastIndexOf(u'\n', misspelling.start - 1) + 1;
    qsizetype line_end = text.indexOf(u'\n', end);
    if (line_end < 0) {
        line_end = text.size();
    }
    line_start = std::max(line_start, misspelling.start - width);
    line_end = std::min(line_end, end + width);
    return {text.mid(line_start, misspelling.start - line_start).remove(u'\r'), misspelling.word,
            text.mid(end, line_end - end).remove(u'\r')};
}

SpellWalk::SpellWalk(Dictionary& dictionary, QString text) : m_dictionary(dictionary), m_text(std::move(text))
{
    advance(0);
}

QStringList SpellWalk::suggestions() const
{
    return m_current ? m_dictionary.suggest(m_current->word) : QStringList();
}

void SpellWalk::replace(const QString& replacement)
{
    if (!m_current) {
        return;
    }
    m_text.replace(m_current->start, m_current->word.size(), replacement);
    // The replacement is the operator's choice: it is not checked again.
    advance(m_current->start + replacement.size());
}

void SpellWalk::ignore()
{
    if (m_current) {
        advance(m_current->start + m_current->word.size());
    }
}

void SpellWalk::ignore_all()
{
    if (m_current) {
        m_dictionary.ignore_all(m_current->word);
        ignore();
    }
}

void SpellWalk::add()
{
    if (m_current) {
        m_dictionary.add_to_personal(m_current->word);
        ignore();
    }
}

void SpellWalk::advance(qsizetype from)
{
    m_current = next_misspelling(m_dictionary, m_text, from);
}

Notice spell_check_not_enabled()
{
    return {u"Spell checking is not enabled.  To use spell checking, you must have a spelling dictionary installed "
            u"on this computer, and the spell checkig option must be enabled on the General Settings screen "
            u"(Tools -> Settings -> General -> Enable Spell Check)"_s,
            u"Spell Checking Not Enabled"_s};
}

Notice spell_check_not_available()
{
    return {u"Can't find spelling dictionary files"_s, u"Spell Check Not Available"_s};
}

Notice spell_check_complete()
{
    return {u"The spelling check is complete."_s, u"Spell Check"_s, BoxIcon::Information};
}

} // namespace cvd::desk
