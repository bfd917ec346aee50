#include "compiler/driver/diagnostics.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/line_loop.h"

#include <string>

namespace zorvel {
namespace {

std::string lineNumber(const Compilation& c) {
    return std::to_string(c.ctx.currentSourceLine + 1);
}

// "Error at Line [N]\tIn file [F]\t" + working line.
std::string framePrefix(const Compilation& c, std::string_view head) {
    std::string s(head);
    s += lineNumber(c);
    s += "]\tIn file [";
    s += c.ctx.currentFile;
    s += "]\t";
    s += c.line.upper;
    return s;
}

std::string standardFrame(const Compilation& c, std::string_view middle) {
    return framePrefix(c, "Error at Line [") + std::string(middle) + "! ***";
}

std::string errorLine(const Compilation& c, int code, std::string_view text) {
    switch (code) {
    case kErrWhole: return "\t\t*** " + std::string(text) + " ***";
    case kErrText: return standardFrame(c, "\t*** " + std::string(text));
    case kErrSyntax: return standardFrame(c, "\t*** Syntax Error");
    case kErrComma: return standardFrame(c, "\t*** Comma missing");
    case kErrOpenBracket: return standardFrame(c, "\t*** '[' missing");
    case kErrCloseBracket: return standardFrame(c, "\t*** ']' missing");
    case kErrOpenBrace: return standardFrame(c, "\t*** '{' missing");
    case kErrCloseBrace: return standardFrame(c, "\t*** '}' missing");
    case kErrPreformatted:
        return "Error at Line [" + std::string(text) + "\tIn file [" + c.ctx.currentFile + "]! ***";
    case kErrBitNotSupported:
        return standardFrame(c, "\t*** This BIT type expression not supported in " +
                                    std::string(text));
    case kErrArrayNotSupported:
        return standardFrame(c, "\t*** ARRAY variables not supported in " + std::string(text));
    default: return standardFrame(c, "");
    }
}

} // namespace

void reportError(Compilation& c, int code, std::string_view text) {
    c.line.pos = c.line.length();
    if (c.ctx.errorCount > 3) {
        c.ctx.lineIndex = c.ctx.lineLimit;
        return;
    }
    if (c.ctx.pass != 2) return;
    c.messages.push_back(errorLine(c, code, text));
    ++c.ctx.errorCount;
}

void reportErrorAtLine(Compilation& c, int lineIndex, int code, std::string_view text) {
    int saved = c.ctx.lineIndex;
    c.ctx.lineIndex = lineIndex;
    readLine(c);
    reportError(c, code, text);
    if (c.ctx.lineIndex == lineIndex) c.ctx.lineIndex = saved;
}

void reportWarning(Compilation& c, int code, std::string_view text) {
    c.ctx.warningRaised = true;
    if (c.ctx.pass != 2) return;
    if (code == kWarnWhole) {
        c.messages.push_back("\tWarning!\t*** " + std::string(text) + " ***");
    } else if (code == kWarnText) {
        c.messages.push_back(framePrefix(c, "Warning Line [") + "\t*** " + std::string(text) +
                             "! ***");
    }
}

} // namespace zorvel
