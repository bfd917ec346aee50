// SOUND, FREQOUT and DTMFOUT: the pin through GEN and GENH, then one call
// of the tone routine per note, tone or digit.
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/library/runtime_marks.h"

namespace zorvel {
namespace {

// The pin into GEN and GENH. The tone routines are timed for the crystal.
std::optional<Pin> readGenPin(Compilation& c, std::string_view message) {
    if (!checkTimedCrystal(c)) return std::nullopt;
    std::optional<Pin> pin = readPin(c, message);
    if (!pin) return std::nullopt;
    emitGenForm(c, *pin);
    return pin;
}

bool readOpenBracket(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() == '[') {
        ++c.line.pos;
        return true;
    }
    reportError(c, kErrText, "'[' missing");
    return false;
}

// After an item of a bracketed list: true when another item follows.
bool nextListItem(Compilation& c) {
    skipBlanks(c);
    if (c.line.atEnd()) {
        reportError(c, kErrText, "']' missing");
        return false;
    }
    char ch = c.line.peek();
    ++c.line.pos;
    if (ch == ']') return false;
    if (ch != ',') {
        reportError(c, kErrComma);
        return false;
    }
    skipBlanks(c);
    if (!c.line.atEnd()) return true;
    reportError(c, kErrText, "']' missing");
    return false;
}

// One SOUND pair: the note into PP1, the duration into W, the call.
bool compileNote(Compilation& c) {
    if (!loadByte(c, "PP1", "SOUND")) return false;
    skipBlanks(c);
    if (c.line.atEnd()) {
        reportError(c, kErrText, "']' missing");
        return false;
    }
    if (!readComma(c) || !loadByte(c, "W", "SOUND", true)) return false;
    need(c, Group::Sound);
    emitOp(c, Op1::FarCall, "Noise");
    return true;
}

// DTMFOUT's on and off times before the digit list.
bool loadDtmfTimes(Compilation& c) {
    skipBlanks(c);
    if (c.line.peek() == '[') {
        constToWord(c, 200, "GEN2");
        constToWord(c, 50, "GEN4");
        return true;
    }
    if (!loadWord(c, "GEN2", "DTMFOUT") || !readComma(c)) return false;
    skipBlanks(c);
    if (c.line.peek() == '[') {
        constToWord(c, 50, "GEN4");
        return true;
    }
    return loadWord(c, "GEN4", "DTMFOUT") && readComma(c);
}

} // namespace

void compileSound(Compilation& c) {
    remarksEcho(c);
    if (!readGenPin(c, "Must be a PORT.BIT declaration for the output pin") || !readComma(c) ||
        !readOpenBracket(c))
        return;
    while (compileNote(c) && nextListItem(c)) {}
}

void compileFreqout(Compilation& c) {
    remarksEcho(c);
    if (!readGenPin(c, "Must be a PORT.BIT declaration for the FREQOUT output pin") ||
        !readComma(c) || !loadWord(c, "GEN2", "FREQOUT") || !readComma(c) ||
        !loadWord(c, "PP2", "FREQOUT"))
        return;
    need(c, Group::FreqOut);
    if (!skipComma(c)) {
        emitOp(c, Op1::FarCall, "fr@out1");
        return;
    }
    if (!loadWord(c, "PP7", "FREQOUT")) return;
    emitOp(c, Op1::FarCall, "fr@outc");
}

void compileDtmfout(Compilation& c) {
    remarksEcho(c);
    if (!readGenPin(c, "Must be a PORT.BIT declaration for the DTMFOUT output pin") ||
        !readComma(c) || !loadDtmfTimes(c) || !readOpenBracket(c))
        return;
    need(c, Group::DtmfOut);
    do {
        if (!loadByte(c, "W", "DTMFOUT")) return;
        emitOp(c, Op1::FarCall, "dtmf@o");
    } while (nextListItem(c));
}

} // namespace zorvel
