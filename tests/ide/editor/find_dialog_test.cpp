// The find dialog driven through its widgets: directions, options, scopes
// and origins, the not-found message, the history, the OK button's state,
// seeding from the selection and the flag word.
#include "ide/editor/find_dialog.h"
#include "ide/support/scripted_prompts.h"
#include "ide/support/widget_clicks.h"

#include <QGroupBox>
#include <QTest>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;
using namespace zorvel::ide::test;

namespace {

const QString kFindLabel = QStringLiteral("&Text to find");
// Positions:  foo 0-3, Foo 4-7, food 8-12, foo 13-16, bar 17-20, foo 21-24.
const QString kText = QStringLiteral("foo Foo food foo\nbar foo");

struct Fixture {
    QsciScintilla editor;
    ScriptedPrompts prompts;
    FindState state;
    FindDialog dialog{editor, prompts, state, nullptr};

    explicit Fixture(const QString& text, int start = 0, int end = 0) {
        editor.setText(text);
        select(editor, start, end);
    }
    // Opens the dialog, types the text, clicks the buttons named, then OK.
    void search(const QString& text, const QStringList& clicks = {}) {
        dialog.start();
        typeInto(dialog, kFindLabel, text);
        clickAll(dialog, clicks);
        click(dialog, QStringLiteral("OK"));
    }
};

} // namespace

class FindDialogTest : public QObject {
    Q_OBJECT

private slots:
    void findsAsTheOptionsSay_data() {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("clicks");
        QTest::addColumn<int>("foundAt");
        QTest::addColumn<int>("foundEnd");
        const QString back = "&Back", selected = "Selected text", entire = "Entire scope";
        QTest::newRow("forward from the cursor") << 5 << 5 << "foo" << QStringList{} << 8 << 11;
        QTest::newRow("forward after the selection") << 0 << 3 << "foo" << QStringList{} << 4 << 7;
        QTest::newRow("back from the cursor") << 14 << 14 << "foo" << QStringList{back} << 8 << 11;
        QTest::newRow("back before the selection")
            << 13 << 16 << "foo" << QStringList{back} << 8 << 11;
        QTest::newRow("any case") << 0 << 0 << "Foo" << QStringList{} << 0 << 3;
        QTest::newRow("case sensitive")
            << 0 << 0 << "Foo" << QStringList{"&Case sensitive"} << 4 << 7;
        QTest::newRow("whole words") << 5 << 5 << "foo" << QStringList{"&Whole words"} << 13 << 16;
        QTest::newRow("plain text is literal") << 0 << 0 << "fo+d" << QStringList{} << -1 << -1;
        QTest::newRow("regular expression")
            << 0 << 0 << "fo+d" << QStringList{"&Regular expressions"} << 8 << 12;
        QTest::newRow("regular expression group")
            << 0 << 0 << "b(a)r" << QStringList{"&Regular expressions"} << 17 << 20;
        QTest::newRow("from the cursor at the end")
            << 22 << 22 << "foo" << QStringList{} << -1 << -1;
        QTest::newRow("entire scope") << 22 << 22 << "foo" << QStringList{entire} << 0 << 3;
        QTest::newRow("entire scope back")
            << 0 << 0 << "foo" << QStringList{back, entire} << 21 << 24;
        QTest::newRow("selected text") << 8 << 16 << "foo" << QStringList{selected} << 8 << 11;
        QTest::newRow("selected text back")
            << 8 << 16 << "foo" << QStringList{selected, back} << 13 << 16;
        QTest::newRow("selected text whole words")
            << 8 << 16 << "foo" << QStringList{selected, "&Whole words"} << 13 << 16;
        QTest::newRow("outside the selection")
            << 8 << 16 << "bar" << QStringList{selected} << -1 << -1;
    }

    void findsAsTheOptionsSay() {
        QFETCH(int, start);
        QFETCH(int, end);
        QFETCH(QString, query);
        QFETCH(QStringList, clicks);
        QFETCH(int, foundAt);
        QFETCH(int, foundEnd);
        Fixture f(kText, start, end);
        f.search(query, clicks);
        QVERIFY(!f.dialog.isVisible());
        if (foundAt < 0) {
            QCOMPARE(f.prompts.messages, QStringList{"\"" + query + "\" not found"});
            QCOMPARE(selection(f.editor), qMakePair(start, end));
            return;
        }
        QCOMPARE(f.prompts.messages, QStringList{});
        QCOMPARE(selection(f.editor), qMakePair(foundAt, foundEnd));
    }

    void repeatedSearchesWalkThroughTheText() {
        Fixture f(kText);
        QList<int> starts;
        for (int i = 0; i < 4; ++i) {
            f.search("foo");
            starts.append(selection(f.editor).first);
        }
        QCOMPARE(starts, (QList<int>{0, 4, 8, 13}));
    }

    void notFoundMessageIsExact() {
        Fixture f("alpha beta");
        f.search("gam ma");
        QCOMPARE(f.prompts.messages, QStringList{"\"gam ma\" not found"});
    }

    void badRegularExpressionIsReportedNotFound() {
        Fixture f("a(b");
        f.search("a(", {"&Regular expressions"});
        QCOMPARE(f.prompts.messages, QStringList{"\"a(\" not found"});
        QCOMPARE(f.editor.text(), QStringLiteral("a(b"));
    }

