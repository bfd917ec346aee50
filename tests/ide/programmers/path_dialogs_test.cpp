// The EPIC and external programmer path dialogs, driven through their
// buttons: what they show, the keys they write at once, what OK and Cancel
// keep, the empty-name rule and the one save after closing.
#include "ide/common/settings.h"
#include "ide/programmers/programmer_commands.h"
#include "ide/support/scripted_prompts.h"
#include "ide/support/widget_clicks.h"

#include <QFile>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace zorvel::ide;
using zorvel::ide::test::click;
using zorvel::ide::test::ScriptedPrompts;

// The dialog's edit boxes, top to bottom.
static QList<QLineEdit*> boxes(QDialog& d) {
    return d.findChildren<QLineEdit*>();
}

class PathDialogsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    std::unique_ptr<SettingsFile> file;
    IdeSettings settings;
    ScriptedPrompts prompts;
    int saves = 0;
    std::unique_ptr<ProgrammerCommands> commands;

    QString stored(const QString& key) const {
        return QSettings(file->path(), QSettings::IniFormat).value(key).toString();
    }

private slots:
    void init() {
        file = std::make_unique<SettingsFile>(dir.filePath("Zorvel.ini"));
        QFile ini(file->path());
        QVERIFY(ini.open(QIODevice::WriteOnly | QIODevice::Truncate));
        settings = IdeSettings();
        prompts = ScriptedPrompts();
        saves = 0;
        commands = std::make_unique<ProgrammerCommands>(settings, *file, prompts, nullptr,
                                                        [this] { ++saves; });
    }

    void epicBrowseWritesAtOnce_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("kept");
        QTest::newRow("OK") << "OK"
                            << "/opt/epic ü/epic";
        QTest::newRow("Cancel") << "Cancel"
                                << "/old/epic";
    }
    void epicBrowseWritesAtOnce() {
        QFETCH(QString, button);
        QFETCH(QString, kept);
        settings.epicPath = "/old/epic";
        prompts.fileNames.push_back("/opt/epic ü/epic");
        QString shown, written;
        prompts.dialogs.push_back([&](QDialog& d) {
            shown = boxes(d).at(0)->text();
            click(d, "Browse");
            written = stored("Epic/Pathname");
            return click(d, button);
        });
        commands->editEpicDetails();
        QCOMPARE(shown, QString("/old/epic"));
        QCOMPARE(written, QString("/opt/epic ü/epic"));
        QCOMPARE(settings.epicPath, kept);
        QCOMPARE(saves, 1);
        QCOMPARE(prompts.fileDialogs.size(), 1);
        const FileDialogSpec spec = prompts.fileDialogs.first();
        QCOMPARE(spec.title, QString("Find EPIC Directory"));
        QCOMPARE(spec.defaultSuffix, QString());
        QCOMPARE(spec.folder, QString("/"));
        QCOMPARE(spec.filter, QString("All Files (*)"));
    }

    // The assembler's dialog: Browse writes at once, an emptied box means gpasm
    // on PATH again.
    void assemblerPath_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("kept");
        QTest::newRow("browsed") << QString() << "/opt/gputils ü/gpasm";
        QTest::newRow("emptied") << "  "
                                 << "gpasm";
    }
    void assemblerPath() {
        QFETCH(QString, typed);
        QFETCH(QString, kept);
        prompts.fileNames.push_back("/opt/gputils ü/gpasm");
        QString shown, title, written;
        prompts.dialogs.push_back([&](QDialog& d) {
            title = d.windowTitle();
            shown = boxes(d).at(0)->text();
            click(d, "Browse");
            written = stored("Assembler/Path");
            if (!typed.isNull()) boxes(d).at(0)->setText(typed);
            return click(d, "OK");
        });
        commands->editAssemblerPath();
        QCOMPARE(title, QString("Assembler"));
        QCOMPARE(shown, QString("gpasm"));
        QCOMPARE(written, QString("/opt/gputils ü/gpasm"));
        QCOMPARE(settings.assemblerPath, kept);
        QCOMPARE(saves, 1);
    }

    void epicCancelledBrowseChangesNothing() {
        prompts.fileNames.push_back("");
        QString box;
        prompts.dialogs.push_back([&](QDialog& d) {
            boxes(d).at(0)->setText("/typed/epic");
            click(d, "Browse");
            box = boxes(d).at(0)->text();
            return click(d, "OK");
        });
        commands->editEpicDetails();
        QCOMPARE(box, QString("/typed/epic"));
        QCOMPARE(stored("Epic/Pathname"), QString());
        QCOMPARE(settings.epicPath, QString("/typed/epic"));
        QCOMPARE(saves, 1);
    }

    void externalWritesNameAndPathAtOnce_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("taken");
        QTest::newRow("OK") << "OK" << true;
        QTest::newRow("Cancel") << "Cancel" << false;
    }
    void externalWritesNameAndPathAtOnce() {
        QFETCH(QString, button);
        QFETCH(bool, taken);
        settings.externalName = "Old";
        settings.externalPath = "/old/prog";
        settings.externalCommandLine = "-old";
        prompts.fileNames.push_back("/usr/local/bin/pic prog");
        QStringList shown, written;
        prompts.dialogs.push_back([&](QDialog& d) {
            for (QLineEdit* box : boxes(d))
                shown.append(box->text());
            QTest::keyClicks(boxes(d).at(0), "er");
            written << stored("EXT_PROG/Name");
            click(d, "Browse");
            written << stored("EXT_PROG/Ext_Path");
            boxes(d).at(2)->setText("-p \"a b\"");
            return click(d, button);
        });
        commands->editExternalDetails();
        QCOMPARE(shown, (QStringList{"Old", "/old/prog", "-old"}));
        QCOMPARE(written, (QStringList{"Older", "/usr/local/bin/pic prog"}));
        const QStringList now{settings.externalName, settings.externalPath,
                              settings.externalCommandLine};
        const QStringList expected =
            taken ? QStringList{"Older", "/usr/local/bin/pic prog", "-p \"a b\""}
                  : QStringList{"Old", "/old/prog", "-old"};
        QCOMPARE(now, expected);
        QCOMPARE(saves, 1);
        QCOMPARE(prompts.fileDialogs.first().title, QString("Find Programmer Directory"));
        QCOMPARE(prompts.fileDialogs.first().defaultSuffix, QString());
    }

    void emptyNameBecomesDefault_data() {
        QTest::addColumn<QString>("way"); // a button, or "close"
        QTest::addColumn<QString>("before");
        QTest::newRow("OK with the box emptied") << "OK"
                                                 << "Old";
        QTest::newRow("Cancel with no name") << "Cancel"
                                             << "";
        QTest::newRow("closing with no name") << "close"
                                              << "";
    }
    void emptyNameBecomesDefault() {
        QFETCH(QString, way);
        QFETCH(QString, before);
        settings.externalName = before;
        prompts.dialogs.push_back([&](QDialog& d) {
            boxes(d).at(0)->clear();
            if (way != "close") return click(d, way);
            d.close();
            return d.result();
        });
        commands->editExternalDetails();
        QCOMPARE(settings.externalName, QString("External Programmer"));
        QCOMPARE(stored("EXT_PROG/Name"), QString());
        QCOMPARE(saves, 1);
    }

    void cancelKeepsTheNameWhenTheBoxIsEmptied() {
        settings.externalName = "My Tool";
        prompts.dialogs.push_back([](QDialog& d) {
            boxes(d).at(0)->clear();
            return click(d, "Cancel");
        });
        commands->editExternalDetails();
        QCOMPARE(settings.externalName, QString("My Tool"));
    }
};

QTEST_MAIN(PathDialogsTest)
#include "path_dialogs_test.moc"
