// Starting the external programmer, EPIC, the help file and the calculator:
// the exact arguments a recording script receives, the path dialog opened
// when no program is set, and every failure message.
#include "ide/common/settings.h"
#include "ide/programmers/calculator_dialog.h"
#include "ide/programmers/programmer_commands.h"
#include "ide/support/scripted_prompts.h"
#include "ide/support/widget_clicks.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <memory>

using namespace zorvel::ide;
using zorvel::ide::test::click;
using zorvel::ide::test::ScriptedPrompts;

const QString kRecorder = QStringLiteral(ZORVEL_TEST_SCRIPTS "/record-args.sh");

// Receives the URLs QDesktopServices is asked to open.
class UrlRecorder : public QObject {
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};

class ProgrammerCommandsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<SettingsFile> file;
    IdeSettings settings;
    ScriptedPrompts prompts;
    QWidget window;
    int saves = 0;
    std::unique_ptr<ProgrammerCommands> commands;
    QByteArray savedPath;
    UrlRecorder recorder;
    QObject noViewer; // a URL handler without the slot: opening fails

    QString recordFile() const { return dir->filePath("recorded args ü.txt"); }

    // A file `name` in the temporary folder (folders made as needed) with the
    // recorder's text, executable or not.
    QString copyRecorder(const QString& name, bool executable) {
        const QString path = dir->filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile::copy(kRecorder, path);
        QFile::Permissions read = QFile::ReadOwner | QFile::WriteOwner;
        QFile::setPermissions(path, executable ? read | QFile::ExeOwner : read);
        return path;
    }

    void writeScript(const QString& name, const QByteArray& line) {
        const QString path = dir->filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("#!/bin/sh\n" + line + "\n");
        f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    QString hexPath(const QString& relative) const {
        const QString path = dir->filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        return path;
    }

    QStringList readRecord() const {
        QFile f(recordFile());
        if (!f.open(QIODevice::ReadOnly)) return {"<unreadable>"};
        QStringList lines = QString::fromUtf8(f.readAll()).split('\n');
        lines.removeLast(); // after the last line break
        return lines;
    }

private slots:
    void init() {
        dir = std::make_unique<QTemporaryDir>();
        file = std::make_unique<SettingsFile>(dir->filePath("Zorvel.ini"));
        QFile ini(file->path());
        QVERIFY(ini.open(QIODevice::WriteOnly));
        settings = IdeSettings();
        prompts = ScriptedPrompts();
        saves = 0;
        recorder.urls.clear();
        commands = std::make_unique<ProgrammerCommands>(settings, *file, prompts, &window,
                                                        [this] { ++saves; });
        qputenv("RECORD_ARGS_FILE", recordFile().toUtf8());
        savedPath = qgetenv("PATH");
    }

    void cleanup() {
        commands.reset();
        qputenv("PATH", savedPath);
        QDesktopServices::unsetUrlHandler("file");
    }

    void externalGetsCommandLineThenHexPath_data() {
        QTest::addColumn<QString>("commandLine");
        QTest::addColumn<QString>("hex");
        QTest::addColumn<QStringList>("leading");
        QTest::newRow("no command line") << ""
                                         << "prog.hex" << QStringList();
        QTest::newRow("command line split")
            << R"(-p 16F877 "--port=/dev/tty S0" -v)"
            << "prog.hex" << QStringList{"-p", "16F877", "--port=/dev/tty S0", "-v"};
        QTest::newRow("blanks and non-ASCII in HEX path")
            << "-w"
            << "my projects/Prüfung ä/blink led.hex" << QStringList{"-w"};
    }
    void externalGetsCommandLineThenHexPath() {
        QFETCH(QString, commandLine);
        QFETCH(QString, hex);
        QFETCH(QStringList, leading);
        settings.externalPath = kRecorder;
        settings.externalCommandLine = commandLine;
        commands->runExternal(hexPath(hex));
        QTRY_VERIFY(QFileInfo::exists(recordFile()));
        QCOMPARE(readRecord(), leading + QStringList{hexPath(hex)});
        QCOMPARE(prompts.messages, QStringList());
        QCOMPARE(saves, 0);
    }

    void epicGetsDeviceThenHexPath_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("hex");
        QTest::newRow("16F877") << ""
                                << "16F877"
                                << "blink.hex";
        QTest::newRow("blanks and non-ASCII everywhere") << "epic tools ü/epic win"
                                                         << "16F84"
                                                         << "my projects/Prüfung ä/blink led.hex";
    }
    void epicGetsDeviceThenHexPath() {
        QFETCH(QString, program);
        QFETCH(QString, device);
        QFETCH(QString, hex);
        settings.epicPath = program.isEmpty() ? kRecorder : copyRecorder(program, true);
        commands->runEpic(hexPath(hex), device);
        QTRY_VERIFY(QFileInfo::exists(recordFile()));
        QCOMPARE(readRecord(), (QStringList{"-dPIC" + device, hexPath(hex)}));
        QCOMPARE(prompts.messages, QStringList());
    }

    void failuresAreReported_data() {
        QTest::addColumn<bool>("epic");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("program"); // "" none, "missing", "not executable"
        QTest::addColumn<QString>("message");
        QTest::newRow("external, no path") << false << ""
                                           << ""
                                           << "Unable to Run External Programmer";
        QTest::newRow("named, no path") << false << "PicKit Tool"
                                        << ""
                                        << "Unable to Run PicKit Tool";
        QTest::newRow("named, missing") << false << "PicKit Tool"
                                        << "missing"
                                        << "Unable to Find PicKit Tool";
        QTest::newRow("named, not executable") << false << "PicKit Tool"
                                               << "not executable"
                                               << "Unable to Run PicKit Tool";
        QTest::newRow("epic, no path") << true << ""
                                       << ""
                                       << "Unable to Run Epic";
        QTest::newRow("epic, missing") << true << ""
                                       << "missing"
                                       << "Unable to Find Epic";
        QTest::newRow("epic, not executable") << true << ""
                                              << "not executable"
                                              << "Unable to Run Epic";
    }
    void failuresAreReported() {
        QFETCH(bool, epic);
        QFETCH(QString, name);
        QFETCH(QString, program);
        QFETCH(QString, message);
        QString path;
        if (program == "missing") path = dir->filePath("no such programmer");
        if (program == "not executable") path = copyRecorder("plain file", false);
        if (!name.isEmpty()) settings.externalName = name;
        (epic ? settings.epicPath : settings.externalPath) = path;
        if (path.isEmpty())
            prompts.dialogs.push_back([](QDialog& d) { return click(d, "Cancel"); });
        if (epic)
            commands->runEpic(hexPath("a.hex"), "16F84");
        else
            commands->runExternal(hexPath("a.hex"));
        QCOMPARE(prompts.messages, QStringList{message});
        QVERIFY(prompts.dialogs.empty());
        QCOMPARE(saves, path.isEmpty() ? 1 : 0);
        QTest::qWait(100);
        QVERIFY(!QFileInfo::exists(recordFile()));
    }

    void emptyPathDialogCanSetTheProgram() {
        prompts.fileNames.push_back(kRecorder);
        prompts.dialogs.push_back([](QDialog& d) {
            click(d, "Browse");
            return click(d, "OK");
        });
        commands->runExternal(hexPath("x.hex"));
        QCOMPARE(settings.externalPath, kRecorder);
        QCOMPARE(saves, 1);
        QTRY_VERIFY(QFileInfo::exists(recordFile()));
        QCOMPARE(readRecord(), QStringList{hexPath("x.hex")});
        QCOMPARE(prompts.messages, QStringList());
    }

    void helpOpensTheManual() {
        QDesktopServices::setUrlHandler("file", &recorder, "open");
        QVERIFY(QDir().mkpath(dir->filePath("home ü/inc")));
        QFile help(dir->filePath("home ü/inc/ZORVEL.HTM"));
        QVERIFY(help.open(QIODevice::WriteOnly));
        commands->openHelp(dir->filePath("home ü"));
        QCOMPARE(recorder.urls, QList<QUrl>{QUrl::fromLocalFile(help.fileName())});
        QCOMPARE(prompts.messages, QStringList());
    }

    void missingHelpIsReported() {
        QDesktopServices::setUrlHandler("file", &recorder, "open");
        commands->openHelp(dir->path());
        QCOMPARE(prompts.messages,
                 QStringList{"Unable to Find ZORVEL.HTM\r\nMake sure it's in the INC directory"});
        QVERIFY(recorder.urls.isEmpty());
    }

    void helpThatCannotBeOpenedIsReported() {
        QDesktopServices::setUrlHandler("file", &noViewer, "open");
        QVERIFY(QDir().mkpath(dir->filePath("inc")));
        QFile help(dir->filePath("inc/ZORVEL.HTM"));
        QVERIFY(help.open(QIODevice::WriteOnly));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("No such method"));
        commands->openHelp(dir->path());
        QCOMPARE(prompts.messages,
                 QStringList{"Unable to Run ZORVEL.HTM\r\nMake sure it's in the INC directory"});
    }

    void configuredCalculatorRunsWithItsArguments() {
        settings.calculator = "\"" + copyRecorder("calc ü/my calc", true) + "\" -m \"hex mode\"";
        commands->runCalculator();
        QTRY_VERIFY(QFileInfo::exists(recordFile()));
        QCOMPARE(readRecord(), (QStringList{"-m", "hex mode"}));
        QCOMPARE(prompts.messages, QStringList());
    }

    void configuredCalculatorFailures_data() {
        QTest::addColumn<QString>("program"); // "plain file": a file that cannot run
        QTest::addColumn<QString>("message");
        QTest::newRow("name not on PATH") << "no-such-calculator-zv"
                                          << "Unable to Find no-such-calculator-zv";
        QTest::newRow("missing path") << "/nonexistent/calc"
                                      << "Unable to Find /nonexistent/calc";
        QTest::newRow("not executable") << "plain file"
                                        << "Unable to Run ";
    }
    void configuredCalculatorFailures() {
        QFETCH(QString, program);
        QFETCH(QString, message);
        if (program == "plain file") {
            program = copyRecorder("calc dir/plain file", false);
            message += program;
        }
        settings.calculator = '"' + program + "\" --mode hex";
        commands->runCalculator();
        QCOMPARE(prompts.messages, QStringList{message});
        QVERIFY(window.findChildren<CalculatorDialog*>().isEmpty());
    }

    void firstKnownCalculatorOnPathRuns() {
        writeScript("bin/xcalc", "echo xcalc >\"$RECORD_ARGS_FILE\"");
        writeScript("bin/kcalc", "echo kcalc >\"$RECORD_ARGS_FILE\"");
        qputenv("PATH", dir->filePath("bin").toUtf8());
        commands->runCalculator();
        QTRY_VERIFY(QFileInfo::exists(recordFile()));
        QCOMPARE(readRecord(), QStringList{"kcalc"});
        QVERIFY(window.findChildren<CalculatorDialog*>().isEmpty());
    }

    void builtInCalculatorWhenNoneIsInstalled() {
        qputenv("PATH", dir->path().toUtf8());
        commands->runCalculator();
        commands->runCalculator();
        const auto dialogs = window.findChildren<CalculatorDialog*>();
        QCOMPARE(dialogs.size(), 1);
        QVERIFY(dialogs.first()->isVisible());
        QVERIFY(!dialogs.first()->isModal());
        QCOMPARE(prompts.messages, QStringList());
    }
};

QTEST_MAIN(ProgrammerCommandsTest)
#include "programmer_commands_test.moc"
