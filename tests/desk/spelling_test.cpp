#include "desk/help_links.h"
#include "desk/spelling.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace cvd::desk {
namespace {

// Knows a handful of words, in any case; records what it was asked to learn.
class FakeDictionary : public Dictionary
{
public:
    bool check(const QString& word) override
    {
        const QString lower = word.toLower();
        return m_known.contains(lower) || m_session.contains(lower) || personal.contains(lower);
    }
    QStringList suggest(const QString& word) override { return {word + u"!"_s, u"the"_s}; }
    void add_to_personal(const QString& word) override { personal.insert(word.toLower()); }
    void ignore_all(const QString& word) override { m_session.insert(word.toLower()); }

    QSet<QString> personal;

private:
    QSet<QString> m_known{u"the"_s, u"pump"_s, u"is"_s, u"down"_s, u"don't"_s, u"call"_s, u"me"_s};
    QSet<QString> m_session;
};

TEST(SpellWalk, ReplaceIgnoreIgnoreAllAndAddEachMoveOnAndShapeTheText)
{
    FakeDictionary dictionary;
    // Digits, punctuation and a known word with an apostrophe are passed over.
    SpellWalk walk(dictionary, u"Teh pump 42 is dwn, don't cal\nR2D2 Teh dwn Zork cal."_s);
    ASSERT_EQ(walk.current(), (Misspelling{0, u"Teh"_s}));
    EXPECT_EQ(walk.suggestions(), (QStringList{u"Teh!"_s, u"the"_s}));
    walk.replace(u"The"_s);
    ASSERT_EQ(walk.current(), (Misspelling{15, u"dwn"_s}));
    walk.ignore(); // once: the later "dwn" is asked again
    ASSERT_EQ(walk.current(), (Misspelling{26, u"cal"_s}));
    const WordContext line = word_context(walk.text(), *walk.current(), 10);
    EXPECT_EQ(line.before, u"dwn, don't "_s.right(10));
    EXPECT_EQ(line.after, QString()); // the line ends at the word
    walk.ignore_all();                // the last "cal" is not asked again
    ASSERT_EQ(walk.current(), (Misspelling{35, u"Teh"_s}));
    walk.replace(u"the"_s);
    ASSERT_EQ(walk.current(), (Misspelling{39, u"dwn"_s}));
    walk.replace(u"down"_s);
    ASSERT_EQ(walk.current(), (Misspelling{44, u"Zork"_s}));
    walk.add();
    EXPECT_FALSE(walk.current().has_value());
    EXPECT_EQ(walk.text(), u"The pump 42 is dwn, don't cal\nR2D2 the down Zork cal."_s);
    EXPECT_TRUE(dictionary.personal.contains(u"zork"_s));
}

TEST(HelpLinks, TheHelpBesideTheProgramComesFirstThenTheInstalledOne)
{
    QTemporaryDir root;
    const QString program = root.filePath(u"prefix/bin/"_s);
    QDir().mkpath(program);
    EXPECT_EQ(find_help_index(program), QString()); // neither: the caller shows "Help Not Available"
    const QString installed = root.filePath(u"prefix/share/corvane-desk/help/index.html"_s);
    const QString beside = root.filePath(u"prefix/bin/help/index.html"_s);
    for (const QString& path : {installed, beside}) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(find_help_index(program), path);
    }
    EXPECT_EQ(browser_not_found().text,
              u"Your internet browser couldn't be started.  Our website is https://halvern.example/corvane-desk/"_s);
}

} // namespace
} // namespace cvd::desk
