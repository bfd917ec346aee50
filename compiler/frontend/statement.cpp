#include "compiler/frontend/statement.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/reserved_names.h"

#include <algorithm>

namespace zorvel {
namespace {

bool isHeadChar(char ch) {
    return isIdentifierChar(ch) || ch == '.' || ch == '#';
}

// Reads a statement word: letters, digits, "_", "$", "%", '"', "." and "#".
// A comment character makes the keyword REM and stays under the cursor.
bool readHeadWord(Compilation& c, std::string& word) {
    LineBuffer& l = c.line;
    word.clear();
    char first = l.peek();
    if (first == '\'' || first == ';') {
        word = "REM";
        return true;
    }
    size_t start = l.pos;
    while (l.pos < l.length() && isHeadChar(l.upper[l.pos]))
        ++l.pos;
    if (l.pos - start > kMaxWordLength) {
        reportError(c, kErrText,
                    "'" + l.upper.substr(start, l.pos - start) +
                        "' is too long. Names and words have at most 32 characters");
        return false;
    }
    word.assign(l.upper, start, l.pos - start);
    return true;
}

constexpr std::string_view kNeverLabels[] = {
    "#ENDIF", "#ELSE", "ENDM",  "EXITM",  "CLS",   "NOP",    "ENDIF",  "END",
    "ELSE",   "NEXT",  "WEND",  "REPEAT", "SLEEP", "CLRWDT", "RETURN", "RESTORE",
    "STOP",   "SKPZ",  "SKPNZ", "SKPC",   "SKPNC", "SKPDC",  "SKPNDC", "SKIP"};

bool isNeverLabel(std::string_view word) {
    return std::find(std::begin(kNeverLabels), std::end(kNeverLabels), word) !=
           std::end(kNeverLabels);
}

// The word after the ":" of a label, read without moving the cursor.
bool isDataLabel(Compilation& c) {
    LineBuffer& l = c.line;
    if (l.at(l.pos + 1) == '-') return true;
    size_t saved = l.pos;
    ++l.pos;
    bool cdata = peekWord(c) == "CDATA";
    l.pos = saved;
    return cdata;
}

// Why a label cannot be written as an assembler label, or nullptr.
const char* labelFault(Compilation& c, const std::string& label) {
    if (label.empty()) return nullptr;
    if (label[0] >= '0' && label[0] <= '9') return "Labels must not start with a number";
    if (!isValidName(label)) return "Not a valid label name. Labels hold letters, digits and '_'";
    if (c.ctx.pass != 2) return nullptr;
    if (assemblerNameClash(c, label)) return "An assembler word cannot be used as a label";
    if (c.symbols.find(label)) return "A declared name cannot be used as a label";
    return nullptr;
}

void compileLabel(Compilation& c, const std::string& label) {
    bool data = isDataLabel(c);
    if (data || label == c.device.handlerLabel)
        c.emit(label);
    else
        c.emit(label + "\tR@B");
    c.stmt.lineHasLabel = true;
    recordLabel(c, label);
    bool firstPlacement = c.ctx.pass != 2 || c.names.placedLabels.insert(label).second;
    if (const char* fault = labelFault(c, label)) {
        reportError(c, kErrText, fault);
        c.stmt.nothingToDispatch = true;
        return;
    }
    if (c.ctx.pass == 2 && !label.empty() && !c.names.openMacro.empty()) {
        if (!c.names.openMacroLocals.count(label)) {
            reportError(c, kErrText,
                        "Label '" + label + "' in macro '" + c.names.openMacro +
                            "' must be declared with #LOCAL");
            c.stmt.nothingToDispatch = true;
            return;
        }
        c.names.macroLabels.emplace(label, c.names.openMacro);
    }
    if (!label.empty() && !firstPlacement) {
        reportError(c, kErrText, "Label '" + label + "' is already defined");
        c.stmt.nothingToDispatch = true;
        return;
    }
    if (c.ctx.pass == 2 && !label.empty() && c.labels.full() && !c.labels.contains(label)) {
        reportError(c, kErrText, "Too many labels. A program has at most 1000");
        c.stmt.nothingToDispatch = true;
        return;
    }
    if (c.line.peek() == ':') ++c.line.pos;
    if (c.line.peek() == '-') ++c.line.pos; // "NAME:-" marks a data label
    skipBlanks(c);
    if (c.line.peek() == '@') {
        ++c.line.pos;
        c.stmt.keyword = "S_ASM";
        return;
    }
    if (!readHeadWord(c, c.stmt.keyword) || c.stmt.keyword.empty()) c.stmt.nothingToDispatch = true;
}

void compileMacroHead(Compilation& c, const std::string& name) {
    if (!isValidName(name)) {
        reportError(c, kErrText, "'" + name + "' is not a valid name. " + kNameRule);
        c.stmt.nothingToDispatch = true;
        return;
    }
    if (lookupKeyword(name).found()) {
        reportError(c, kErrText, "'" + name + "' is a reserved KEYWORD");
        c.stmt.nothingToDispatch = true;
        return;
    }
    if (c.ctx.pass == 1) c.macroNames.add(name);
    if (c.ctx.pass == 2 && c.macroNames.full() && !c.macroNames.contains(name)) {
        reportError(c, kErrText, "Too many macros. A program has at most 200");
        c.stmt.nothingToDispatch = true;
        return;
    }
    c.stmt.macroDefinition = true;
}

} // namespace

bool isBlockClosingKeyword(std::string_view k) {
    return k == "ELSE" || k == "ENDIF" || k == "WEND" || k == "NEXT" || k == "UNTIL";
}

bool closingKeywordFollows(Compilation& c) {
    return isBlockClosingKeyword(peekWord(c));
}

void readStatementHead(Compilation& c) {
    StatementState& s = c.stmt;
    s.keyword.clear();
    s.token.clear();
    s.lineHasLabel = false;
    s.macroDefinition = false;
    LineBuffer& l = c.line;
    if (l.peek() == '@') {
        s.keyword = "S_ASM";
        ++l.pos;
        return;
    }
    std::string word;
    if (!readHeadWord(c, word)) {
        s.nothingToDispatch = true;
        return;
    }
    if (word == "REM" && (l.peek() == '\'' || l.peek() == ';')) {
        s.keyword = word;
        return;
    }
    if (isNeverLabel(word)) {
        s.keyword = word;
        return;
    }
    if (peekWord(c) == "MACRO") {
        s.keyword = word;
        compileMacroHead(c, word);
        return;
    }
    if (l.peek() == ':') {
        compileLabel(c, word);
        return;
    }
    s.keyword = word;
    if (word.empty()) s.nothingToDispatch = true;
}

void remarksEcho(Compilation& c) {
    if (!c.stmt.remarksOn || !c.stmt.firstStatementOfLine) return;
    std::string_view text = c.line.cased;
    if (c.stmt.lineHasLabel) {
        size_t colon = text.find(':');
        text = colon == std::string_view::npos ? std::string_view{} : text.substr(colon + 1);
    }
    c.emit(";" + std::string(text));
    c.stmt.firstStatementOfLine = false;
}

} // namespace zorvel
