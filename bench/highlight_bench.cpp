// Highlighting speed: a generated BASIC program (the ring buffer example
// repeated to [lines] lines) styled by the line scanner alone, and then by
// the editor with its lexer from the first line to the last, as opening a
// large file does. Prints lines per second for both.
#include "ide/editor/basic_lexer.h"
#include "ide/editor/basic_line_scanner.h"
#include "ide/editor/editor_setup.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <Qsci/qsciscintilla.h>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace zorvel::ide;

namespace {

std::vector<std::string> programLines(int count) {
    QFile file(ZORVEL_SOURCE_DIR "/examples/ring_buffer.bas");
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QList<QByteArray> example = file.readAll().split('\n');
    std::vector<std::string> lines;
    while (int(lines.size()) < count)
        for (const QByteArray& l : example)
            if (int(lines.size()) < count) lines.push_back(l.toStdString() + "\n");
    return lines;
}

double scannerLinesPerSecond(const std::vector<std::string>& lines, int runs) {
    QElapsedTimer timer;
    timer.start();
    size_t runsSeen = 0;
    for (int r = 0; r < runs; ++r) {
        ScanState state;
        std::vector<std::string> params;
        for (const std::string& line : lines) {
            LineScan scan = scanLine(line, state, params);
            state = scan.end;
            if (scan.opensMacro) params = scan.macroParams;
            runsSeen += scan.runs.size();
        }
    }
    const double seconds = timer.nsecsElapsed() / 1e9;
    if (runsSeen == 0) std::puts("no style runs: the scanner did nothing");
    return lines.size() * double(runs) / seconds;
}

double editorLinesPerSecond(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& l : lines)
        text += l;
    QsciScintilla editor;
    auto* lexer = new BasicLexer(&editor);
    configureSourceEditor(editor, lexer);
    editor.setText(QString::fromStdString(text));
    QElapsedTimer timer;
    timer.start();
    editor.SendScintilla(QsciScintillaBase::SCI_COLOURISE, 0L, -1L);
    return lines.size() / (timer.nsecsElapsed() / 1e9);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int count = argc > 1 ? std::atoi(argv[1]) : 20000;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    const std::vector<std::string> lines = programLines(count);
    if (lines.empty()) {
        std::puts("cannot read examples/ring_buffer.bas");
        return 1;
    }
    std::printf("lines: %zu\n", lines.size());
    std::printf("line scanner: %.0f lines/s (%d runs)\n", scannerLinesPerSecond(lines, runs), runs);
    std::printf("editor styling (whole document): %.0f lines/s\n", editorLinesPerSecond(lines));
    return 0;
}
