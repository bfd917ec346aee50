#include "ide/editor/basic_lexer.h"

#include "ide/editor/basic_line_scanner.h"
#include "ide/editor/editor_setup.h"

#include <Qsci/qsciscintilla.h>
#include <algorithm>
#include <array>

namespace zorvel::ide {
namespace {

struct StyleInfo {
    const char* key;         // settings group
    const char* description; // shown in the options dialog
    QRgb color;
    bool bold;
    bool italic;
};

// Indexed by BasicLexer::Style.
constexpr std::array<StyleInfo, BasicLexer::StyleCount> kStyles = {{
    {"Default", "Default text", 0x000000, false, false},
    {"Comment", "Comment", 0x008000, false, true},
    {"ReservedWord", "Reserved word", 0x000080, true, false},
    {"Operator", "Operator", 0x800000, false, false},
    {"Identifier", "Identifier", 0x000000, false, false},
    {"Mnemonic", "Assembler mnemonic", 0x008080, true, false},
    {"MacroParameter", "Macro parameter", 0x800080, false, false},
    {"Number", "Number", 0x0000ff, false, false},
    {"String", "String", 0xa31515, false, false},
    {"Label", "Label", 0x7f0055, true, false},
    {"Function", "Function", 0x0000a0, false, false},
    {"DeclareSetting", "DECLARE setting", 0x6a3d9a, false, false},
    {"RuntimeName", "Runtime name", 0x7f6000, false, false},
    {"Directive", "Directive", 0x804000, false, false},
}};

bool isStyle(int style) {
    return style >= 0 && style < BasicLexer::StyleCount;
}

} // namespace

BasicLexer::BasicLexer(QObject* parent) : QsciLexerCustom(parent) {
    setAutoIndentStyle(QsciScintilla::AiMaintain);
    setDefaultFont(editorFont());
    setDefaultColor(QColor(Qt::black));
    setDefaultPaper(QColor(Qt::white));
}

const char* BasicLexer::language() const {
    return "Zorvel BASIC";
}

QString BasicLexer::description(int style) const {
    return isStyle(style) ? QString::fromLatin1(kStyles[style].description) : QString();
}

QString BasicLexer::styleKey(int style) {
    return isStyle(style) ? QString::fromLatin1(kStyles[style].key) : QString();
}

QColor BasicLexer::defaultColor(int style) const {
    return isStyle(style) ? QColor(kStyles[style].color) : QsciLexer::defaultColor(style);
}

QColor BasicLexer::defaultPaper(int) const {
    return QColor(Qt::white);
}

QFont BasicLexer::defaultFont(int style) const {
    QFont font = QsciLexer::defaultFont();
    if (!isStyle(style)) return font;
    font.setBold(kStyles[style].bold);
    font.setItalic(kStyles[style].italic);
    return font;
}

const char* BasicLexer::wordCharacters() const {
    return "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@#";
}

int BasicLexer::lineCount() const {
    return static_cast<int>(editor()->SendScintilla(QsciScintillaBase::SCI_GETLINECOUNT));
}

int BasicLexer::lineStart(int line) const {
    if (line >= lineCount())
        return static_cast<int>(editor()->SendScintilla(QsciScintillaBase::SCI_GETLENGTH));
    return static_cast<int>(editor()->SendScintilla(QsciScintillaBase::SCI_POSITIONFROMLINE, line));
}

int BasicLexer::lineState(int line) const {
    if (line < 0) return 0;
    return static_cast<int>(editor()->SendScintilla(QsciScintillaBase::SCI_GETLINESTATE, line));
}

QByteArray BasicLexer::lineBytes(int line) const {
    int start = lineStart(line);
    int end = lineStart(line + 1);
    QByteArray bytes = editor()->bytes(start, end);
    bytes.truncate(end - start); // drop the terminating NUL the editor adds
    return bytes;
}

// The parameters of the macro whose body holds `line`: found by going back to
// the header line, the first line of the run of lines inside the macro.
std::vector<std::string> BasicLexer::macroParamsBefore(int line) const {
    int header = line - 1;
    while (header > 0 && ScanState::fromInt(lineState(header - 1)).inMacro)
        --header;
    if (header < 0) return {};
    QByteArray text = lineBytes(header);
    LineScan scan = scanLine(std::string_view(text.constData(), text.size()),
                             ScanState::fromInt(lineState(header - 1)), {});
    return scan.macroParams;
}

void BasicLexer::styleText(int start, int end) {
    if (!editor()) return;
    int endStyled = static_cast<int>(editor()->SendScintilla(QsciScintillaBase::SCI_GETENDSTYLED));
    start = std::min(start, endStyled); // every line depends on the lines before it
    int first = static_cast<int>(
        editor()->SendScintilla(QsciScintillaBase::SCI_LINEFROMPOSITION, std::max(start, 0)));
    int last = static_cast<int>(
        editor()->SendScintilla(QsciScintillaBase::SCI_LINEFROMPOSITION, std::max(end, 0)));
    ScanState state = ScanState::fromInt(lineState(first - 1));
    std::vector<std::string> params =
        state.inMacro ? macroParamsBefore(first) : std::vector<std::string>{};
    startStyling(lineStart(first));
    for (int line = first; line <= last; ++line) {
        QByteArray text = lineBytes(line);
        LineScan scan = scanLine(std::string_view(text.constData(), text.size()), state, params);
        for (const StyleRun& run : scan.runs)
            setStyling(run.length, run.style);
        editor()->SendScintilla(QsciScintillaBase::SCI_SETLINESTATE, line, scan.end.toInt());
        if (scan.opensMacro) params = std::move(scan.macroParams);
        if (!scan.end.inMacro) params.clear();
        state = scan.end;
    }
}

} // namespace zorvel::ide
