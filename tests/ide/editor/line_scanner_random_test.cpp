// The line scanner on random lines (fixed seed): runs are positive, cover the
// line exactly, carry known styles, and scanning the same line twice gives
// the same runs. A failing line is printed in full.
#include "ide/editor/basic_lexer.h"
#include "ide/editor/basic_line_scanner.h"

#include <QTest>
#include <random>
#include <string>

using namespace zorvel::ide;

namespace {

// Pieces that reach every branch of the scanner, mixed with random bytes.
const char* const kPieces[] = {
    "DIM ", "ASM",   "ENDASM", "@ movlw 5", "'",          ";",      "REM ",    "\"text", "\"",
    "$1F",  "%1010", "12",     "h'1F'",     ":",          "LABEL:", " MACRO ", "P1",     "ENDM",
    ",",    "#IF ",  "movlw",  "GOTO ",     "\t",         " ",      "é",       "\xff",   "[3]",
    "(",    "PRM_1", "ß",      "\r",        "BYTE_WORD ", "=",      "<>"};

std::string randomLine(std::mt19937& rng) {
    std::uniform_int_distribution<int> count(0, 12);
    std::uniform_int_distribution<size_t> piece(0, std::size(kPieces) - 1);
    std::uniform_int_distribution<int> byte(1, 255);
    std::string line;
    for (int n = count(rng); n > 0; --n) {
        if (rng() % 5 == 0)
            line += static_cast<char>(byte(rng));
        else
            line += kPieces[piece(rng)];
    }
    return line + "\n";
}

QString escaped(const std::string& line) {
    QString out;
    for (unsigned char ch : line)
        out +=
            ch >= 32 && ch < 127 ? QString(QChar(ch)) : QString("\\x%1").arg(ch, 2, 16, QChar('0'));
    return out;
}

} // namespace

class LineScannerRandomTest : public QObject {
    Q_OBJECT

private slots:
    void runsCoverEveryLine() {
        std::mt19937 rng(20261123);
        ScanState state;
        std::vector<std::string> params = {"P1", "P2"};
        for (int i = 0; i < 20000; ++i) {
            const std::string line = randomLine(rng);
            const LineScan scan = scanLine(line, state, params);
            int covered = 0;
            for (const StyleRun& run : scan.runs) {
                QVERIFY2(run.length > 0, qPrintable("empty run in: " + escaped(line)));
                QVERIFY2(run.style >= 0 && run.style < BasicLexer::StyleCount,
                         qPrintable("unknown style in: " + escaped(line)));
                covered += run.length;
            }
            QVERIFY2(covered == int(line.size()),
                     qPrintable("runs do not cover: " + escaped(line)));
            const LineScan again = scanLine(line, state, params);
            QVERIFY2(again.runs.size() == scan.runs.size() && again.end == scan.end,
                     qPrintable("not repeatable: " + escaped(line)));
            state = scan.end;
            if (scan.opensMacro) params = scan.macroParams;
        }
    }
};

QTEST_GUILESS_MAIN(LineScannerRandomTest)
#include "line_scanner_random_test.moc"
