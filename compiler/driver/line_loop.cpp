#include "compiler/driver/line_loop.h"

#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"

#include <algorithm>
#include <cctype>

namespace zorvel {
namespace {

bool isSpace(char ch) {
    return ch == ' ' || ch == '\t' || ch == '\f' || ch == '\v';
}

// Control characters other than blanks have no place in a statement line.
bool reportControlCharacter(Compilation& c) {
    auto bad = std::find_if(c.line.upper.begin(), c.line.upper.end(), [](char ch) {
        unsigned char u = static_cast<unsigned char>(ch);
        return u < 32 && ch != '\t';
    });
    if (bad == c.line.upper.end()) return false;
    reportError(c, kErrText,
                "Unexpected control character (code " +
                    std::to_string(static_cast<unsigned char>(*bad)) + ")");
    return true;
}

// A statement line longer than the line buffer would be compiled cut short;
// only a comment may run past the end.
bool reportLongLine(Compilation& c) {
    const LineBuffer& l = c.line;
    if (l.raw.find_last_not_of(" \t\r\n") + 1 <= LineBuffer::kMaxLength) return false;
    bool quoted = false;
    for (char ch : l.cased) {
        if (ch == '"') quoted = !quoted;
        if (ch == '\'' && !quoted) return false;
    }
    if (l.upper.rfind("REM", 0) == 0) return false;
    reportError(c, kErrText,
                "Line too long: statements end within " + std::to_string(LineBuffer::kMaxLength) +
                    " characters");
    return true;
}

// Stops the run once; a block statement's body loop may have stopped it
// already, and the loops around it must not say so again.
void reportTooManyErrors(Compilation& c) {
    static constexpr const char* kText = "\tToo many COMPILER ERRORS.";
    if (c.messages.empty() || c.messages.back() != kText) c.messages.push_back(kText);
    c.ctx.lineIndex = c.ctx.lineLimit;
}

} // namespace

bool readLine(Compilation& c) {
    LineBuffer& l = c.line;
    l.upper.clear();
    l.cased.clear();
    l.raw.clear();
    l.pos = 0;
    CompileContext& ctx = c.ctx;
    if (ctx.lineIndex >= ctx.lineLimit || ctx.lineIndex >= static_cast<int>(c.workfile.size()))
        return false;
    const SourceEntry& entry = c.workfile[ctx.lineIndex];
    ctx.currentFile = c.sourceFiles[entry.file].name;
    ctx.currentSourceLine = entry.line;
    const std::string& text = entry.text;
    size_t begin = 0, end = text.size();
    while (begin < end && isSpace(text[begin]))
        ++begin;
    l.raw.assign(text, begin, end - begin);
    while (end > begin && isSpace(text[end - 1]))
        --end;
    if (begin == end) return false;
    l.cased.assign(text, begin, std::min(end - begin, LineBuffer::kMaxLength));
    l.upper = l.cased;
    for (char& ch : l.upper)
        if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
    return true;
}

LoopExit lineLoop(Compilation& c) {
    CompileContext& ctx = c.ctx;
    do {
        if (readLine(c)) {
            c.stmt.firstStatementOfLine = true;
            c.stmt.keyword.clear();
            c.line.pos = 0;
            if (ctx.pass != 2 || (!reportControlCharacter(c) && !reportLongLine(c)))
                compileStatementsOfLine(c);
            if (ctx.pass == 2 && isBlockClosingKeyword(c.stmt.keyword))
                return LoopExit::ClosingKeyword;
        }
        ++ctx.lineIndex;
        if (ctx.errorCount >= 2) {
            reportTooManyErrors(c);
            return LoopExit::Finished;
        }
    } while (ctx.lineIndex < ctx.lineCount && ctx.lineIndex < ctx.lineLimit);
    return LoopExit::Finished;
}

} // namespace zorvel
