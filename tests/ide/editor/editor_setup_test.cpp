// The set-up of the three editor controls: fonts, tabs and tab columns, right
// margin, selection colours (checked on the painted widget), auto-indent, and
// the read-only panes.
#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_setup.h"
#include "ide/editor/tab_columns.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTest>
#include <Qsci/qsciscintilla.h>
#include <cmath>

using namespace zorvel::ide;

namespace {

long send(QsciScintilla& editor, unsigned int message, unsigned long wParam = 0, long lParam = 0) {
    return editor.SendScintilla(message, wParam, lParam);
}

// The column (counted from 1) at which the character at `position` is drawn.
int drawnColumn(QsciScintilla& editor, int position) {
    const int line =
        static_cast<int>(send(editor, QsciScintillaBase::SCI_LINEFROMPOSITION, position));
    const long lineStart = send(editor, QsciScintillaBase::SCI_POSITIONFROMLINE, line);
    const long x0 = send(editor, QsciScintillaBase::SCI_POINTXFROMPOSITION, 0, lineStart);
    const long x = send(editor, QsciScintillaBase::SCI_POINTXFROMPOSITION, 0, position);
    const QByteArray sample(100, 'a');
    const double width =
        editor.SendScintilla(QsciScintillaBase::SCI_TEXTWIDTH, uintptr_t(0), sample.constData()) /
        100.0;
    return static_cast<int>(std::lround((x - x0) / width)) + 1;
}

bool isMonospace(const QFont& font) {
    QFontMetricsF metrics(font);
    const qreal width = metrics.horizontalAdvance('m');
    return width > 0 && metrics.horizontalAdvance('i') == width &&
           metrics.horizontalAdvance('W') == width && metrics.horizontalAdvance(' ') == width;
}

int countPixels(const QImage& image, const QColor& color) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y).rgb() == color.rgb();
    return count;
}

} // namespace

class EditorSetupTest : public QObject {
    Q_OBJECT

private:
    QsciScintilla editor;
    BasicLexer* lexer = nullptr;

private slots:
    void initTestCase() {
        lexer = new BasicLexer(&editor);
        configureSourceEditor(editor, lexer);
        editor.resize(900, 300);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
    }

    void editorFontIsMonospaceOf13Pixels() {
        const QFont font = editorFont();
        QVERIFY(isMonospace(font));
        QCOMPARE(pixelHeightOf(font), 13);
        QVERIFY(font.pointSizeF() > 0); // the editor control takes points only
        if (QFontDatabase::hasFamily("Courier New"))
            QCOMPARE(font.family(), QString("Courier New"));
        QCOMPARE(lexer->font(BasicLexer::Comment).family(), font.family());
    }

    void windowsColourValues_data() {
        QTest::addColumn<uint>("value");
        QTest::addColumn<QColor>("color");
        QTest::newRow("selection blue") << 6824960u << QColor(0, 36, 104);
        QTest::newRow("red") << 0x0000ffu << QColor(255, 0, 0);
        QTest::newRow("blue") << 0xff0000u << QColor(0, 0, 255);
        QTest::newRow("mixed") << 0x123456u << QColor(0x56, 0x34, 0x12);
    }
    void windowsColourValues() {
        QFETCH(uint, value);
        QFETCH(QColor, color);
        QCOMPARE(colorFromWindowsValue(value), color);
    }

    void settingsApplied() {
        QCOMPARE(editor.lexer(), lexer);
        QVERIFY(editor.isUtf8());
        QCOMPARE(editor.tabWidth(), 8);
        QCOMPARE(editor.indentationWidth(), 8);
        QVERIFY(editor.indentationsUseTabs());
        QCOMPARE(editor.edgeMode(), QsciScintilla::EdgeLine);
        QCOMPARE(editor.edgeColumn(), 80);
        QVERIFY(editor.autoIndent());
        QVERIFY(editor.marginLineNumbers(0));
        QVERIFY(editor.marginWidth(0) > 0);
        QCOMPARE(tabColumns(editor), defaultTabColumns());
    }

    // A tab moves to the next of the columns 5, 9, ..., 61, then to the next
    // multiple of 8; lines typed later have the columns too.
    void tabsStopAtTheFixedColumns_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("column");
        QTest::newRow("first") << QString("\tX") << 5;
        QTest::newRow("after 8") << QString("12345678\tX") << 13;
        QTest::newRow("two tabs") << QString("\t\tX") << 9;
        QTest::newRow("past 61") << QString(61, QChar('a')) + "\tX" << 65;
        QTest::newRow("past 64") << QString(65, QChar('a')) + "\tX" << 73;
    }
    void tabsStopAtTheFixedColumns() {
        QFETCH(QString, line);
        QFETCH(int, column);
        editor.setText("first line");
        editor.setCursorPosition(0, 10);
        QTest::keyClick(&editor, Qt::Key_Return);
        editor.insertAt(line, 1, 0);
        const int x = static_cast<int>(editor.text().toUtf8().indexOf('X'));
        QCOMPARE(drawnColumn(editor, x), column);
    }

    void autoIndentKeepsTheTab() {
        editor.setText("\tPRINT 1");
        editor.setCursorPosition(0, 8);
        QTest::keyClick(&editor, Qt::Key_Return);
        QTest::keyClicks(&editor, "x");
        QCOMPARE(editor.text(1), QString("\tx"));
    }

    void selectionIsWhiteOnBlue() {
        editor.setText("PRINT \"selected text\"\nnot selected");
        editor.setSelection(0, 0, 0, 21);
        QTest::qWait(50);
        const QImage image = editor.viewport()->grab().toImage();
        QVERIFY(countPixels(image, QColor(0, 36, 104)) > 100);
        QVERIFY(countPixels(image, Qt::white) > 0);
        editor.setSelection(0, 0, 0, 0);
        QTest::qWait(50);
        QCOMPARE(countPixels(editor.viewport()->grab().toImage(), QColor(0, 36, 104)), 0);
    }

    void messagePane() {
        QsciScintilla pane;
        configureMessagePane(pane);
        pane.setText("Compiling...\nError in line 3");
        QVERIFY(pane.isReadOnly());
        QVERIFY(pane.lexer() == nullptr);
        QVERIFY(isMonospace(pane.font()));
        for (int margin = 0; margin < pane.margins(); ++margin)
            QCOMPARE(pane.marginWidth(margin), 0);
        QTest::keyClicks(&pane, "typed");
        QCOMPARE(pane.text(), QString("Compiling...\nError in line 3"));
    }

    void listingView() {
        QsciScintilla view;
        configureListingView(view);
        QVERIFY(view.isReadOnly());
        QVERIFY(view.marginLineNumbers(0));
        QVERIFY(view.marginWidth(0) > 0);
        QVERIFY(isMonospace(view.font()));
    }

    void tabColumnText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<int>>("columns");
        QTest::newRow("plain") << "5 9 13" << QList<int>{5, 9, 13};
        QTest::newRow("commas and blanks") << " 3,7 ,  11 " << QList<int>{3, 7, 11};
        QTest::newRow("out of order dropped") << "9 5 13" << QList<int>{9, 13};
        QTest::newRow("junk dropped") << "x 1 4 99999" << QList<int>{4};
        QTest::newRow("empty") << "" << QList<int>{};
    }
    void tabColumnText() {
        QFETCH(QString, text);
        QFETCH(QList<int>, columns);
        QCOMPARE(parseTabColumns(text), columns);
        QCOMPARE(parseTabColumns(tabColumnsText(columns)), columns);
    }
};

QTEST_MAIN(EditorSetupTest)
#include "editor_setup_test.moc"
