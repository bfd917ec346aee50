// User macros: the declaration line, ENDM, EXITM, #LOCAL, calls as
// statements, as values and as condition operands, and the type-pair
// statements of macro bodies. A macro body cannot see the BASIC types of its
// arguments, so each call passes them in assembler variables (PRM_C, PRM_1 ..,
// RETURN_TYPE, RETURN_VAR, RETURN_BITNUM) while MACRO_PARAMS is on.
#include "compiler/commands/commands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/expression.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/statement.h"

#include <cassert>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

namespace zorvel {
namespace {

// Every macro is declared, and every call written, with this many positions.
constexpr size_t kPositions = 15;

constexpr std::string_view kKindNames =
    "\tLocal BYTE=0,WORD=1,BIT=2,LABEL=3,OPERAND=6,NUM8=8,NUM16=16";

// Argument kinds as the macro body sees them.
enum ArgumentKind {
    kArgByte = 0,
    kArgWord = 1,
    kArgBit = 2,
    kArgLabel = 3,
    kArgOperand = 6,
    kArgNum8 = 8,
    kArgNum16 = 16,
};

struct Arguments {
    std::vector<std::string> texts;
    std::vector<int> kinds;
    void add(std::string text, int kind) {
        texts.push_back(std::move(text));
        kinds.push_back(kind);
    }
};

// The assembler wants every macro parameter named and every argument
// present: unused header positions get names no BASIC name can take, unused
// call positions a 0.
std::string unusedParameter(size_t position) {
    return "p@" + std::to_string(position);
}
constexpr std::string_view kUnusedArgument = "0";

bool atStatementEnd(Compilation& c) {
    skipBlanks(c);
    return c.line.atEnd() || isStatementEnd(c.line.peek());
}

// --- Declaration ----------------------------------------------------------------

std::optional<std::vector<std::string>> readParameterNames(Compilation& c) {
    std::vector<std::string> names;
    while (!atStatementEnd(c)) {
        std::string name = readWord(c);
        if (name.empty()) {
            reportError(c, kErrSyntax);
            return std::nullopt;
        }
        if (!isValidName(name)) {
            reportError(c, kErrText, "'" + name + "' is not a valid name. " + kNameRule);
            return std::nullopt;
        }
        names.push_back(name);
        if (names.size() > kPositions) {
            reportError(c, kErrText, "Macro parameter limit exceeded");
            return std::nullopt;
        }
        if (atStatementEnd(c)) break;
        if (c.line.peek() != ',') {
            reportError(c, kErrComma);
            return std::nullopt;
        }
        ++c.line.pos;
    }
    return names;
}

std::string headerLine(const std::string& name, const std::vector<std::string>& params) {
    std::string line = name + "\tMacro ";
    for (size_t i = 0; i < kPositions; ++i) {
        if (i > 0) line += ",";
        line += i < params.size() ? params[i] : unusedParameter(i + 1);
    }
    return line;
}

// --- Call arguments -----------------------------------------------------------

// A character between the assembler's single quotes; a quote or a backslash
// cannot stand there, so it is written as its code.
std::string characterArgument(char ch) {
    if (ch == '\'' || ch == '\\') return std::to_string(static_cast<unsigned char>(ch));
    return "'" + std::string(1, ch) + "'";
}

// Each character of a double-quoted text is one NUM8 argument.
bool readTextArgument(Compilation& c, Arguments& args) {
    LineBuffer& l = c.line;
    size_t start = ++l.pos;
    while (l.pos < l.length() && l.upper[l.pos] != '"')
        ++l.pos;
    if (l.pos >= l.length()) {
        reportError(c, kErrText, "End Quote Expected");
        return false;
    }
    for (size_t i = start; i < l.pos; ++i)
        args.add(characterArgument(l.cased[i]), kArgNum8);
    ++l.pos;
    return true;
}

// An operator character with nothing attached to it.
bool loneOperatorFollows(Compilation& c) {
    static constexpr std::string_view kOperators = "+-*/=<>&|^~!";
    LineBuffer& l = c.line;
    if (kOperators.find(l.peek()) == std::string_view::npos) return false;
    char next = l.at(l.pos + 1);
    return isBlank(next) || next == ',' || next == ')' || isStatementEnd(next);
}

bool addOperandArgument(Compilation& c, const std::string& text, Arguments& args) {
    const Operand& op = c.operand;
    switch (op.kind) {
    case kKindNum:
        args.add(std::to_string(op.address), op.address < 256 ? kArgNum8 : kArgNum16);
        return true;
    case kKindByte:
    case kKindByteArray: args.add(op.target, kArgByte); return true;
    case kKindWord:
    case kKindWordArray: args.add(op.target, kArgWord); return true;
    case kKindBit:
        args.add(op.target, kArgByte);
        args.add(std::to_string(op.bit), kArgBit);
        return true;
    default: reportError(c, kErrText, "'" + text + "' cannot be passed to a macro"); return false;
    }
}

bool readArgument(Compilation& c, Arguments& args) {
    LineBuffer& l = c.line;
    if (l.peek() == '"') return readTextArgument(c, args);
    if (loneOperatorFollows(c)) {
        args.add(std::to_string(static_cast<unsigned char>(l.peek())), kArgOperand);
        ++l.pos;
        return true;
    }
    std::string text = readOperand(c);
    if (text.empty()) {
        reportError(c, kErrComma);
        return false;
    }
    if (lookupLabel(c, false, text)) {
        args.add(text, kArgLabel);
        return true;
    }
    if (!classifyOperand(c, true, text)) return false;
    return addOperandArgument(c, text, args);
}

// In a condition the arguments stop at the comparison or at THEN.
bool argumentsEnd(Compilation& c, bool inCondition) {
    if (atStatementEnd(c)) return true;
    if (!inCondition) return false;
    char ch = c.line.peek();
    if (ch == '<' || ch == '>' || ch == '=' || ch == '!') return true;
    std::string word = peekWord(c);
    return word == "THEN" || word == "AND" || word == "OR";
}

std::optional<Arguments> readArguments(Compilation& c, bool inCondition) {
    Arguments args;
    while (!argumentsEnd(c, inCondition)) {
        if (c.line.peek() == '(') ++c.line.pos;
        skipBlanks(c);
        if (!readArgument(c, args)) return std::nullopt;
        skipBlanks(c);
        if (c.line.peek() == ')') ++c.line.pos;
        if (argumentsEnd(c, inCondition)) break;
        if (c.line.peek() != ',') {
            reportError(c, kErrComma);
            return std::nullopt;
        }
        ++c.line.pos;
    }
    if (args.texts.size() > kPositions) {
        reportError(c, kErrText, "Macro parameter limit exceeded");
        return std::nullopt;
    }
    return args;
}

// --- Call lines -------------------------------------------------------------------

std::string kindLine(const Arguments& args) {
    std::string line = "Variable ";
    for (size_t i = 0; i < args.kinds.size(); ++i) {
        if (i > 0) line += ",";
        line += "PRM_" + std::to_string(i + 1) + "=" + std::to_string(args.kinds[i]);
    }
    return line;
}

// `returnLine` is empty for a call as a statement.
std::string countLine(const Arguments& args, const std::string& returnLine) {
    std::string count = std::to_string(args.texts.size());
    if (returnLine.empty()) return "Variable PRM_C=" + count;
    return returnLine + ",PRM_C=" + count;
}

std::string callLine(const std::string& name, const Arguments& args) {
    std::string line = "\t" + name + (args.texts.empty() ? "  " : " ");
    for (size_t i = 0; i < kPositions; ++i) {
        if (i > 0) line += ",";
        line += i < args.texts.size() ? args.texts[i] : std::string(kUnusedArgument);
    }
    return line;
}

void emitCall(Compilation& c, const std::string& name, const Arguments& args,
              const std::string& returnLine) {
    bool params = c.stmt.macroParamsOn;
    bool kinds = params && !args.kinds.empty();
    if (kinds) c.emit(kindLine(args));
    if (params) c.emit(countLine(args, returnLine));
    c.emit(callLine(name, args));
    if (params) c.emit(countLine(args, returnLine));
    if (kinds) c.emit(kindLine(args));
}

// The return variables for a destination; nullopt after reporting.
std::optional<std::string> returnLine(Compilation& c, const Value& dest) {
    switch (dest.kind) {
    case kKindByte: return "Variable RETURN_TYPE=0,RETURN_VAR=" + dest.name;
    case kKindWord: return "Variable RETURN_TYPE=1,RETURN_VAR=" + dest.name;
    case kKindBit:
        return "Variable RETURN_TYPE=2,RETURN_VAR=" + dest.name +
               ",RETURN_BITNUM=" + std::to_string(dest.bit);
    default:
        reportError(c, kErrText, "A macro result cannot be stored in '" + dest.name + "'");
        return std::nullopt;
    }
}

// The macro name at the cursor and its arguments, with a result for `dest`.
bool compileValueCall(Compilation& c, const Value& dest, bool inCondition) {
    std::optional<std::string> ret = returnLine(c, dest);
    if (!ret) return false;
    std::string name = readWord(c);
    assert(c.macroNames.contains(name) && "macro value call without a declared macro");
    std::optional<Arguments> args = readArguments(c, inCondition);
    if (!args) return false;
    emitCall(c, name, *args, *ret);
    return true;
}

// --- Statements -----------------------------------------------------------------

// The statements that only a macro body may hold.
bool insideMacro(Compilation& c) {
    if (!c.names.openMacro.empty()) return true;
    reportError(c, kErrText, c.stmt.keyword + " outside a macro");
    return false;
}

} // namespace

void compileEndm(Compilation& c) {
    if (c.names.openMacro.empty()) {
        reportError(c, kErrText, "ENDM without MACRO");
        return;
    }
    c.names.openMacro.clear();
    c.names.openMacroParams.clear();
    c.names.openMacroLocals.clear();
    c.emit("\tEndm");
}

void compileExitm(Compilation& c) {
    if (insideMacro(c)) c.emit("\tExitm");
}

void compileLocal(Compilation& c) {
    if (!insideMacro(c)) return;
    std::string rest = readStatementRest(c);
    if (rest.empty()) {
        reportError(c, kErrSyntax);
        return;
    }
    for (size_t at = 0; at < rest.size();) {
        size_t end = rest.find(',', at);
        std::string name = rest.substr(at, end - at);
        name.erase(0, name.find_first_not_of(" \t"));
        name.erase(name.find_last_not_of(" \t") + 1);
        for (char& ch : name)
            ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        c.names.openMacroLocals.insert(name);
        at = end == std::string::npos ? rest.size() : end + 1;
    }
    c.emit("\tLocal " + rest);
}

// A type-pair statement: the keyword in lower case and the rest of the line.
void compileTypePair(Compilation& c) {
    if (!insideMacro(c)) return;
    std::string head = c.stmt.keyword;
    for (char& ch : head)
        ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    LineBuffer& l = c.line;
    skipBlanks(c);
    size_t start = l.pos;
    while (l.pos < l.length() && l.upper[l.pos] != '\'')
        ++l.pos;
    c.emit("\t" + head + " " + assemblerOperandText(c, l.cased.substr(start, l.pos - start)));
}

void compileMacroDeclaration(Compilation& c) {
    readWord(c); // MACRO
    PassNames& use = c.names;
    if (!use.openMacro.empty()) {
        reportError(c, kErrText,
                    "Macro '" + c.stmt.keyword + "' declared inside macro '" + use.openMacro +
                        "'. ENDM missing");
        return;
    }
    std::optional<std::vector<std::string>> params = readParameterNames(c);
    if (!params) return;
    use.openMacro = c.stmt.keyword;
    use.openMacroParams = *params;
    use.openMacroLine = c.ctx.lineIndex;
    c.emit(headerLine(c.stmt.keyword, *params));
    c.emit(std::string(kKindNames));
}

bool isMacroStatement(Compilation& c) {
    const std::string& name = c.stmt.keyword;
    if (c.macroNames.contains(name)) return true;
    // Not a macro, and no assignment either: a name that is nothing known.
    skipBlanks(c);
    char next = c.line.peek();
    if (next == '=' || next == '[' || name == "WREG") return false;
    return !findSymbol(c, normaliseName(name), false);
}

void compileMacroCall(Compilation& c) {
    remarksEcho(c);
    const std::string name = c.stmt.keyword;
    if (!c.macroNames.contains(name)) {
        reportError(c, kErrText, "Macro '" + name + "' not found");
        return;
    }
    std::optional<Arguments> args = readArguments(c, false);
    if (args) emitCall(c, name, *args, "");
}

bool macroFollows(Compilation& c) {
    return c.macroNames.contains(peekWord(c));
}

void compileMacroValue(Compilation& c, const Value& dest) {
    compileValueCall(c, dest, false);
}

std::optional<Value> compileMacroOperand(Compilation& c, const char* registerName) {
    Value result{registerName, kKindWord, -1};
    if (!compileValueCall(c, result, true)) return std::nullopt;
    return result;
}

} // namespace zorvel
