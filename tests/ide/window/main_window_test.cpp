// The main window driven as a user drives it: start-up state, menus and
// shortcuts, the file commands with the unsaved-changes question, builds
// through gpasm with the message pane and listing windows, the double-click
// on an error, the settings file, and the programmer command.
#include "ide/support/ide_fixture.h"
#include "ide/support/widget_clicks.h"
#include "ide/window/listing_window.h"
#include "ide/window/source_printer.h"

#include <QComboBox>
#include <QFileInfo>
#include <QMenuBar>
#include <QMimeData>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;
using namespace zorvel::ide::test;

namespace {

const QString kProgram = QStringLiteral("DEVICE 16F877\r\n"
                                        "DIM COUNT AS BYTE\r\n"
                                        "COUNT = 5\r\n"
                                        "LOOP1:\r\n"
                                        "INC COUNT\r\n"
                                        "GOTO LOOP1\r\n");

// The third line holds the error.
const QString kBroken = QStringLiteral("DEVICE 16F84\r\nDIM A AS BYTE\r\nA = \r\nEND\r\n");

QStringList paneLines(QsciScintilla* pane) {
    return pane->text().split('\n');
}

// A double click as the window system delivers it on a line of a pane:
// press, release, then the double-click press and its release.
void doubleClickLine(QsciScintilla* pane, int line) {
    const long pos = pane->SendScintilla(QsciScintilla::SCI_POSITIONFROMLINE, line);
    const int x = pane->SendScintilla(QsciScintilla::SCI_POINTXFROMPOSITION, 0UL, pos) + 5;
    const int y = pane->SendScintilla(QsciScintilla::SCI_POINTYFROMPOSITION, 0UL, pos) + 3;
    QTest::mouseClick(pane->viewport(), Qt::LeftButton, {}, QPoint(x, y));
    QTest::mouseDClick(pane->viewport(), Qt::LeftButton, {}, QPoint(x, y));
}

// The line of the selection's start, -1 without a selection.
int selectedLine(QsciScintilla* editor) {
    int fromLine, fromCol, toLine, toCol;
    editor->getSelection(&fromLine, &fromCol, &toLine, &toCol);
    return fromLine == toLine ? fromLine : -2;
}

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void startsWithEmptyFileAndCommandsDisabled() {
        IdeFixture f;
        MainWindow& w = f.start();
        QCOMPARE(w.titleText(), QString("   - ZORVEL V1.10 -    "));
        QVERIFY(!f.action("compileAction")->isEnabled());
        QVERIFY(!f.action("programAction")->isEnabled());
        QVERIFY(!f.action("saveButtonAction")->isEnabled());
        QVERIFY(!f.action("showAsmAction")->isChecked());
        QVERIFY(!f.action("showHexAction")->isChecked());
        QVERIFY(w.sourcePath().isEmpty());
        QVERIFY2(!w.windowIcon().pixmap(32, 32).isNull(), "the icon did not load");
    }

