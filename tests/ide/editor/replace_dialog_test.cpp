// The replace dialog run through scripted prompts that fill its widgets and
// click its buttons: the next occurrence, every occurrence in each scope,
// one undo step, the prompt's text and answers, regular expressions.
#include "ide/editor/replace_dialog.h"
#include "ide/support/scripted_prompts.h"
#include "ide/support/widget_clicks.h"

#include <QTest>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;
using namespace zorvel::ide::test;

namespace {

struct Fixture {
    QsciScintilla editor;
    ScriptedPrompts prompts;
    FindState state;
    ReplaceDialog dialog{editor, prompts, state, nullptr};

    explicit Fixture(const QString& text, int start = 0, int end = 0) {
        editor.setText(text);
        select(editor, start, end);
    }
    // Opens the dialog, fills both boxes, clicks the options named, then
    // the button; returns what start() returned.
    int run(const QString& find, const QString& replacement, const QStringList& clicks,
            const QString& button) {
        prompts.dialogs.push_back([=](QDialog& d) {
            typeInto(d, QStringLiteral("&Text to find"), find);
            typeInto(d, QStringLiteral("Replace with"), replacement);
            clickAll(d, clicks);
            click(d, button);
            return d.result();
        });
        return dialog.start();
    }
};

const QString kAll = QStringLiteral("Replace All");
const QString kPrompt = QStringLiteral("&Prompt on Replace");

} // namespace

class ReplaceDialogTest : public QObject {
    Q_OBJECT

    void addColumns() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("end");
        QTest::addColumn<QString>("find");
        QTest::addColumn<QString>("replacement");
        QTest::addColumn<QStringList>("clicks");
        QTest::addColumn<QString>("expected");
    }

    void check(const QString& button) {
        QFETCH(QString, text);
        QFETCH(int, start);
        QFETCH(int, end);
        QFETCH(QString, find);
        QFETCH(QString, replacement);
        QFETCH(QStringList, clicks);
        QFETCH(QString, expected);
        Fixture f(text, start, end);
        QCOMPARE(f.run(find, replacement, clicks, button), int(QDialog::Accepted));
        QCOMPARE(f.editor.text(), expected);
        QCOMPARE(f.prompts.messages, QStringList{});
        QVERIFY(f.prompts.dialogs.empty());
    }

