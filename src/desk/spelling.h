#pragma once

#include "core/prompter.h"

#include <QString>
#include <QStringList>
#include <optional>

namespace cvd::desk {

// A spelling dictionary as the spell check needs it. The console's is Enchant's; tests use their own.
class Dictionary
{
public:
    virtual ~Dictionary() = default;
    virtual bool check(const QString& word) = 0;
    virtual QStringList suggest(const QString& word) = 0;
    // Kept in the operator's personal word list, for good.
    virtual void add_to_personal(const QString& word) = 0;
    // Taken as right for the rest of this run.
    virtual void ignore_all(const QString& word) = 0;
};

// A word the dictionary does not know, and where it stands in the text.
struct Misspelling
{
    qsizetype start = 0;
    QString word;

    bool operator==(const Misspelling&) const = default;
};

// The first misspelt word that starts at or after `from`. Words are found by Unicode word boundaries, so an
// apostrophe inside a word stays in it; runs without letters and words with digits are not checked.
std::optional<Misspelling> next_misspelling(Dictionary& dictionary, const QString& text, qsizetype from);

// The line of text around a misspelt word, cut to about `width` characters on each side, for showing it in
// its context: before, the word, after.
struct WordContext
{
    QString before;
    QString word;
    QString after;
};
WordContext word_context(const QString& text, const Misspelling& misspelling, qsizetype width = 40);

// One run of the spell check over a message text: the operator's answer to each misspelt word moves it on
// to the next, until none is left.
class SpellWalk
{
public:
    SpellWalk(Dictionary& dictionary, QString text);

    // The word in question, or nullopt when the walk is done.
    const std::optional<Misspelling>& current() const { return m_current; }
    const QString& text() const { return m_text; }
    QStringList suggestions() const;

    void replace(const QString& replacement);
    void ignore();
    void ignore_all();
    void add();

private:
    void advance(qsizetype from);

    Dictionary& m_dictionary;
    QString m_text;
    std::optional<Misspelling> m_current;
};

// The boxes of the spell check: the switch in the general settings is off (asked from the menu only), or no
// dictionary can be found.
Notice spell_check_not_enabled();
Notice spell_check_not_available();
// Shown when the walk is done, as the spelling dialog's end.
Notice spell_check_complete();

} // namespace cvd::desk