    void historyIsMostRecentFirstWithoutDuplicates() {
        Fixture f(kText);
        for (const char* text : {"one", "two", "one", "three"})
            f.search(text);
        const QStringList expected{"three", "one", "two"};
        QCOMPARE(f.state.history, expected);
        f.dialog.start();
        QComboBox* box = boxLabelled(f.dialog, kFindLabel);
        QVERIFY(box);
        QStringList shown;
        for (int i = 0; i < box->count(); ++i)
            shown.append(box->itemText(i));
        QCOMPARE(shown, expected);
        QCOMPARE(box->currentText(), QStringLiteral("three"));
    }

    void okEnabledOnlyWithText() {
        Fixture f(kText);
        f.dialog.start();
        QVERIFY(f.dialog.isVisible());
        QVERIFY(!isEnabled(f.dialog, "OK"));
        typeInto(f.dialog, kFindLabel, "f");
        QVERIFY(isEnabled(f.dialog, "OK"));
        typeInto(f.dialog, kFindLabel, "");
        QVERIFY(!isEnabled(f.dialog, "OK"));
        click(f.dialog, "OK");
        QVERIFY(f.dialog.isVisible());
        QCOMPARE(f.prompts.messages, QStringList{});
    }

    void cancelSearchesNothing() {
        Fixture f(kText, 2, 2);
        f.dialog.start();
        typeInto(f.dialog, kFindLabel, "foo");
        click(f.dialog, "Cancel");
        QVERIFY(!f.dialog.isVisible());
        QCOMPARE(selection(f.editor), qMakePair(2, 2));
        QCOMPARE(f.state.history, QStringList{});
    }

    void seededFromTheSelection_data() {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");
        QTest::addColumn<QString>("seed");
        QTest::newRow("one line selected") << 4 << 7 << "Foo";
        QTest::newRow("nothing selected") << 4 << 4 << "last";
        QTest::newRow("two lines selected") << 13 << 20 << "last";
    }

    void seededFromTheSelection() {
        QFETCH(int, start);
        QFETCH(int, end);
        QFETCH(QString, seed);
        Fixture f(kText, start, end);
        f.state.text = "last";
        f.dialog.start();
        QCOMPARE(boxLabelled(f.dialog, kFindLabel)->currentText(), seed);
    }

    void flagWordRoundTrips_data() {
        QTest::addColumn<int>("flags");
        QTest::newRow("none") << 0;
        QTest::newRow("case sensitive") << kFindCaseSensitive;
        QTest::newRow("regular expressions") << kFindRegExp;
        QTest::newRow("whole words") << kFindWholeWords;
        QTest::newRow("backward") << kFindBackward;
        QTest::newRow("all") << 16 + 32 + 64 + 128;
        QTest::newRow("other bits kept") << 1 + 16 + 256;
    }

    void flagWordRoundTrips() {
        QFETCH(int, flags);
        Fixture f(kText);
        f.state.text = "foo";
        f.state.flags = flags;
        f.dialog.start();
        QCOMPARE(isChecked(f.dialog, "&Case sensitive"), (flags & 16) != 0);
        QCOMPARE(isChecked(f.dialog, "&Regular expressions"), (flags & 32) != 0);
        QCOMPARE(isChecked(f.dialog, "&Whole words"), (flags & 64) != 0);
        QCOMPARE(isChecked(f.dialog, "&Back"), (flags & 128) != 0);
        QCOMPARE(isChecked(f.dialog, "Forwar&d"), (flags & 128) == 0);
        click(f.dialog, "OK");
        QCOMPARE(f.state.flags, flags);
    }

    void clickedOptionsAreReadBack() {
        Fixture f(kText, 0, 16);
        f.search("foo",
                 {"&Case sensitive", "&Whole words", "&Back", "Selected text", "Entire scope"});
        QCOMPARE(f.state.flags, kFindCaseSensitive | kFindWholeWords | kFindBackward);
        QVERIFY(f.state.selectedScope);
        QVERIFY(f.state.entireScope);
        f.dialog.start();
        QVERIFY(!isChecked(f.dialog, "Forwar&d"));
        QVERIFY(!isChecked(f.dialog, "Global"));
        QVERIFY(!isChecked(f.dialog, "From cursor"));
        QVERIFY(isChecked(f.dialog, "Selected text") && isChecked(f.dialog, "Entire scope"));
        clickAll(f.dialog, {"Forwar&d", "Global", "From cursor"});
        QVERIFY(!isChecked(f.dialog, "&Back"));
        QVERIFY(!isChecked(f.dialog, "Selected text"));
        QVERIFY(!isChecked(f.dialog, "Entire scope"));
    }

    void labelsAndTitle() {
        Fixture f(kText);
        QCOMPARE(f.dialog.windowTitle(), QStringLiteral("Find text..."));
        QStringList groups;
        for (QGroupBox* group : f.dialog.findChildren<QGroupBox*>())
            groups.append(group->title());
        QCOMPARE(groups, (QStringList{"Options", "Direction", "Scope", "Origin"}));
        f.dialog.start();
        QVERIFY(isChecked(f.dialog, "Global") && isChecked(f.dialog, "From cursor"));
        QVERIFY(qobject_cast<QPushButton*>(buttonNamed(f.dialog, "OK"))->isDefault());
    }
};

QTEST_MAIN(FindDialogTest)
#include "find_dialog_test.moc"
