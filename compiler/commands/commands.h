// The command generators. Each family file compiles the statements (and the
// functions) of one group of keywords; command_table.cpp ties every keyword
// to its generator.
#pragma once

#include "compiler/frontend/expression.h"
#include "compiler/frontend/statement.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace zorvel {

// A function generator: compiles the function whose keyword the caller has
// read (the cursor is behind it) and leaves its value in `dest`.
using FunctionHandler = void (*)(Compilation&, const Value& dest);

// One language keyword and what compiles it: a statement generator, a
// function generator, both (LOW is a statement and a function word) or
// neither (a keyword that is not supported yet, or a word that only appears
// inside another statement, such as TO or THEN).
struct Command {
    std::string_view keyword;
    StatementHandler statement = nullptr;
    FunctionHandler function = nullptr;
};

// Compiles every statement of the current working line (cursor at 0).
void compileStatementsOfLine(Compilation& c);
// Routes the statement whose keyword is in the keyword buffer.
void dispatchStatement(Compilation& c);
// The generator of a statement keyword or instruction, or nullptr when the
// statement is an assignment.
StatementHandler findRoute(std::string_view keyword);
// Every word the dispatcher routes to a generator (the statements that
// compile, those reported as not supported yet, and the instructions).
std::vector<std::string_view> routedKeywords();

// Every keyword the compiler knows, in one table (command_table.cpp).
std::span<const Command> commandTable();
// The function generator of a keyword, or nullptr.
FunctionHandler findFunction(std::string_view keyword);
// Compiles the function whose keyword is at the cursor into `dest`; reports
// "not supported yet" for a function word without a generator.
void compileFunction(Compilation& c, const Value& dest);

// A statement keyword with no generator yet.
void compileNotSupported(Compilation& c, std::string_view what);

// Statements the dispatcher compiles itself (builtin_statements.cpp).
void compileNothing(Compilation& c); // ELSE, ENDIF, ...: closed by their block
void compileComment(Compilation& c);
void compileAsmBlock(Compilation& c);
void compileOneLineAsm(Compilation& c);
void compileDefine(Compilation& c);
void compileEnd(Compilation& c);
void compileStop(Compilation& c);
void skipIncludeName(Compilation& c);
void compileMacroParams(Compilation& c);
void compileRemarks(Compilation& c);
void compileError(Compilation& c);
void compileIfDirective(Compilation& c);
void compileIfdefDirective(Compilation& c);
void compileIfndefDirective(Compilation& c);
void compileElseDirective(Compilation& c);
void compileEndifDirective(Compilation& c);
void compileWhileDirective(Compilation& c);
void compileEndwDirective(Compilation& c);
void compileIncludeDirective(Compilation& c);
void compileDefineDirective(Compilation& c);
void compileUndefineDirective(Compilation& c);
void placeDataSkipLabel(Compilation& c);

// DIM and SYMBOL (declarations.cpp).
void compileDim(Compilation& c);
void compileSymbol(Compilation& c);

// DEVICE, DECLARE, CONFIG, ORG, CONTEXT, SET_OSCCAL, ON_INTERRUPT (device_statements.cpp).
void compileDevice(Compilation& c);
void compileDeclare(Compilation& c);
void compileConfig(Compilation& c);
void compileOrg(Compilation& c);
void compileContext(Compilation& c);
void compileSetOscCal(Compilation& c);
// Compiled in both passes, so that pass 2 knows the handler from the start.
void compileOnInterrupt(Compilation& c);

// LET, INC, DEC, SWAP and "target = expression" (assignment.cpp).
void compileLet(Compilation& c);
void compileIncrement(Compilation& c);
void compileDecrement(Compilation& c);
void compileSwap(Compilation& c);
void compileAssignment(Compilation& c);

void compileIf(Compilation& c); // if_statement.cpp

// FOR, WHILE, REPEAT (loops.cpp).
void compileFor(Compilation& c);
void compileWhile(Compilation& c);
void compileRepeat(Compilation& c);

