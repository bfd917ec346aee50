// The built-in calculator: the expression evaluator's results and errors,
// the 16-bit and 32-bit views, and the dialog updating as the user types.
#include "ide/programmers/calculator_dialog.h"
#include "ide/programmers/calculator_expression.h"

#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>

using namespace zorvel::ide;

class CalculatorTest : public QObject {
    Q_OBJECT

private slots:
    void evaluates_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("value");
        QTest::newRow("decimal") << "200" << qint64(200);
        QTest::newRow("hex") << "$c8" << qint64(200);
        QTest::newRow("hex upper") << "$FFFF" << qint64(65535);
        QTest::newRow("binary") << "%11001000" << qint64(200);
        QTest::newRow("blanks") << "  1 +\t2 " << qint64(3);
        QTest::newRow("product before sum") << "2 + 3 * 4" << qint64(14);
        QTest::newRow("left to right") << "100 - 10 - 1" << qint64(89);
        QTest::newRow("division truncates") << "-7 / 2" << qint64(-3);
        QTest::newRow("parentheses") << "(2 + 3) * 4" << qint64(20);
        QTest::newRow("shift below sum") << "1 << 2 + 1" << qint64(8);
        QTest::newRow("right shift") << "$F0 >> 4" << qint64(15);
        QTest::newRow("and below shift") << "$FF & 1 << 4" << qint64(16);
        QTest::newRow("xor below and") << "6 ^ 3 & 1" << qint64(7);
        QTest::newRow("or loosest") << "%1000 | %0011 ^ %0001" << qint64(10);
        QTest::newRow("unary minus") << "--5" << qint64(5);
        QTest::newRow("complement") << "~0 & $FF" << qint64(255);
        QTest::newRow("largest") << "9223372036854775807" << qint64(9223372036854775807);
    }
    void evaluates() {
        QFETCH(QString, text);
        QFETCH(qint64, value);
        const CalcResult r = evaluateExpression(text);
        QVERIFY2(r.ok, qPrintable(r.error));
        QCOMPARE(r.value, value);
    }

    void reportsErrors_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << "  "
                               << "Empty expression";
        QTest::newRow("letter") << "12 + x"
                                << "Number expected at position 6";
        QTest::newRow("trailing text") << "12ab"
                                       << "Unexpected 'a' at position 3";
        QTest::newRow("no operand") << "3 *"
                                    << "Number expected at the end";
        QTest::newRow("bare $") << "$ + 1"
                                << "Hex digit expected after $ at position 2";
        QTest::newRow("bad binary") << "%2"
                                    << "Binary digit expected after % at position 2";
        QTest::newRow("missing )") << "(1 + 2"
                                   << "Missing ) at position 7";
        QTest::newRow("stray )") << "1)"
                                 << "Unexpected ')' at position 2";
        QTest::newRow("division by zero") << "5 / (3 - 3)"
                                          << "Division by zero";
        QTest::newRow("literal too large") << "9223372036854775808"
                                           << "Number too large";
        QTest::newRow("sum overflows") << "$7FFFFFFFFFFFFFFF + 1"
                                       << "Number too large";
        QTest::newRow("product overflows") << "$100000000 * $100000000"
                                           << "Number too large";
        QTest::newRow("shift overflows") << "1 << 63"
                                         << "Number too large";
        QTest::newRow("shift too far") << "1 >> 64"
                                       << "Shift count must be 0 to 63";
        QTest::newRow("negative shift") << "1 << -1"
                                        << "Shift count must be 0 to 63";
        QTest::newRow("deep nesting") << QString(5000, '(') + "1"
                                      << "Expression nested too deeply";
        QTest::newRow("deep minus") << QString(5000, '-') + "1"
                                    << "Expression nested too deeply";
    }
    void reportsErrors() {
        QFETCH(QString, text);
        QFETCH(QString, error);
        const CalcResult r = evaluateExpression(text);
        QVERIFY(!r.ok);
        QCOMPARE(r.error, error);
    }

    void formatsViews_data() {
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("bits");
        QTest::addColumn<QStringList>("shown"); // decimal, hex, binary
        QTest::addColumn<bool>("fits");
        QTest::newRow("200, 16") << qint64(200) << 16
                                 << QStringList{"200", "$00C8", "%0000000011001000"} << true;
        QTest::newRow("-1, 16") << qint64(-1) << 16
                                << QStringList{"65535 (-1)", "$FFFF", "%1111111111111111"} << true;
        QTest::newRow("65536, 16")
            << qint64(65536) << 16 << QStringList{"0", "$0000", "%0000000000000000"} << false;
        QTest::newRow("-32769, 16")
            << qint64(-32769) << 16 << QStringList{"32767", "$7FFF", "%0111111111111111"} << false;
        QTest::newRow("65536, 32")
            << qint64(65536) << 32
            << QStringList{"65536", "$00010000", "%00000000000000010000000000000000"} << true;
        QTest::newRow("-2, 32") << qint64(-2) << 32
                                << QStringList{"4294967294 (-2)", "$FFFFFFFE",
                                               "%11111111111111111111111111111110"}
                                << true;
    }
    void formatsViews() {
        QFETCH(qint64, value);
        QFETCH(int, bits);
        QFETCH(QStringList, shown);
        QFETCH(bool, fits);
        const CalcView view = formatValue(value, bits);
        QCOMPARE((QStringList{view.decimal, view.hex, view.binary}), shown);
        QCOMPARE(view.fits, fits);
    }

    void dialogFollowsTyping() {
        CalculatorDialog dialog;
        dialog.show();
        auto label = [&](const char* name) { return dialog.findChild<QLabel*>(name)->text(); };
        QTest::keyClicks(dialog.findChild<QLineEdit*>(), "$FF + 1");
        QCOMPARE(label("decimal"), QString("256"));
        QCOMPARE(label("hex"), QString("$0100"));
        QCOMPARE(label("binary"), QString("%0000000100000000"));
        QCOMPARE(label("message"), QString());
        for (QRadioButton* b : dialog.findChildren<QRadioButton*>())
            if (b->text() == "32-bit") QTest::mouseClick(b, Qt::LeftButton);
        QCOMPARE(label("hex"), QString("$00000100"));
        QTest::keyClicks(dialog.findChild<QLineEdit*>(), " /");
        QCOMPARE(label("decimal"), QString());
        QCOMPARE(label("message"), QString("Number expected at the end"));
    }
};

QTEST_MAIN(CalculatorTest)
#include "calculator_test.moc"
