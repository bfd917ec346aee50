// SERIN, SEROUT, RSIN and RSOUT: the software serial links. SERIN and SEROUT
// take their pins and mode word as operands; RSIN and RSOUT use the pins and
// baud rate of the DECLARE settings, which the runtime routines read.
#include "compiler/codegen/array_access.h"
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/output_items.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"
#include "compiler/frontend/ram.h"
#include "compiler/library/serial_timing.h"

#include <optional>
#include <vector>

namespace zorvel {
namespace {

bool accept(Compilation& c, char ch) {
    skipBlanks(c);
    if (c.line.peek() != ch) return false;
    ++c.line.pos;
    return true;
}

bool readOpenBracket(Compilation& c) {
    if (accept(c, '[')) return true;
    reportError(c, kErrOpenBracket);
    return false;
}

// A label that must exist (pass 1 does not know all labels yet).
std::optional<std::string> readLabel(Compilation& c) {
    std::string label = readWord(c);
    if (label.empty()) {
        reportError(c, kErrSyntax);
        return std::nullopt;
    }
    if (!lookupLabel(c, true, label) && c.ctx.pass == 2) return std::nullopt;
    return label;
}

// --- Pins and mode ------------------------------------------------------------

// The data pin into GEN/GENH and, after "\", the flow pin into GEN2/GEN2H.
// Returns whether there is a flow pin; nullopt after an error.
std::optional<bool> readPins(Compilation& c) {
    std::optional<Pin> data = readPin(c, "Must be a PORT.BIT declaration for the DATA pin");
    if (!data) return std::nullopt;
    constToByte(c, {std::to_string(data->address), data->address}, "GEN");
    constToByte(c, {std::to_string(data->mask()), data->mask()}, "GENH");
    if (!accept(c, '\\')) return false;
    std::optional<Pin> flow = readPin(c, "Must be a PORT.BIT declaration for the FLOW pin");
    if (!flow) return std::nullopt;
    constToByte(c, {std::to_string(flow->address), flow->address}, "GEN2");
    constToByte(c, {std::to_string(flow->mask()), flow->mask()}, "GEN2H");
    return true;
}

// The mode word into PP5/PP5H; a constant mode is checked against what the
// routines can time at the crystal.
bool readMode(Compilation& c, std::string_view keyword) {
    if (!readComma(c) || !checkTimedCrystal(c)) return false;
    size_t start = c.line.pos;
    if (countTerms(c) == 1) {
        std::string token = readOperand(c);
        if (!token.empty() && !elementFollows(c) && classifyOperand(c, false, token) &&
            c.operand.kind == kKindNum) {
            if (std::optional<std::string> problem = serialModeProblem(c, c.operand.address)) {
                reportError(c, kErrText, *problem);
                return false;
            }
        }
        c.line.pos = start;
    }
    return loadWord(c, "PP5", keyword) && readComma(c);
}

// The operands before "[", each followed by its comma: the commas at the top
// level of the options.
int optionCount(const Compilation& c) {
    const std::string& text = c.line.upper;
    int commas = 0, depth = 0;
    for (size_t at = c.line.pos; at < text.size() && text[at] != '['; ++at) {
        char ch = text[at];
        if (ch == '(') ++depth;
        if (ch == ')') --depth;
        if (ch == ',' && depth == 0) ++commas;
        if (ch == '"') at = std::min(text.find('"', at + 1), text.size() - 1);
    }
    return commas;
}

// --- Receiving ----------------------------------------------------------------

// How each character is received and what is tested after it.
struct Receive {
    std::string routine;
    Group group;
    std::string timeoutLabel; // taken on carry clear
    std::string parityLabel;  // taken when PP4 bit 0 is set
};

void receiveOne(Compilation& c, const Receive& r) {
    need(c, r.group);
    emitOp(c, Op1::FarCall, r.routine);
    if (!r.timeoutLabel.empty()) emitTestAndJump(c, 0, "STATUS", 0, r.timeoutLabel);
    if (!r.parityLabel.empty()) emitTestAndJump(c, 1, "PP4", 0, r.parityLabel);
}

// STR array [\ n]: receives n characters into the array, one element after
// the other.
bool receiveString(Compilation& c, const Receive& r) {
    int errors = c.ctx.errorCount;
    std::string name = readOperand(c);
    std::optional<Element> array = name.empty() ? std::nullopt : wholeArray(c, name);
    if (!array) {
        if (c.ctx.errorCount == errors)
            reportError(c, kErrText, "Must be a BYTE ARRAY variable for STR directive");
        return false;
    }
    int length = array->length;
    if (accept(c, '\\')) {
        std::string text = readOperand(c);
        if (text.empty() || !classifyOperand(c, false, text) || c.operand.kind != kKindNum) {
            reportError(c, kErrText, "Must be a constant value for STR length");
            return false;
        }
        length = c.operand.address;
        if (length < 1 || length > array->length) {
            reportError(c, kErrText, "STR length must be 1 to the length of the ARRAY");
            return false;
        }
    }
    std::string counter = requestTemporary(c, kKindByte);
    emitOp(c, Op1::ClrF, counter);
    std::string loop = newLabel(c, "Pb@lab", LabelCounter::Block);
    emitLabel(c, loop);
    emitOp(c, Op0::Setc);
    receiveOne(c, r);
    array->index = {counter, kKindByte, -1};
    writeElement(c, *array, {"PP1", kKindByte, -1});
    emitOp(c, Op1::IncfF, counter);
    emitOp(c, Op1::MovFW, counter);
    emitOp(c, Op1::Sublw, std::to_string(length));
    emitTestAndJump(c, 0, "STATUS", 2, loop);
    releaseTemporary(c);
    return true;
}

// For each length of a matched prefix of `text`, the length of the longest
// proper prefix that is also a suffix of it (the table of a string search).
std::vector<size_t> prefixFallbacks(const std::string& text) {
    std::vector<size_t> fallback(text.size() + 1, 0);
    size_t k = 0;
    for (size_t i = 1; i < text.size(); ++i) {
        while (k > 0 && text[i] != text[k])
            k = fallback[k];
        if (text[i] == text[k]) ++k;
        fallback[i + 1] = k;
    }
    return fallback;
}

// WAIT("text"): receives until the characters of the text have arrived in a
// row. After a wrong character the match goes on from the longest part of
// the text that still fits (the character is in PP1), so "OOK" matches "OK".
bool receiveWait(Compilation& c, const Receive& r) {
    LineBuffer& l = c.line;
    if (!accept(c, '(') || !accept(c, '"')) {
        reportError(c, kErrSyntax);
        return false;
    }
    size_t close = l.upper.find('"', l.pos);
    if (close == std::string::npos || close == l.pos) {
        reportError(c, kErrSyntax);
        return false;
    }
    std::string text = l.cased.substr(l.pos, close - l.pos);
    l.pos = close + 1;
    if (!accept(c, ')')) {
        reportError(c, kErrSyntax);
        return false;
    }
    // matched[k]: k characters have arrived; retry[i]: the character after
    // i matched ones was wrong.
    std::vector<std::string> matched, retry;
    for (size_t i = 0; i < text.size(); ++i) {
        matched.push_back(newLabel(c, "Pb@lab", LabelCounter::Block));
        retry.push_back(i == 0 ? matched[0] : newLabel(c, "Pb@lab", LabelCounter::Block));
    }
    std::string done = newLabel(c, "Pb@lab", LabelCounter::Block);
    for (size_t i = 0; i < text.size(); ++i) {
        emitLabel(c, matched[i]);
        receiveOne(c, r);
        emitOp(c, Op1::Sublw, characterLiteral(text[i]));
        emitTestAndJump(c, 0, "STATUS", 2, retry[i]);
    }
    if (text.size() > 1) emitOp(c, Op1::FarGoto, done);
    std::vector<size_t> fallback = prefixFallbacks(text);
    for (size_t i = 1; i < text.size(); ++i) {
        emitLabel(c, retry[i]);
        for (size_t k = fallback[i];; k = fallback[k]) {
            if (text[k] != text[i]) {
                emitOp(c, Op1::MovFW, "PP1");
                emitOp(c, Op1::Sublw, characterLiteral(text[k]));
                emitTestAndJump(c, 1, "STATUS", 2, k + 1 < text.size() ? matched[k + 1] : done);
            }
            if (k == 0) break;
        }
        emitOp(c, Op1::FarGoto, matched[0]);
    }
    emitLabel(c, done);
    return true;
}

// The received character in W (and PP1) into a variable or array element.
bool receiveInto(Compilation& c, const Receive& r, std::string_view keyword) {
    std::string token = readOperand(c);
    if (token.empty()) {
        reportError(c, kErrSyntax);
        return false;
    }
    if (elementFollows(c)) {
        std::optional<Element> e = readElement(c, token);
        if (!e) return false;
        receiveOne(c, r);
        writeElement(c, *e, {"PP1", kKindByte, -1});
        releaseElement(c, *e);
        return true;
    }
    if (!classifyOperand(c, true, token)) return false;
    Operand op = c.operand;
    switch (op.kind) {
    case kKindByte:
    case kKindWord:
    case kKindBit: break;
    case kKindByteArray:
    case kKindWordArray: reportError(c, kErrArrayNotSupported, std::string(keyword)); return false;
    default: reportError(c, kErrText, "Variable Expected"); return false;
    }
    receiveOne(c, r);
    storeFromW(c, Value{op.target, op.kind, op.bit});
    return true;
}

bool receiveItem(Compilation& c, const Receive& r, std::string_view keyword) {
    skipBlanks(c);
    std::string word = peekWord(c);
    if (word == "STR") {
        readWord(c);
        return receiveString(c, r);
    }
    if (word == "WAIT") {
        readWord(c);
        return receiveWait(c, r);
    }
    return receiveInto(c, r, keyword);
}

void receiveItems(Compilation& c, const Receive& r, std::string_view keyword, char closer) {
    skipBlanks(c);
    if (isStatementEnd(c.line.peek()) || c.line.peek() == closer) {
        reportError(c, kErrSyntax);
        return;
    }
    for (;;) {
        if (!receiveItem(c, r, keyword)) return;
        if (nextItem(c, closer) != ListStep::More) return;
    }
}

// --- Sending ------------------------------------------------------------------

// SEROUT's options before "[": pace; timeout and label; or all three.
struct SendOptions {
    bool ok = true;
    std::string timeoutLabel;
};

SendOptions readSendOptions(Compilation& c, bool flow) {
    skipBlanks(c);
    if (c.line.peek() == '[') {
        constToWord(c, 0, "GEN3");
        return {};
    }
    int count = optionCount(c);
    if (count > 3) {
        reportError(c, kErrSyntax);
        return {false, ""};
    }
    if (count == 2) constToWord(c, 0, "GEN3");
    if (count != 2 && (!loadWord(c, "GEN3", "SEROUT") || !readComma(c))) return {false, ""};
    if (count == 1) return {};
    if (!flow) {
        reportError(c, kErrText, "TIMEOUT must be used in conjunction with a FLOW control pin");
        return {false, ""};
    }
    if (!loadWord(c, "PP7", "SEROUT") || !readComma(c)) return {false, ""};
    std::optional<std::string> label = readLabel(c);
    if (!label || !readComma(c)) return {false, ""};
    return {true, *label};
}

OutputTarget serialOutput(Compilation& c, bool flow, const std::string& timeoutLabel) {
    if (!timeoutLabel.empty()) {
        c.runtime.seroutTimeout = true;
        return {"SEROUT", "sro@t", Group::SerOut, 3, false, false, timeoutLabel};
    }
    if (flow) {
        c.runtime.seroutFlow = true;
        return {"SEROUT", "sro@f", Group::SerOut, 4, false, false, ""};
    }
    c.runtime.serout = true;
    return {"SEROUT", "Serout", Group::SerOut, 5, false, false, ""};
}

// RSIN and RSOUT are timed from SERIAL_BAUD at the crystal, on the pin of
// their setting, which must be a port of the device (the defaults are PORTB
// pins, which a GPIO device lacks).
bool checkSerialSettings(Compilation& c, Setting pin, std::string_view name) {
    if (!checkTimedCrystal(c)) return false;
    const SettingValue& v = c.device.settings[pin];
    if (!c.symbols.find(v.port)) {
        reportError(c, kErrText,
                    std::string(name) + " is " + v.port + "." + std::to_string(v.pin) + ", which " +
                        c.device.name + " does not have: DECLARE " + std::string(name) +
                        " with a pin of the device");
        return false;
    }
    std::optional<std::string> problem = serialBaudProblem(c);
    if (!problem) return true;
    reportError(c, kErrText, *problem);
    return false;
}

// RSIN's "{label}," prefix or function suffix: the timeout label, or "" when
// there is none; nullopt after an error.
std::optional<std::string> readBraceLabel(Compilation& c) {
    if (!accept(c, '{')) return std::string();
    std::optional<std::string> label = readLabel(c);
    if (!label) return std::nullopt;
    if (!accept(c, '}')) {
        reportError(c, kErrCloseBrace);
        return std::nullopt;
    }
    return label;
}

} // namespace

void compileSerin(Compilation& c) {
    remarksEcho(c);
    std::optional<bool> flow = readPins(c);
    if (!flow || !readMode(c, "SERIN")) return;
    Receive r{*flow ? "srin@f" : "Serin", Group::SerIn, "", ""};
    skipBlanks(c);
    if (c.line.peek() != '[') {
        size_t start = c.line.pos;
        std::string word = readWord(c);
        if (!word.empty() && c.labels.contains(word)) {
            lookupLabel(c, false, word);
            r.parityLabel = word;
            if (!readComma(c)) return;
        } else {
            c.line.pos = start;
        }
    }
    skipBlanks(c);
    if (c.line.peek() != '[') {
        if (!loadWord(c, "GEN3", "SERIN") || !readComma(c)) return;
        std::optional<std::string> label = readLabel(c);
        if (!label || !readComma(c)) return;
        r.routine = *flow ? "Srin@ft" : "Srin@t";
        r.timeoutLabel = *label;
    }
    if (!readOpenBracket(c)) return;
    receiveItems(c, r, "SERIN", ']');
}

void compileSerout(Compilation& c) {
    remarksEcho(c);
    std::optional<bool> flow = readPins(c);
    if (!flow || !readMode(c, "SEROUT")) return;
    SendOptions options = readSendOptions(c, *flow);
    if (!options.ok || !readOpenBracket(c)) return;
    OutputTarget target = serialOutput(c, *flow, options.timeoutLabel);
    emitBit(c, BitOp::BsfBanked, "BPFH", target.flagBit);
    compileOutputItems(c, target, ']');
    emitOp(c, Op1::ClrF, "BPFH");
}

void compileRsout(Compilation& c) {
    remarksEcho(c);
    if (!checkSerialSettings(c, kRsoutPin, "RSOUT_PIN")) return;
    emitBit(c, BitOp::BsfBanked, "BPFH", 6);
    compileOutputItems(c, {"RSOUT", "Rsout", Group::Rsout, 6, true, false, ""}, '\0');
    emitOp(c, Op1::ClrF, "BPFH");
}

void compileRsin(Compilation& c) {
    remarksEcho(c);
    if (!checkSerialSettings(c, kRsinPin, "RSIN_PIN")) return;
    std::optional<std::string> label = readBraceLabel(c);
    if (!label || (!label->empty() && !readComma(c))) return;
    Receive r{"Rsin", Group::Rsin, "", ""};
    if (!label->empty()) r = {"Rsin2", Group::RsinTimeout, *label, ""};
    receiveItems(c, r, "RSIN", '\0');
}

void compileRsinFunction(Compilation& c, const Value& dest) {
    if (!checkSerialSettings(c, kRsinPin, "RSIN_PIN")) return;
    std::optional<std::string> label;
    if (accept(c, ',')) {
        skipBlanks(c);
        if (c.line.peek() != '{') {
            reportError(c, kErrOpenBrace);
            return;
        }
        label = readBraceLabel(c);
        if (!label) return;
    }
    bool timed = label && !label->empty();
    need(c, timed ? Group::RsinTimeout : Group::Rsin);
    emitOp(c, Op1::FarCall, timed ? "rsin2" : "rsin");
    if (timed) emitTestAndJump(c, 0, "STATUS", 0, *label);
    storeFromW(c, dest);
}

} // namespace zorvel