// GOTO, GOSUB, CALL, RETURN, POKE (jumps.cpp).
void compileGoto(Compilation& c);
void compileGosub(Compilation& c);
void compileCall(Compilation& c);
void compileReturn(Compilation& c);
void compilePoke(Compilation& c);

// PAUSE/DELAYMS, PAUSEUS/DELAYUS, SLEEP, SNOOZE (timing.cpp).
void compileMilliseconds(Compilation& c);
void compileMicroseconds(Compilation& c);
void compileSleep(Compilation& c);
// The microsecond wait of PAUSEUS at the cursor, always through the routine
// (SERVO's pulse); false after an error.
bool compileMicrosecondWait(Compilation& c);
void compileSnooze(Compilation& c);

void compileStr(Compilation& c); // str.cpp

// HIGH/SET, LOW/CLEAR, TOGGLE, INPUT, OUTPUT (pins.cpp).
void compileHigh(Compilation& c);
void compileLow(Compilation& c);
void compileToggle(Compilation& c);
void compileInput(Compilation& c);
void compileOutput(Compilation& c);

// PULSOUT, PWM, HPWM, SERVO and the functions PULSIN, RCIN, POT, COUNTER (pulses.cpp).
void compilePulsout(Compilation& c);
void compilePwm(Compilation& c);
void compileHpwm(Compilation& c);
void compileServo(Compilation& c);
void compilePulsin(Compilation& c, const Value& dest);
void compileRcin(Compilation& c, const Value& dest);
void compilePot(Compilation& c, const Value& dest);
void compileCounter(Compilation& c, const Value& dest);

// SOUND, FREQOUT, DTMFOUT (tones.cpp).
void compileSound(Compilation& c);
void compileFreqout(Compilation& c);
void compileDtmfout(Compilation& c);

// SERIN, SEROUT, RSIN (statement and function), RSOUT (serial.cpp).
void compileSerin(Compilation& c);
void compileSerout(Compilation& c);
void compileRsin(Compilation& c);
void compileRsinFunction(Compilation& c, const Value& dest);
void compileRsout(Compilation& c);

// PRINT, CLS, CURSOR and the function INKEY (lcd.cpp).
void compilePrint(Compilation& c);
void compileCls(Compilation& c);
void compileCursor(Compilation& c);
void compileInkey(Compilation& c, const Value& dest);

// The built-in functions RANDOM, SIN, COS, DIG and PEEK (functions.cpp).
void compileRandom(Compilation& c, const Value& dest);
void compileSin(Compilation& c, const Value& dest);
void compileCos(Compilation& c, const Value& dest);
void compileDig(Compilation& c, const Value& dest);
void compilePeek(Compilation& c, const Value& dest);

// PIC16 instructions with BASIC operands and the pseudo-instructions
// (inline_mnemonics.cpp): the instruction set, not language keywords.
struct Route {
    std::string_view keyword;
    StatementHandler handler;
};
std::span<const Route> mnemonicRoutes();

// User macros (macros.cpp): ENDM, EXITM, #LOCAL and the type-pair statements.
void compileEndm(Compilation& c);
void compileExitm(Compilation& c);
void compileLocal(Compilation& c);
void compileTypePair(Compilation& c);
// The "name MACRO p1, p2, ..." line.
void compileMacroDeclaration(Compilation& c);
// Whether the statement keyword calls a macro (or names nothing known).
bool isMacroStatement(Compilation& c);
void compileMacroCall(Compilation& c);
// Whether the word at the cursor is a declared macro.
bool macroFollows(Compilation& c);
// A macro call at the cursor whose result goes to `dest`.
void compileMacroValue(Compilation& c, const Value& dest);
// A macro call as a condition operand, its result in the WORD `registerName`.
std::optional<Value> compileMacroOperand(Compilation& c, const char* registerName);

} // namespace zorvel
