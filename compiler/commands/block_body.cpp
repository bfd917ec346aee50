#include "compiler/commands/block_body.h"

#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/driver/line_loop.h"
#include "compiler/frontend/lexer.h"

#include <string>

namespace zorvel {
namespace {

// Counts the block bodies being compiled while one is.
struct InsideBlock {
    Compilation& c;
    explicit InsideBlock(Compilation& comp) : c(comp) { ++c.stmt.blockDepth; }
    ~InsideBlock() { --c.stmt.blockDepth; }
    InsideBlock(const InsideBlock&) = delete;
    InsideBlock& operator=(const InsideBlock&) = delete;
};

} // namespace

bool textFollows(Compilation& c) {
    skipBlanks(c);
    char ch = c.line.peek();
    return !c.line.atEnd() && ch != '\'' && ch != ';';
}

void compileRestOfLine(Compilation& c) {
    if (!textFollows(c)) {
        c.line.pos = c.line.length();
        return;
    }
    InsideBlock inside(c);
    compileStatementsOfLine(c);
}

void compileFollowingLines(Compilation& c) {
    InsideBlock inside(c);
    CompileContext& ctx = c.ctx;
    c.stmt.keyword.clear();
    c.line.pos = c.line.length();
    ++ctx.lineIndex;
    if (ctx.lineIndex >= ctx.lineCount || ctx.lineIndex >= ctx.lineLimit) return;
    lineLoop(c);
}

bool compileBody(Compilation& c, std::string_view closer) {
    InsideBlock inside(c);
    if (textFollows(c)) {
        compileStatementsOfLine(c);
        if (isBlockClosingKeyword(c.stmt.keyword)) return c.stmt.keyword == closer;
    }
    compileFollowingLines(c);
    return c.stmt.keyword == closer;
}

bool takeCloser(Compilation& c, std::string_view closer) {
    if (c.stmt.keyword != closer) return false;
    c.stmt.keyword.clear();
    return true;
}

void reportUnclosed(Compilation& c, int openingLine, std::string_view text) {
    // A compile stopped for too many errors has said so already.
    if (c.ctx.errorCount >= 2) return;
    reportError(c, kErrPreformatted, std::to_string(openingLine) + std::string(text));
}

} // namespace zorvel