private slots:
    void replacesTheNextOccurrence_data() {
        addColumns();
        const QString text = "a foo b foo";
        QTest::newRow("from the start") << text << 0 << 0 << "foo"
                                        << "bar" << QStringList{} << "a bar b foo";
        QTest::newRow("from the cursor") << text << 5 << 5 << "foo"
                                         << "bar" << QStringList{} << "a foo b bar";
        QTest::newRow("the selected occurrence") << text << 2 << 5 << "foo"
                                                 << "bar" << QStringList{} << "a bar b foo";
        QTest::newRow("back") << text << 11 << 11 << "foo"
                              << "bar" << QStringList{"&Back"} << "a foo b bar";
        QTest::newRow("entire scope") << text << 5 << 5 << "foo"
                                      << "bar" << QStringList{"Entire scope"} << "a bar b foo";
        QTest::newRow("in the selection") << text << 4 << 11 << "foo"
                                          << "X" << QStringList{"Selected text"} << "a foo b X";
    }
    void replacesTheNextOccurrence() { check(QStringLiteral("OK")); }

    void replacesEveryOccurrence_data() {
        addColumns();
        const QString text = "foo foo foo foo";
        const QString sel = "Selected text";
        QTest::newRow("global") << text << 0 << 0 << "foo"
                                << "bar" << QStringList{} << "bar bar bar bar";
        QTest::newRow("from the cursor") << text << 5 << 5 << "foo"
                                         << "bar" << QStringList{} << "foo foo bar bar";
        QTest::newRow("entire scope") << text << 5 << 5 << "foo"
                                      << "bar" << QStringList{"Entire scope"} << "bar bar bar bar";
        QTest::newRow("from a selected occurrence") << text << 4 << 7 << "foo"
                                                    << "bar" << QStringList{} << "foo bar bar bar";
        QTest::newRow("back from the cursor") << text << 9 << 9 << "foo"
                                              << "bar" << QStringList{"&Back"} << "bar bar foo foo";
        QTest::newRow("selection") << text << 4 << 11 << "foo"
                                   << "bar" << QStringList{sel} << "foo bar bar foo";
        QTest::newRow("selection, longer")
            << text << 4 << 11 << "foo"
            << "longer" << QStringList{sel} << "foo longer longer foo";
        QTest::newRow("selection, removed") << text << 4 << 11 << "foo"
                                            << "" << QStringList{sel} << "foo   foo";
        QTest::newRow("selection back") << text << 4 << 11 << "foo"
                                        << "b" << QStringList{sel, "&Back"} << "foo b b foo";
        QTest::newRow("whole words") << "foo food foo" << 0 << 0 << "foo"
                                     << "x" << QStringList{"&Whole words"} << "x food x";
        QTest::newRow("replacement contains the text") << "a a" << 0 << 0 << "a"
                                                       << "aa" << QStringList{} << "aa aa";
        QTest::newRow("regular expression captures")
            << "x=1 y=22" << 0 << 0 << "([a-z])=([0-9]+)"
            << "\\2=\\1" << QStringList{"&Regular expressions"} << "1=x 22=y";
        QTest::newRow("empty matches at line starts")
            << "ab\ncd" << 0 << 0 << "^"
            << "; " << QStringList{"&Regular expressions"} << "; ab\n; cd";
        QTest::newRow("empty matches between characters")
            << "ab" << 0 << 0 << "x*"
            << "-" << QStringList{"&Regular expressions"} << "-a-b";
    }
    void replacesEveryOccurrence() { check(kAll); }

    void replaceAllIsOneUndoStep() {
        Fixture f("foo foo foo");
        f.editor.SendScintilla(QsciScintillaBase::SCI_EMPTYUNDOBUFFER);
        f.editor.insertAt("x ", 0, 0);
        f.run("foo", "bar", {}, kAll);
        QCOMPARE(f.editor.text(), QStringLiteral("x bar bar bar"));
        f.editor.undo();
        QCOMPARE(f.editor.text(), QStringLiteral("x foo foo foo"));
        f.editor.undo();
        QCOMPARE(f.editor.text(), QStringLiteral("foo foo foo"));
    }

    void promptAsksAboutEachInstance_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QList<bool>>("answers");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all: yes no yes") << kAll << QList<bool>{true, false, true} << "bar foo bar";
        QTest::newRow("all: no to all")
            << kAll << QList<bool>{false, false, false} << "foo foo foo";
        QTest::newRow("next: yes") << "OK" << QList<bool>{true} << "bar foo foo";
        QTest::newRow("next: no") << "OK" << QList<bool>{false} << "foo foo foo";
    }

    void promptAsksAboutEachInstance() {
        QFETCH(QString, button);
        QFETCH(QList<bool>, answers);
        QFETCH(QString, expected);
        Fixture f("foo foo foo");
        f.prompts.confirmations.assign(answers.begin(), answers.end());
        f.run("foo", "bar", {kPrompt}, button);
        QCOMPARE(f.editor.text(), expected);
        const QString question = "Replace this instance of \"foo\" with \"bar\" ?";
        QCOMPARE(f.prompts.confirmTexts, QStringList(answers.size(), question));
        QVERIFY(f.state.prompt);
    }

    void promptShowsTheFoundTextAndTheReplacementAsTyped() {
        Fixture f("x=1");
        f.prompts.confirmations = {true};
        f.run("([a-z])=([0-9])", "\\2=\\1", {kPrompt, "&Regular expressions"}, "OK");
        QCOMPARE(f.prompts.confirmTexts,
                 QStringList{"Replace this instance of \"x=1\" with \"\\2=\\1\" ?"});
        QCOMPARE(f.editor.text(), QStringLiteral("1=x"));
    }

    void notFoundIsReported_data() {
        QTest::addColumn<QString>("button");
        QTest::newRow("OK") << "OK";
        QTest::newRow("Replace All") << kAll;
    }

    void notFoundIsReported() {
        QFETCH(QString, button);
        Fixture f("foo foo", 2, 2);
        f.run("baz", "bar", {}, button);
        QCOMPARE(f.prompts.messages, QStringList{"\"baz\" not found"});
        QCOMPARE(f.editor.text(), QStringLiteral("foo foo"));
        QCOMPARE(selection(f.editor), qMakePair(2, 2));
    }

    void cancelChangesNothing() {
        Fixture f("foo");
        QCOMPARE(f.run("foo", "bar", {}, "Cancel"), int(QDialog::Rejected));
        QCOMPARE(f.editor.text(), QStringLiteral("foo"));
        QCOMPARE(f.state.history, QStringList{});
    }

    void buttonsNeedTextToFind() {
        Fixture f("foo");
        QList<bool> enabled;
        f.prompts.dialogs.push_back([&](QDialog& d) {
            enabled << isEnabled(d, "OK") << isEnabled(d, kAll);
            typeInto(d, "&Text to find", "f");
            enabled << isEnabled(d, "OK") << isEnabled(d, kAll);
            typeInto(d, "&Text to find", "");
            enabled << isEnabled(d, "OK") << isEnabled(d, kAll);
            return int(QDialog::Rejected);
        });
        f.dialog.start();
        QCOMPARE(enabled, (QList<bool>{false, false, true, true, false, false}));
    }

    void historiesAndSeeding() {
        Fixture f("one two one", 4, 7);
        QString seeded;
        f.prompts.dialogs.push_back([&](QDialog& d) {
            seeded = boxLabelled(d, "&Text to find")->currentText();
            typeInto(d, "Replace with", "2");
            click(d, kAll);
            return d.result();
        });
        f.dialog.start();
        QCOMPARE(seeded, QStringLiteral("two"));
        f.run("one", "1", {"Entire scope"}, kAll);
        f.run("two", "1", {}, "Cancel");
        QCOMPARE(f.editor.text(), QStringLiteral("1 2 1"));
        QCOMPARE(f.state.history, (QStringList{"one", "two"}));
        QCOMPARE(f.state.replaceHistory, (QStringList{"1", "2"}));
        QCOMPARE(f.dialog.windowTitle(), QStringLiteral("Find and replace text..."));
    }
};

QTEST_MAIN(ReplaceDialogTest)
#include "replace_dialog_test.moc"
