// The settings file: every key written and read back, defaults for missing
// keys, the empty-name rule, and refusal to write a vanished file.
#include "ide/common/settings.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace zorvel::ide;

class SettingsTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString path() const { return dir.filePath("Zorvel.ini"); }
    void writeText(const QByteArray& text) {
        QFile f(path());
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text);
    }

private slots:
    void everyKeyRoundTrips() {
        writeText("");
        IdeSettings s;
        s.programmerType = "epic";
        s.epicPath = "/opt/epic/epicwin";
        s.externalName = "My Programmer";
        s.externalPath = "/usr/local/bin/prog er";
        s.externalCommandLine = "-p -v";
        s.workingFolder = "/home/u/Ünïcode dir";
        s.asmBox = {640, 480, 10, 20};
        s.hexBox = {300, 200, -5, 7};
        s.assemblerPath = "/usr/bin/gpasm";
        s.calculator = "galculator";
        QVERIFY(SettingsFile(path()).save(s));
        IdeSettings back;
        SettingsFile(path()).load(back);
        QCOMPARE(back, s);
    }

    void sectionsAndKeysAsWritten() {
        writeText("");
        IdeSettings s;
        s.programmerType = "uni";
        s.asmBox = {1, 2, 3, 4};
        QVERIFY(SettingsFile(path()).save(s));
        QFile f(path());
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(f.readAll());
        for (const char* line :
             {"[Programmer]", "Type=uni", "[Epic]", "Pathname=", "[EXT_PROG]",
              "Name=External Programmer", "Ext_Path=", "Cmd_Line=", "[WorkingDirectory]",
              "[AsmBox]", "Width=1", "Height=2", "Xpos=3", "Ypos=4", "[HexBox]"})
            QVERIFY2(text.contains(QLatin1String(line)), line);
    }

    void emptyOrMissingNameReadsAsDefault_data() {
        QTest::addColumn<QByteArray>("ini");
        QTest::newRow("empty") << QByteArray("[EXT_PROG]\nName=\n");
        QTest::newRow("missing") << QByteArray("[EXT_PROG]\nExt_Path=/bin/true\n");
    }
    void emptyOrMissingNameReadsAsDefault() {
        QFETCH(QByteArray, ini);
        writeText(ini);
        IdeSettings s;
        s.externalName = "Something else";
        SettingsFile(path()).load(s);
        QCOMPARE(s.externalName, QString("External Programmer"));
    }

    void missingKeysKeepCurrentValues() {
        writeText("[Programmer]\nType=ext\n");
        IdeSettings s;
        s.workingFolder = "/install";
        s.externalPath = "/bin/prog";
        s.asmBox = {5, 6, 7, 8};
        SettingsFile(path()).load(s);
        QCOMPARE(s.programmerType, QString("ext"));
        QCOMPARE(s.workingFolder, QString("/install"));
        QCOMPARE(s.externalPath, QString("/bin/prog"));
        QCOMPARE(s.asmBox, (WindowBox{5, 6, 7, 8}));
    }

    void emptyWorkingFolderKeepsTheDefault() {
        writeText("[WorkingDirectory]\nPathname=\n");
        IdeSettings s;
        s.workingFolder = "/usr/share/zorvel";
        SettingsFile(path()).load(s);
        QCOMPARE(s.workingFolder, QString("/usr/share/zorvel"));
    }

    void missingFileSelectsNoProgrammerAndRefusesSave() {
        QFile::remove(path());
        IdeSettings s;
        s.programmerType = "ext";
        SettingsFile file(path());
        file.load(s);
        QVERIFY(s.programmerType.isEmpty());
        QVERIFY(!file.save(s));
        QVERIFY(!file.writeValue("Epic", "Pathname", "x"));
        QVERIFY(!QFile::exists(path()));
    }

    void firstStartCopiesTheTemplateWritable() {
        QTemporaryDir home;
        const QString templ = home.filePath("template.ini");
        QFile t(templ);
        QVERIFY(t.open(QIODevice::WriteOnly));
        t.write("[Programmer]\nType=epic\n");
        t.close();
        QFile::setPermissions(templ, QFile::ReadOwner);
        const QString target = home.filePath("config/zorvel/Zorvel.ini");
        QVERIFY(createSettingsFileIfMissing(target, templ));
        IdeSettings s;
        SettingsFile(target).load(s);
        QCOMPARE(s.programmerType, QString("epic"));
        s.programmerType = "uni";
        QVERIFY(SettingsFile(target).save(s));
    }
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "settings_test.moc"
