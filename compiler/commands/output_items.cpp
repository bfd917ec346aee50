// The output items of SEROUT, RSOUT and PRINT. Each item loads the registers
// of a runtime routine and calls it: plain characters go straight to the
// output's character routine, everything else (numbers, strings, repeats,
// CLS, cursor moves) through a routine that sends its characters to the
// output whose BPFH bit is set.
#include "compiler/commands/output_items.h"

#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/keywords.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"

#include <optional>

namespace zorvel {
namespace {

void call(Compilation& c, std::string_view routine, Group group) {
    need(c, group);
    emitOp(c, Op1::FarCall, routine);
}

// A send that can time out (SEROUT with a timeout) returns with the carry clear.
void testTimeout(Compilation& c, const OutputTarget& t) {
    if (!t.timeoutLabel.empty()) emitTestAndJump(c, 0, "STATUS", 0, t.timeoutLabel);
}

void sendW(Compilation& c, const OutputTarget& t) {
    call(c, t.routine, t.group);
    testTimeout(c, t);
}

// A routine that sends its characters through the dispatcher.
void callThroughDispatcher(Compilation& c, const OutputTarget& t, std::string_view routine,
                           Group group) {
    call(c, routine, group);
    testTimeout(c, t);
}

// A number formatter; RSOUT and PRINT set their output flag again first.
void callFormatter(Compilation& c, const OutputTarget& t, std::string_view routine, Group group) {
    if (t.repeatFlag) emitBit(c, BitOp::BsfBanked, "BPFH", t.flagBit);
    callThroughDispatcher(c, t, routine, group);
}

// A single constant at the cursor: its value, the cursor left behind it.
// Otherwise nullopt, with the cursor where it was and nothing reported.
std::optional<int> singleConstant(Compilation& c) {
    size_t start = c.line.pos;
    if (countTerms(c) == 1) {
        std::string token = readOperand(c);
        if (!token.empty() && !elementFollows(c) && classifyOperand(c, false, token) &&
            c.operand.kind == kKindNum)
            return c.operand.address;
    }
    c.line.pos = start;
    return std::nullopt;
}

// Whether the value at the cursor fits a byte without its high byte: a BYTE
// or BIT variable, a BYTE array element or a constant up to 255. The cursor
// stays where it was.
bool byteSized(Compilation& c) {
    size_t start = c.line.pos;
    bool small = false;
    if (countTerms(c) == 1 && !isFunctionKeyword(peekWord(c))) {
        std::string token = readOperand(c);
        if (!token.empty() && classifyOperand(c, false, token)) {
            int kind = c.operand.kind;
            small = kind == kKindByte || kind == kKindBit || kind == kKindByteArray ||
                    (kind == kKindNum && c.operand.address >= 0 && c.operand.address <= 255);
        }
    }
    c.line.pos = start;
    return small;
}

// The number to format into PP2 and PP2H. A constant is always stored as a
// word, so the four-digit entries never meet a stale high byte.
bool numberToPP2(Compilation& c, std::string_view keyword) {
    skipBlanks(c);
    if (isFunctionKeyword(peekWord(c))) {
        int errors = c.ctx.errorCount;
        compileFunction(c, Value{"PP2", kKindWord, -1});
        return c.ctx.errorCount == errors;
    }
    return loadWord(c, "PP2", keyword);
}

// "HEX", "HEX4": the digit count written directly after the stem, -1 when
// there is none; nullopt when the word is not the stem with digits.
std::optional<int> countedWord(std::string_view word, std::string_view stem) {
    if (word.substr(0, stem.size()) != stem) return std::nullopt;
    std::string_view digits = word.substr(stem.size());
    if (digits.empty()) return -1;
    for (char ch : digits)
        if (ch < '0' || ch > '9') return std::nullopt;
    return digits.size() > 3 ? 1000 : std::stoi(std::string(digits));
}

bool hexItem(Compilation& c, const OutputTarget& t, int digits) {
    if (digits == 0 || digits > 4) {
        reportError(c, kErrText, "Invalid HEX instruction");
        return false;
    }
    if (!numberToPP2(c, t.keyword)) return false;
    std::string routine = digits < 0 ? "Out_Hex" : "Out_Hex" + std::to_string(digits);
    callFormatter(c, t, routine, Group::Hex);
    return true;
}

// BIN and DEC: without a count, leading zeros are dropped; with one, exactly
// that many of the last digits are sent.
bool countedFormatter(Compilation& c, const OutputTarget& t, int digits, int most,
                      std::string_view invalid, std::string_view plain, std::string_view counted,
                      Group group) {
    if (digits == 0 || digits > most) {
        reportError(c, kErrText, invalid);
        return false;
    }
    if (!numberToPP2(c, t.keyword)) return false;
    if (digits < 0) {
        callFormatter(c, t, plain, group);
        return true;
    }
    constToByte(c, {std::to_string(digits), digits}, "GEN4H");
    emitBit(c, BitOp::BcfBanked, "BPF", 3);
    callFormatter(c, t, counted, group);
    return true;
}

// "@" value: the value in decimal; a byte value through the entry that
// clears the high byte itself.
bool decimalItem(Compilation& c, const OutputTarget& t) {
    if (byteSized(c)) {
        if (!loadByte(c, "PP2", t.keyword)) return false;
        callFormatter(c, t, "o@dec2b", Group::Dec);
        return true;
    }
    if (!numberToPP2(c, t.keyword)) return false;
    callFormatter(c, t, "o@dec2", Group::Dec);
    return true;
}

bool textItem(Compilation& c, const OutputTarget& t) {
    LineBuffer& l = c.line;
    size_t close = l.upper.find('"', l.pos + 1);
    if (close == std::string::npos) {
        reportError(c, kErrText, "Missing Quote");
        return false;
    }
    for (size_t at = l.pos + 1; at < close; ++at) {
        characterToW(c, l.casedAt(at));
        sendW(c, t);
    }
    l.pos = close + 1;
    return true;
}

// The "\" n of STR: a constant from 1 to the array's length; without it the
// whole array.
std::optional<int> stringLength(Compilation& c, const Element& array) {
    skipBlanks(c);
    if (c.line.peek() != '\\') return array.length;
    ++c.line.pos;
    std::optional<int> n = singleConstant(c);
    if (!n) {
        reportError(c, kErrText, "Must be a constant value for STR length");
        return std::nullopt;
    }
    if (*n < 1 || *n > array.length) {
        reportError(c, kErrText, "STR length must be 1 to the length of the ARRAY");
        return std::nullopt;
    }
    return n;
}

// STR array [\ n]: the string routines send up to n characters from the
// array's address, stopping at a 0 byte; an array that crosses a bank gap is
// read element by element.
bool stringItem(Compilation& c, const OutputTarget& t) {
    int errors = c.ctx.errorCount;
    std::string name = readOperand(c);
    std::optional<Element> array = name.empty() ? std::nullopt : wholeArray(c, name);
    if (!array) {
        if (c.ctx.errorCount == errors)
            reportError(c, kErrText, "Must be a BYTE array variable for STR directive");
        return false;
    }
    std::optional<int> n = stringLength(c, *array);
    if (!n) return false;
    emitOp(c, Op1::Movlw, std::to_string(*n));
    emitOp(c, Op1::MovWF, "GEN4");
    int high = array->base >> 8;
    constToByte(c, {std::to_string(high), high}, "PP2H");
    literalToW(c, array->base & 255);
    if (array->inlineAccess)
        callThroughDispatcher(c, t, "sb@strout", Group::StringOneBank);
    else
        callThroughDispatcher(c, t, "mb@strout", Group::StringAcrossBanks);
    return true;
}

// REP's character: a quoted single character or a BYTE, WORD (low byte),
// BIT or constant operand, read before the count and loaded after it.
std::optional<Operand> readRepeated(Compilation& c) {
    LineBuffer& l = c.line;
    if (l.peek() == '"') {
        size_t close = l.upper.find('"', l.pos + 1);
        if (close == std::string::npos) {
            reportError(c, kErrText, "Missing Quote");
            return std::nullopt;
        }
        if (close != l.pos + 2) {
            reportError(c, kErrSyntax);
            return std::nullopt;
        }
        int code = static_cast<unsigned char>(l.casedAt(l.pos + 1));
        l.pos = close + 1;
        return Operand{"", std::to_string(code), kKindNum, code, -1};
    }
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (elementFollows(c)) {
        reportError(c, kErrText, "ARRAY variables not supported by REP");
        return std::nullopt;
    }
    if (!classifyOperand(c, true, token)) return std::nullopt;
    int kind = c.operand.kind;
    if (kind == kKindByteArray || kind == kKindWordArray) {
        reportError(c, kErrText, "ARRAY variables not supported by REP");
        return std::nullopt;
    }
    if (kind != kKindNum && kind != kKindByte && kind != kKindWord && kind != kKindBit) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    return c.operand;
}

// Whether the operand at the cursor is an array or an array element; the
// cursor stays where it was.
bool arrayAhead(Compilation& c) {
    size_t start = c.line.pos;
    std::string token = readOperand(c);
    bool array = !token.empty() && (elementFollows(c) || (classifyOperand(c, false, token) &&
                                                          (c.operand.kind == kKindByteArray ||
                                                           c.operand.kind == kKindWordArray)));
    c.line.pos = start;
    return array;
}

bool repItem(Compilation& c, const OutputTarget& t) {
    skipBlanks(c);
    std::optional<Operand> ch = readRepeated(c);
    if (!ch) return false;
    skipBlanks(c);
    if (c.line.peek() != '\\') {
        reportError(c, kErrText, "Invalid REP instruction");
        return false;
    }
    ++c.line.pos;
    skipBlanks(c);
    if (arrayAhead(c)) {
        reportError(c, kErrText, "ARRAY variables not supported by REP");
        return false;
    }
    if (!loadByte(c, "GEN4H", "REP")) return false;
    switch (ch->kind) {
    case kKindNum: literalToW(c, ch->address & 255); break;
    case kKindBit: bitToW(c, ch->target, ch->bit); break;
    default: byteToW(c, ch->target); break;
    }
    callThroughDispatcher(c, t, "Rep", Group::Rep);
    return true;
}

// AT row, column. Two constants make one cursor address; otherwise the row
// goes into PP4 and the column into W for the routine that works it out
// (SEROUT keeps its data pin in GEN, and the column's expression may use PP3).
bool atItem(Compilation& c, const OutputTarget& t) {
    size_t start = c.line.pos;
    std::optional<int> row = singleConstant(c);
    std::optional<int> column;
    if (row && skipComma(c)) column = singleConstant(c);
    if (row && column) {
        if (*row < 1 || *row > 4 || *column < 1 || *column > 40) {
            reportError(c, kErrText, "AT wants a row of 1 to 4 and a column of 1 to 40");
            return false;
        }
        literalToW(c, cursorAddress(*row, *column));
        if (t.lcd)
            callThroughDispatcher(c, t, "LCD_crs", Group::LcdCursor);
        else
            callThroughDispatcher(c, t, "curs", Group::LcdCursor);
        return true;
    }
    c.line.pos = start;
    if (!loadByte(c, "PP4", "AT") || !readComma(c) || !loadByte(c, "W", "AT")) return false;
    callThroughDispatcher(c, t, "Cursor", Group::Cursor);
    return true;
}

bool valueItem(Compilation& c, const OutputTarget& t) {
    if (isFunctionKeyword(peekWord(c))) {
        int errors = c.ctx.errorCount;
        compileFunction(c, Value{"WREG", kKindWreg, -1});
        if (c.ctx.errorCount != errors) return false;
    } else if (!loadByte(c, "W", t.keyword, true)) {
        return false;
    }
    sendW(c, t);
    return true;
}

bool graphicModifier(Compilation& c, std::string_view word) {
    for (std::string_view modifier : {"INVERSE", "FONT", "XOR", "OR"}) {
        if (word != modifier) continue;
        reportError(c, kErrText, "Invalid LCD Type for the " + std::string(word) + " modifier");
        return true;
    }
    return false;
}

bool compileOutputItem(Compilation& c, const OutputTarget& t) {
    skipBlanks(c);
    char first = c.line.peek();
    if (first == '"') return textItem(c, t);
    if (first == '@') {
        ++c.line.pos;
        return decimalItem(c, t);
    }
    std::string word = peekWord(c);
    if (word == "VSTR") {
        compileNotSupported(c, "VSTR");
        return false;
    }
    if (word == "CLS") {
        readWord(c);
        callThroughDispatcher(c, t, "Cls", Group::Cls);
        return true;
    }
    if (t.lcd && graphicModifier(c, word)) return false;
    if (word == "AT") {
        readWord(c);
        return atItem(c, t);
    }
    if (word == "STR") {
        readWord(c);
        return stringItem(c, t);
    }
    if (word == "REP") {
        readWord(c);
        return repItem(c, t);
    }
    if (std::optional<int> d = countedWord(word, "HEX")) {
        readWord(c);
        return hexItem(c, t, *d);
    }
    if (std::optional<int> d = countedWord(word, "BIN")) {
        readWord(c);
        return countedFormatter(c, t, *d, 16, "Invalid BIN instruction", "Out_Bin2", "Out_Binb",
                                Group::Bin);
    }
    if (std::optional<int> d = countedWord(word, "DEC")) {
        readWord(c);
        return countedFormatter(c, t, *d, 5, "Invalid DEC instruction", "o@dec", "o@decb",
                                Group::Dec);
    }
    return valueItem(c, t);
}

} // namespace

ListStep nextItem(Compilation& c, char closer) {
    skipBlanks(c);
    LineBuffer& l = c.line;
    char ch = l.peek();
    if (closer != '\0' && ch == closer) {
        ++l.pos;
        return ListStep::Done;
    }
    if (closer == '\0' && isStatementEnd(ch)) return ListStep::Done;
    if (ch == ',') {
        ++l.pos;
        skipBlanks(c);
        if (closer == '\0' && isStatementEnd(l.peek())) return ListStep::Done;
        if (closer != '\0' && l.atEnd()) {
            reportError(c, kErrCloseBracket);
            return ListStep::Failed;
        }
        return ListStep::More;
    }
    if (closer != '\0' && l.atEnd())
        reportError(c, kErrCloseBracket);
    else
        reportError(c, kErrComma);
    return ListStep::Failed;
}

bool compileOutputItems(Compilation& c, const OutputTarget& target, char closer) {
    need(c, target.group); // the dispatcher's target, even without a plain character
    skipBlanks(c);
    if (isStatementEnd(c.line.peek()) || c.line.peek() == closer) {
        reportError(c, kErrSyntax);
        return false;
    }
    for (;;) {
        if (!compileOutputItem(c, target)) return false;
        switch (nextItem(c, closer)) {
        case ListStep::More: continue;
        case ListStep::Done: return true;
        case ListStep::Failed: return false;
        }
    }
}

std::string characterLiteral(char ch) {
    std::string text(1, ch);
    if (ch == '\'' || ch == '\\') text = "\\" + text;
    return "'" + text + "'";
}

void characterToW(Compilation& c, char ch) {
    emitOp(c, Op1::Movlw, characterLiteral(ch));
}

int cursorAddress(int row, int column) {
    static constexpr int kRowBase[] = {128, 192, 148, 212};
    return kRowBase[row - 1] + column - 1;
}

} // namespace zorvel