    void menuItemsHaveTheirShortcuts_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("key");
        const char* rows[][2] = {
            {"newAction", "Ctrl+N"},         {"openAction", "Ctrl+O"},
            {"saveAction", "Ctrl+S"},        {"saveAsAction", "Ctrl+Shift+A"},
            {"printAction", "Ctrl+P"},       {"printSetupAction", "Ctrl+T"},
            {"redoAction", "Ctrl+Shift+Z"},  {"undoAction", "Ctrl+Z"},
            {"cutAction", "Ctrl+X"},         {"copyAction", "Ctrl+C"},
            {"pasteAction", "Ctrl+V"},       {"selectAllAction", "Ctrl+A"},
            {"findAction", "Ctrl+F"},        {"replaceAction", "Ctrl+R"},
            {"upperCaseAction", "Ctrl+F5"},  {"lowerCaseAction", "Ctrl+Shift+F5"},
            {"compileAction", "F9"},         {"programAction", "F10"},
            {"epicDetailsAction", "Ctrl+E"}, {"externalDetailsAction", "Ctrl+Q"},
            {"showAsmAction", "Ctrl+W"},     {"showHexAction", "Ctrl+H"},
            {"calculatorAction", "F2"},      {"helpAction", "F1"}};
        for (auto& r : rows)
            QTest::newRow(r[0]) << r[0] << r[1];
    }
    void menuItemsHaveTheirShortcuts() {
        QFETCH(QString, action);
        QFETCH(QString, key);
        IdeFixture f;
        f.start();
        QAction* a = f.window->findChild<QAction*>(action);
        QVERIFY2(a, qPrintable(action));
        QCOMPARE(a->shortcut(), QKeySequence(key));
    }

    void toolBarHintsInOrder() {
        IdeFixture f;
        MainWindow& w = f.start();
        QStringList hints;
        for (QAction* a : w.findChild<QToolBar*>("mainToolBar")->actions())
            hints << a->toolTip();
        QCOMPARE(hints, QStringList({"New File", "Open File", "Save File", "Print", "Cut", "Copy",
                                     "Paste", "Find", "Compile Basic", "Send code to Programmer",
                                     "Show/Hide the Assembler listing"}));
    }

    void typingEnablesCompileAndSave() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.show();
        QTest::keyClicks(w.editor(), "DEVICE 16F84");
        QVERIFY(f.action("compileAction")->isEnabled());
        QVERIFY(f.action("saveButtonAction")->isEnabled());
        QVERIFY(f.action("asmButtonAction")->isEnabled());
        QVERIFY(w.editor()->isModified());
    }

    // An example from a folder with blanks and non-ASCII letters, edited, then
    // F9 pressed on the keyboard.
    void openBuildAndShowListings() {
        IdeFixture f;
        const QString source = f.path("dossier à blancs/ring buffer.bas");
        QVERIFY(QDir().mkpath(QFileInfo(source).absolutePath()));
        QVERIFY(QFile::copy(ZORVEL_SOURCE_DIR "/examples/ring_buffer.bas", source));
        f.prompts.fileNames.push_back(source);
        MainWindow& w = f.start();
        w.show();
        QVERIFY(QTest::qWaitForWindowActive(&w));
        w.openFile();
        QCOMPARE(w.sourcePath(), source);
        QCOMPARE(w.titleText(), "   - ZORVEL V1.10 -    " + source);
        QCOMPARE(f.prompts.fileDialogs.first().title, QString("Open Zorvel File"));
        QVERIFY(f.action("compileAction")->isEnabled());
        QVERIFY(!f.action("saveButtonAction")->isEnabled());
        QCOMPARE(w.settings().workingFolder, QFileInfo(source).absolutePath());

        w.editor()->setFocus();
        w.editor()->setCursorPosition(w.editor()->lines() - 1, 0);
        QTest::keyClicks(w.editor(), "' edited in the IDE");
        QTest::keyClick(w.editor(), Qt::Key_Return);
        QTest::keyClick(w.editor(), Qt::Key_F9);
        QVERIFY2(f.prompts.messages.isEmpty(), qPrintable(f.prompts.messages.join('|')));
        const QStringList lines = paneLines(w.messagePane());
        QVERIFY2(lines.first().startsWith("\tZORVEL COMPILED OK.  "), qPrintable(lines.join('|')));
        QVERIFY(lines.first().endsWith(" Words used"));
        const QRegularExpression variables(
            "^\\t\\d+ Variables used in the 16F877 from a possible 368$");
        QVERIFY2(!lines.filter(variables).isEmpty(), qPrintable(lines.join('|')));
        QVERIFY(readText(source).contains("' edited in the IDE"));
        QVERIFY(!w.editor()->isModified());
        QVERIFY(w.asmWindow()->view()->text().contains("#include \"ring buffer.zvl\""));
        QVERIFY(w.hexWindow()->view()->text().startsWith(":"));
        QVERIFY(QFileInfo::exists(f.path("dossier à blancs/ring buffer.hex")));
        QVERIFY(f.action("programAction")->isEnabled());
    }

    void tooShortTextBuildsNothing() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.editor()->setText("END");
        f.action("compileAction")->trigger();
        QVERIFY(f.prompts.fileDialogs.isEmpty()); // no Save As asked
        QVERIFY(w.messagePane()->text().isEmpty());
    }

    void doubleClickOnErrorSelectsItsLine() {
        IdeFixture f;
        const QString source = f.path("broken.bas");
        QVERIFY(writeText(source, kBroken));
        MainWindow& w = f.start();
        w.resize(800, 600);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.openPath(source));
        f.action("compileAction")->trigger();
        const QStringList lines = paneLines(w.messagePane());
        QVERIFY2(lines.first().startsWith("Error at Line [3]\tIn file [broken.bas]"),
                 qPrintable(lines.join('|')));
        w.editor()->setCursorPosition(0, 0);
        doubleClickLine(w.messagePane(), 0);
        QCOMPARE(selectedLine(w.editor()), 2);
        QCOMPARE(w.editor()->selectedText(), QString("A = "));
        QVERIFY(!f.action("programAction")->isEnabled());
    }

    // An error in an included file opens that file at the line.
    void doubleClickOnIncludedFileError() {
        IdeFixture f;
        const QString main = f.path("main.bas");
        QVERIFY(writeText(main, "DEVICE 16F84\r\nINCLUDE \"parts.inc\"\r\nEND\r\n"));
        QVERIFY(writeText(f.path("parts.inc"), "DIM B AS BYTE\r\nB = \r\n"));
        MainWindow& w = f.start();
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.openPath(main));
        f.action("compileAction")->trigger();
        const QStringList lines = paneLines(w.messagePane());
        QVERIFY2(lines.first().startsWith("Error at Line [2]\tIn file [PARTS.INC]") ||
                     lines.first().startsWith("Error at Line [2]\tIn file [parts.inc]"),
                 qPrintable(lines.join('|')));
        doubleClickLine(w.messagePane(), 0);
        QCOMPARE(QFileInfo(w.sourcePath()).fileName().toLower(), QString("parts.inc"));
        QCOMPARE(selectedLine(w.editor()), 1);
    }

    // An assembler error names the .asm file: the listing window shows the line.
    void doubleClickOnAssemblerError() {
        IdeFixture f;
        const QString source = f.path("asm.bas");
        QVERIFY(writeText(source, "DEVICE 16F84\r\nASM\r\n\tmovlw no_such_symbol\r\n"
                                  "ENDASM\r\nEND\r\n"));
        MainWindow& w = f.start();
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.openPath(source));
        f.action("compileAction")->trigger();
        const QStringList lines = paneLines(w.messagePane());
        QVERIFY2(lines.first().startsWith("Error[113]"), qPrintable(lines.join('|')));
        doubleClickLine(w.messagePane(), 0);
        QVERIFY(f.action("showAsmAction")->isChecked());
        QsciScintilla* listing = w.asmWindow()->view();
        QVERIFY(listing->selectedText().contains("no_such_symbol"));
        QCOMPARE(w.sourcePath(), source);
    }

    // New, Open and closing ask first when the text has changed; Yes saves.
    void unsavedChangesQuestion_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<bool>("wentOn");
        for (const char* c : {"new", "open"}) {
            QTest::addRow("%s yes", c) << c << int(Prompts::Answer::Yes) << true << true;
            QTest::addRow("%s no", c) << c << int(Prompts::Answer::No) << false << true;
            QTest::addRow("%s cancel", c) << c << int(Prompts::Answer::Cancel) << false << false;
        }
        QTest::addRow("exit yes") << "exit" << int(Prompts::Answer::Yes) << true << true;
        QTest::addRow("exit no") << "exit" << int(Prompts::Answer::No) << false << true;
    }
    void unsavedChangesQuestion() {
        QFETCH(QString, command);
        QFETCH(int, answer);
        QFETCH(bool, saved);
        QFETCH(bool, wentOn);
        IdeFixture f;
        const QString source = f.path("a.bas");
        const QString other = f.path("b.bas");
        QVERIFY(writeText(source, kProgram));
        QVERIFY(writeText(other, "' other file\r\nEND\r\n"));
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        w.editor()->append("' changed\r\n");
        QVERIFY(w.editor()->isModified());
        f.prompts.answers.push_back(Prompts::Answer(answer));
        if (command == "open") f.prompts.fileNames.push_back(other);
        if (command == "new") w.newFile();
        if (command == "open") w.openFile();
        if (command == "exit") w.close();

        QCOMPARE(f.prompts.questionsWithCancel, QList<bool>{command != "exit"});
        QCOMPARE(readText(source).contains("' changed"), saved);
        if (command == "exit") {
            QCOMPARE(f.prompts.endedWith, 0);
            QVERIFY(readText(f.settingsPath()).contains("[AsmBox]"));
            return;
        }
        const QString expected = !wentOn ? source : command == "new" ? QString() : other;
        QCOMPARE(w.sourcePath(), expected);
    }

    // Yes to the question on closing, then a cancelled Save As: the window
    // stays open with the text rather than closing without it.
    void closingKeepsTheTextWhenItsSaveIsCancelled() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.show();
        w.editor()->setText(kProgram);
        f.prompts.answers.push_back(Prompts::Answer::Yes);
        f.prompts.fileNames.push_back(QString());
        QVERIFY(!w.close());
        QCOMPARE(f.prompts.endedWith, -1);
        QVERIFY(w.isVisible());
        QCOMPARE(w.editor()->text(), kProgram);
    }

    void saveAsAsksForAName() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.editor()->setText(kProgram);
        f.prompts.fileNames.push_back(f.path("named"));
        QVERIFY(w.save());
        QCOMPARE(f.prompts.fileDialogs.first().title, QString("Save As"));
        QCOMPARE(w.sourcePath(), f.path("named.bas"));
        QCOMPARE(readText(f.path("named.bas")), kProgram);
        QCOMPARE(w.titleText(), "   - ZORVEL V1.10 -    " + f.path("named.bas"));
    }

    void readOnlySourceIsNotReplaced() {
        IdeFixture f;
        const QString source = f.path("locked.bas");
        QVERIFY(writeText(source, kProgram));
        QFile::setPermissions(source, QFile::ReadOwner | QFile::ReadGroup);
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        w.editor()->append("' my edit\r\n");
        f.action("compileAction")->trigger();
        QCOMPARE(f.prompts.messages.size(), 1);
        QVERIFY(f.prompts.messages.first().startsWith("Unable to save " + source));
        QVERIFY(f.prompts.messages.first().contains("read-only"));
        QCOMPARE(readText(source), kProgram);
        QVERIFY(w.editor()->text().contains("' my edit"));
        QVERIFY(w.editor()->isModified());
        QVERIFY(w.messagePane()->text().isEmpty());
    }

    void missingAssemblerIsReported() {
        IdeFixture f("[Assembler]\nPath=/nonexistent/gpasm\n");
        const QString source = f.path("p.bas");
        QVERIFY(writeText(source, kProgram));
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        f.action("compileAction")->trigger();
        QCOMPARE(f.prompts.messages.size(), 1);
        QVERIFY(f.prompts.messages.first().startsWith("Unable to Find /nonexistent/gpasm"));
        QVERIFY(paneLines(w.messagePane()).contains("ASSEMBLER ERROR! HEX file NOT created"));
        QVERIFY(!f.action("programAction")->isEnabled());
        QCOMPARE(readText(source), kProgram);
    }

    void programmerChoiceIsSavedAndReadBack() {
        IdeFixture f;
        {
            MainWindow& w = f.start();
            f.action("externalProgrammerAction")->trigger();
            QCOMPARE(w.settings().programmerType, QString("ext"));
            QVERIFY(readText(f.settingsPath()).contains("Type=ext"));
            f.action("epicProgrammerAction")->trigger();
            QVERIFY(!f.action("externalProgrammerAction")->isChecked());
            QVERIFY(readText(f.settingsPath()).contains("Type=epic"));
        }
        f.start();
        QVERIFY(f.action("epicProgrammerAction")->isChecked());
        QVERIFY(!f.action("builtInProgrammerAction")->isChecked());
    }

    void deletedSettingsFileIsFatal() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.editor()->setText(kProgram);
        QFile::remove(f.settingsPath());
        f.prompts.answers.push_back(Prompts::Answer::No);
        f.action("builtInProgrammerAction")->trigger();
        QCOMPARE(f.prompts.messages,
                 QStringList{"Fatal Error!\r\nUnable to find ZORVEL.INI file.\r\n"
                             "The Compiler will now close."});
        QCOMPARE(f.prompts.questionsWithCancel, QList<bool>{false}); // the text is offered
        QCOMPARE(f.prompts.endedWith, 0);
    }

    void missingSettingsFileAtStartSelectsNothing() {
        IdeFixture f({}, false);
        f.start();
        QVERIFY(f.prompts.messages.isEmpty());
        for (const char* a :
             {"builtInProgrammerAction", "externalProgrammerAction", "epicProgrammerAction"})
            QVERIFY(!f.action(a)->isChecked());
    }

    void listingWindowsToggleAndKeepGeometry() {
        IdeFixture f("[AsmBox]\nWidth=420\nHeight=300\nXpos=30\nYpos=40\n");
        MainWindow& w = f.start();
        QCOMPARE(w.asmWindow()->size(), QSize(420, 300));
        f.action("showAsmAction")->trigger();
        QVERIFY(w.asmWindow()->isVisible());
        w.asmWindow()->resize(500, 350);
        w.asmWindow()->close();
        QVERIFY(!f.action("showAsmAction")->isChecked());
        w.close();
        const QString ini = readText(f.settingsPath());
        QVERIFY2(ini.contains("Width=500") && ini.contains("Height=350"), qPrintable(ini));
    }

    // F10 after a clean build: the programmer gets the HEX path as one
    // argument, blanks and non-ASCII letters intact.
    void programmerGetsTheHexFile_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QStringList>("leading");
        QTest::newRow("external") << "ext" << QStringList{"-p", "two words"};
        QTest::newRow("epic") << "epic" << QStringList{"-dPIC16F877"};
    }
    void programmerGetsTheHexFile() {
        QFETCH(QString, type);
        QFETCH(QStringList, leading);
        IdeFixture f;
        const QString record = f.path("args.txt");
        qputenv("RECORD_ARGS_FILE", record.toLocal8Bit());
        IdeSettings chosen;
        chosen.programmerType = type;
        chosen.externalName = "Test Programmer";
        chosen.externalPath = ZORVEL_TEST_SCRIPTS "/record-args.sh";
        chosen.externalCommandLine = "-p \"two words\"";
        chosen.epicPath = chosen.externalPath;
        QVERIFY(SettingsFile(f.settingsPath()).save(chosen));
        const QString source = f.path("ünï dir/blink prog.bas");
        QVERIFY(writeText(source, kProgram));
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        f.action("compileAction")->trigger();
        QVERIFY(f.action("programAction")->isEnabled());
        f.action("programAction")->trigger();
        QTRY_VERIFY(QFileInfo(record).size() > 0);
        QTRY_COMPARE(readText(record).split('\n', Qt::SkipEmptyParts),
                     leading + QStringList{f.path("ünï dir/blink prog.hex")});
        QVERIFY(f.prompts.messages.isEmpty());
    }

    // The window's Find and Replace commands reach the dialogs, seeded with
    // the selection, and share what was searched for.
    void findAndReplaceFromTheWindow() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.show();
        w.editor()->setText("A = 1\nB = A\nA = A + 1\n");
        w.editor()->setSelection(0, 0, 0, 1);
        f.action("findAction")->trigger();
        QDialog* findDialog = nullptr;
        for (QDialog* d : w.findChildren<QDialog*>())
            if (d->windowTitle() == "Find text...") findDialog = d;
        QVERIFY(findDialog && findDialog->isVisible());
        auto* text = findDialog->findChild<QComboBox*>();
        QCOMPARE(text->currentText(), QString("A"));
        QString replaceTitle;
        f.prompts.dialogs.push_back([&](QDialog& d) {
            replaceTitle = d.windowTitle();
            typeInto(d, "&Text to find", "A");
            typeInto(d, "Replace with", "COUNT");
            return click(d, "Replace All");
        });
        f.action("replaceAction")->trigger();
        QCOMPARE(replaceTitle, QString("Find and replace text..."));
        QCOMPARE(w.editor()->text(), QString("COUNT = 1\nB = COUNT\nCOUNT = COUNT + 1\n"));
        w.editor()->undo();
        QCOMPARE(w.editor()->text(), QString("A = 1\nB = A\nA = A + 1\n"));
    }

    void builtInProgrammerSaysItIsNotThereYet() {
        IdeFixture f("[Programmer]\nType=uni\n");
        const QString source = f.path("p.bas");
        QVERIFY(writeText(source, kProgram));
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        f.action("compileAction")->trigger();
        f.action("programAction")->trigger();
        QCOMPARE(f.prompts.messages.size(), 1);
        QVERIFY(f.prompts.messages.first().contains("not available in this version"));
    }

    void printsToAFileWithHeadings() {
        IdeFixture f;
        const QString source = f.path("p.bas");
        QVERIFY(writeText(source, kProgram));
        MainWindow& w = f.start();
        QVERIFY(w.openPath(source));
        const QString pdf = f.path("out.pdf");
        f.prompts.dialogs.push_back([&](QDialog& d) {
            QPrinter* printer = static_cast<QPrintDialog&>(d).printer();
            printer->setOutputFormat(QPrinter::PdfFormat);
            printer->setOutputFileName(pdf);
            return int(QDialog::Accepted);
        });
        f.action("printAction")->trigger();
        QVERIFY(f.prompts.messages.isEmpty());
        QVERIFY(readText(pdf).startsWith("%PDF"));
        SourcePrinter printer;
        printer.setFileName("p.bas");
        QCOMPARE(printer.heading(3).section('\t', 0, 0), QString("p.bas"));
        QCOMPARE(printer.heading(3).section('\t', 2), QString("Page 3"));
    }

    void droppedFileIsOpened() {
        IdeFixture f;
        const QString source = f.path("dropped.bas");
        QVERIFY(writeText(source, kProgram));
        MainWindow& w = f.start();
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(source)});
        const QPoint at(10, 10);
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QVERIFY(QCoreApplication::sendEvent(w.editor()->viewport(), &enter));
        QVERIFY(enter.isAccepted());
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(w.editor()->viewport(), &drop);
        QCOMPARE(w.sourcePath(), source);
        QCOMPARE(w.editor()->text(), kProgram);
    }

    void caseConversionOfTheSelection() {
        IdeFixture f;
        MainWindow& w = f.start();
        w.editor()->setText("dim count as byte");
        w.editor()->setSelection(0, 0, 0, 9);
        f.action("upperCaseAction")->trigger();
        QCOMPARE(w.editor()->text(), QString("DIM COUNT as byte"));
        w.editor()->selectAll();
        f.action("lowerCaseAction")->trigger();
        QCOMPARE(w.editor()->text(), QString("dim count as byte"));
    }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
