#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/driver/line_loop.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/ram.h"
#include "compiler/frontend/statement.h"

#include <string>

namespace zorvel {
namespace {

// ON / 1 sets a switch, OFF / 0 clears it, another word leaves it alone.
void compileSwitch(Compilation& c, bool& flag) {
    const std::string& word = readWord(c);
    if (word.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    if (word == "ON" || word == "1") flag = true;
    if (word == "OFF" || word == "0") flag = false;
}

// An endless loop on a fresh block label.
void emitHaltLoop(Compilation& c, bool clearWatchdog) {
    std::string label = newLabel(c, "Pb@lab", LabelCounter::Block);
    emitLabel(c, label);
    if (clearWatchdog) c.emit("\tClrwdt");
    emitOp(c, Op1::FarGoto, label);
}

// A directive copied with the rest of its statement.
void emitDirective(Compilation& c, std::string_view head) {
    std::string text = readStatementRest(c);
    if (text.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    c.emit(std::string(head) + text);
}

} // namespace

void compileComment(Compilation& c) {
    if (c.stmt.remarksOn) c.emit(";" + c.line.cased.substr(std::min(c.line.pos, c.line.length())));
    c.line.pos = c.line.length();
}

// ASM ... ENDASM: the lines between are copied as written.
void compileAsmBlock(Compilation& c) {
    CompileContext& ctx = c.ctx;
    for (; ctx.lineIndex < ctx.lineCount && ctx.lineIndex < ctx.lineLimit; ++ctx.lineIndex) {
        if (!readLine(c)) continue;
        std::string word = peekWord(c);
        if (word == "ASM") {
            c.emit("\tR@B");
            c.emit("; Start of Inline Code");
        } else if (word == "ENDASM") {
            c.emit("; End of Inline Code");
            c.line.pos = c.line.length();
            return;
        } else {
            c.emit(c.line.raw);
        }
    }
    // The source ended inside the block: leave the loop on its last line.
    ctx.lineIndex = std::max(0, std::min(ctx.lineCount, ctx.lineLimit) - 1);
    c.line.pos = c.line.length();
}

void compileDefine(Compilation& c) {
    if (!claimDefineName(c)) return;
    c.emit("\t#" + c.line.raw);
    c.line.pos = c.line.length();
}

// END stops the program and the compile. Inside a block or a macro body the
// lines after it still belong to the program: there it only stops the program.
void compileEnd(Compilation& c) {
    emitHaltLoop(c, true);
    if (c.stmt.blockDepth > 0 || !c.names.openMacro.empty()) return;
    c.emit("\tEND\r\n");
    c.ctx.endSeen = true;
    c.ctx.lineCount = c.ctx.lineIndex;
    c.line.pos = c.line.length();
}

void compileStop(Compilation& c) {
    remarksEcho(c);
    emitHaltLoop(c, c.watchdogOn());
}

// The source reader has put the included lines in place already.
void skipIncludeName(Compilation& c) {
    c.line.pos = c.line.length();
}

void compileMacroParams(Compilation& c) {
    compileSwitch(c, c.stmt.macroParamsOn);
}

void compileRemarks(Compilation& c) {
    compileSwitch(c, c.stmt.remarksOn);
}

void compileOneLineAsm(Compilation& c) {
    std::string text = c.line.raw;
    if (size_t at = text.find('@'); at != std::string::npos) text[at] = ' ';
    c.emit(text);
    c.line.pos = c.line.length();
}

void compileError(Compilation& c) {
    skipBlanks(c);
    LineBuffer& l = c.line;
    if (l.peek() != '"') {
        reportError(c, kErrText, "Missing quotes");
        return;
    }
    size_t start = ++l.pos;
    while (l.pos < l.length() && l.upper[l.pos] != '"')
        ++l.pos;
    std::string text = l.cased.substr(start, l.pos - start);
    if (l.pos < l.length()) ++l.pos;
    c.emit("\tError \"Line[" + std::to_string(c.ctx.lineIndex + 1) + "] " + text + "\"");
}

void placeDataSkipLabel(Compilation& c) {
    if (!c.dataTable.pending || c.stmt.keyword == "DATA") return;
    c.emit(c.dataTable.skipLabel + " R@B");
    c.dataTable.pending = false;
}

void compileNothing(Compilation&) {}

// The assembler's conditional and define directives, passed on with the rest
// of the statement.
void compileIfDirective(Compilation& c) {
    emitDirective(c, "\tif ");
}
void compileIfdefDirective(Compilation& c) {
    emitDirective(c, "\tifdef ");
}
void compileIfndefDirective(Compilation& c) {
    emitDirective(c, "\tifndef ");
}
void compileElseDirective(Compilation& c) {
    c.emit("\telse");
}
void compileEndifDirective(Compilation& c) {
    c.emit("\tendif");
}
void compileWhileDirective(Compilation& c) {
    emitDirective(c, "\twhile ");
}
void compileEndwDirective(Compilation& c) {
    c.emit("\tendw");
}
void compileIncludeDirective(Compilation& c) {
    emitDirective(c, "\t#Include ");
}
void compileDefineDirective(Compilation& c) {
    emitDirective(c, "\t#define ");
}
void compileUndefineDirective(Compilation& c) {
    emitDirective(c, "\tundefine ");
}

} // namespace zorvel
