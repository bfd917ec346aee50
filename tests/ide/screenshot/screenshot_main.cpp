// Shows the main window on a real X server (Xvfb), opens an example, builds
// it, opens the assembler listing beside it and saves a picture of the screen
// to $ZORVEL_SCREENSHOT_DIR/main-window.png.
#include "ide/support/ide_fixture.h"
#include "ide/window/listing_window.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QSet>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;
using namespace zorvel::ide::test;

class ScreenshotTest : public QObject {
    Q_OBJECT

private slots:
    void mainWindowAfterABuild() {
        QCOMPARE(QGuiApplication::platformName(), QString("xcb"));
        IdeFixture f;
        const QString source = f.path("ring_buffer.bas");
        QVERIFY(QFile::copy(ZORVEL_SOURCE_DIR "/examples/ring_buffer.bas", source));
        MainWindow& w = f.start();
        w.setGeometry(20, 20, 1000, 720);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.openPath(source));
        w.editor()->setCursorPosition(12, 0);
        f.action("compileAction")->trigger();
        QVERIFY2(w.messagePane()->text().startsWith("\tZORVEL COMPILED OK."),
                 qPrintable(w.messagePane()->text()));
        w.asmWindow()->setGeometry(700, 260, 560, 420);
        f.action("showAsmAction")->trigger();
        QVERIFY(QTest::qWaitForWindowExposed(w.asmWindow()));
        w.activateWindow();
        QTest::qWait(300);

        const QImage shot = w.screen()->grabWindow(0).toImage();
        QVERIFY(shot.width() >= 1000 && shot.height() >= 720);
        QSet<QRgb> colours;
        for (int y = 0; y < shot.height(); y += 4)
            for (int x = 0; x < shot.width(); x += 4)
                colours.insert(shot.pixel(x, y));
        QVERIFY2(colours.size() > 20, "the screen shows hardly anything");
        const QString dir = qEnvironmentVariable("ZORVEL_SCREENSHOT_DIR");
        QVERIFY(!dir.isEmpty());
        QDir().mkpath(dir);
        QVERIFY(shot.save(dir + "/main-window.png"));
    }
};

QTEST_MAIN(ScreenshotTest)
#include "screenshot_main.moc"
