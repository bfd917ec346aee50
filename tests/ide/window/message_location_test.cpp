// Which file and line a line of the message pane points to.
#include "ide/window/message_location.h"

#include <QTest>

using namespace zorvel::ide;

class MessageLocationTest : public QObject {
    Q_OBJECT

private slots:
    void locates_data() {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("line");
        QTest::addColumn<bool>("assembler");
        QTest::newRow("error")
            << "Error at Line [12]\tIn file [main.bas]\tX = \t*** Syntax Error! ***"
            << "main.bas" << 12 << false;
        QTest::newRow("warning") << "Warning Line [3]\tIn file [lib.inc]\tDIM A\t*** x! ***"
                                 << "lib.inc" << 3 << false;
        QTest::newRow("blank in name")
            << "Error at Line [7]\tIn file [my prog.bas]\tGOTO\t*** y! ***"
            << "my prog.bas" << 7 << false;
        QTest::newRow("gpasm") << "Error[113]   my prog.asm 42 : Symbol not previously defined"
                               << "my prog.asm" << 42 << true;
        QTest::newRow("gpasm library") << "Error[126]   t.zvl 5 : Argument out of range"
                                       << "t.zvl" << 5 << true;
    }
    void locates() {
        QFETCH(QString, message);
        QFETCH(QString, file);
        QFETCH(int, line);
        QFETCH(bool, assembler);
        const auto at = locateMessage(message);
        QVERIFY(at.has_value());
        QCOMPARE(at->file, file);
        QCOMPARE(at->line, line);
        QCOMPARE(at->assembler, assembler);
    }

    void otherLinesPointNowhere_data() {
        QTest::addColumn<QString>("message");
        QTest::newRow("summary") << "\tZORVEL COMPILED OK.  12 Words used";
        QTest::newRow("whole") << "\t\t*** DEVICE NOT SPECIFIED ***";
        QTest::newRow("assembler failed") << "ASSEMBLER ERROR! HEX file NOT created";
        QTest::newRow("empty") << "";
    }
    void otherLinesPointNowhere() {
        QFETCH(QString, message);
        QVERIFY(!locateMessage(message).has_value());
    }
};

QTEST_GUILESS_MAIN(MessageLocationTest)
#include "message_location_test.moc"
