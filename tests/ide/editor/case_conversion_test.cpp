// To UpperCase / To LowerCase: the selection is converted, stays selected in
// its direction, and one undo restores the text; without a selection, or in
// a read-only editor, nothing happens.
#include "ide/editor/case_conversion.h"

#include <QTest>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;

class CaseConversionTest : public QObject {
    Q_OBJECT

private slots:
    void convertsTheSelection_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("from"); // selection anchor, column on line 0
        QTest::addColumn<int>("to");   // selection caret
        QTest::addColumn<bool>("upper");
        QTest::addColumn<QString>("result");
        QTest::addColumn<QString>("selected");
        QTest::newRow("upper word") << "print x" << 0 << 5 << true << "PRINT x"
                                    << "PRINT";
        QTest::newRow("lower all") << "GOTO LOOP" << 0 << 9 << false << "goto loop"
                                   << "goto loop";
        QTest::newRow("backwards") << "a = b + c" << 9 << 4 << true << "a = B + C"
                                   << "B + C";
        QTest::newRow("umlauts") << "x = \"grüße\"" << 5 << 10 << true << "x = \"GRÜSSE\""
                                 << "GRÜSSE";
        QTest::newRow("mixed to lower") << "High PortB.0" << 5 << 12 << false << "High portb.0"
                                        << "portb.0";
    }
    void convertsTheSelection() {
        QFETCH(QString, text);
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(bool, upper);
        QFETCH(QString, result);
        QFETCH(QString, selected);
        QsciScintilla editor;
        editor.setUtf8(true);
        editor.setText(text + "\nnext line");
        editor.setSelection(0, from, 0, to);
        upper ? upperCaseSelection(editor) : lowerCaseSelection(editor);
        QCOMPARE(editor.text(), result + "\nnext line");
        QCOMPARE(editor.selectedText(), selected);
        int line = -1, index = -1;
        editor.getCursorPosition(&line, &index);
        const int caret = to > from ? from + int(selected.size()) : to; // at the same end
        QCOMPARE(index, caret);
        editor.undo();
        QCOMPARE(editor.text(), text + "\nnext line");
    }

    void nothingWithoutSelection() {
        QsciScintilla editor;
        editor.setText("print x");
        editor.setCursorPosition(0, 3);
        upperCaseSelection(editor);
        lowerCaseSelection(editor);
        QCOMPARE(editor.text(), QString("print x"));
        QVERIFY(!editor.isUndoAvailable());
    }

    void nothingInReadOnlyEditor() {
        QsciScintilla editor;
        editor.setText("print x");
        editor.setReadOnly(true);
        editor.selectAll();
        upperCaseSelection(editor);
        QCOMPARE(editor.text(), QString("print x"));
    }

    void severalLinesAreOneUndoStep() {
        QsciScintilla editor;
        editor.setText("dim a as byte\ndim b as word\n");
        editor.setSelection(0, 0, 1, 13);
        upperCaseSelection(editor);
        QCOMPARE(editor.text(), QString("DIM A AS BYTE\nDIM B AS WORD\n"));
        editor.undo();
        QCOMPARE(editor.text(), QString("dim a as byte\ndim b as word\n"));
        QVERIFY(!editor.isUndoAvailable());
    }
};

QTEST_MAIN(CaseConversionTest)
#include "case_conversion_test.moc"
