// PRINT, CLS and CURSOR on a character LCD, and the INKEY keypad function.
// The LCD routines know the display's pins from the DECLARE settings; these
// generators load the routines' registers and call them.
#include "compiler/codegen/emit.h"
#include "compiler/commands/commands.h"
#include "compiler/commands/output_items.h"
#include "compiler/commands/pin_operands.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/frontend/lexer.h"
#include "compiler/frontend/operand.h"

#include <optional>

namespace zorvel {
namespace {

// A display or keypad needs more pins than a GPIO-only device has.
bool enoughPorts(const Compilation& c) {
    return c.device.info.portStyle() >= 2;
}

void call(Compilation& c, std::string_view routine, Group group) {
    need(c, group);
    emitOp(c, Op1::FarCall, routine);
}

// Both operands single constants: the cursor address; the cursor is left
// behind the column. Otherwise nullopt with the cursor where it was.
std::optional<int> constantPosition(Compilation& c) {
    size_t start = c.line.pos;
    auto constant = [&]() -> std::optional<int> {
        if (countTerms(c) != 1) return std::nullopt;
        std::string token = readOperand(c);
        if (token.empty() || !classifyOperand(c, false, token) || c.operand.kind != kKindNum)
            return std::nullopt;
        return c.operand.address;
    };
    std::optional<int> row = constant();
    std::optional<int> column = row && skipComma(c) ? constant() : std::nullopt;
    if (row && column && *row >= 1 && *row <= 4 && *column >= 1 && *column <= 40)
        return cursorAddress(*row, *column);
    c.line.pos = start;
    return std::nullopt;
}

} // namespace

void compilePrint(Compilation& c) {
    remarksEcho(c);
    if (!enoughPorts(c)) {
        reportError(c, kErrText, "Not Enough Pins for an LCD on this Device");
        return;
    }
    if (!checkTimedCrystal(c)) return;
    emitBit(c, BitOp::BsfBanked, "BPFH", 7);
    // The flags are cleared whether the items compiled or not.
    compileOutputItems(c, {"PRINT", "Print", Group::Print, 7, true, true, ""}, '\0');
    emitOp(c, Op1::ClrF, "BPFH");
}

void compileCls(Compilation& c) {
    remarksEcho(c);
    if (!enoughPorts(c)) {
        reportError(c, kErrText, "Not Enough Pins for an LCD on this Device");
        return;
    }
    if (!checkTimedCrystal(c)) return;
    need(c, Group::Print);
    call(c, "Lcd_Cls", Group::Cls);
    emitOp(c, Op1::ClrF, "BPFH");
}

void compileCursor(Compilation& c) {
    remarksEcho(c);
    if (!enoughPorts(c)) {
        reportError(c, kErrText, "Not Enough Pins for an LCD on this Device");
        return;
    }
    if (!checkTimedCrystal(c)) return;
    need(c, Group::Print);
    if (std::optional<int> address = constantPosition(c)) {
        literalToW(c, *address);
        call(c, "LCD_crs", Group::LcdCursor);
        emitOp(c, Op1::ClrF, "BPFH");
        return;
    }
    if (!loadByte(c, "PP4", "CURSOR") || !readComma(c) || !loadByte(c, "W", "CURSOR")) return;
    call(c, "Lcd_Cur", Group::Cursor);
}

void compileInkey(Compilation& c, const Value& dest) {
    if (!enoughPorts(c)) {
        reportError(c, kErrText, "Not Enough pins for a KEYPAD on this device");
        return;
    }
    call(c, "Inkey", Group::Inkey);
    storeFromW(c, dest);
}

} // namespace zorvel
