// The state of one compile run. Everything a run reads or writes lives in one
// Compilation object, passed by reference to every phase and generator; two
// compilations can run side by side in one process.
#pragma once

#include "compiler/driver/hex_file.h"
#include "compiler/frontend/device.h"
#include "compiler/frontend/symbols.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zorvel {

// A file that contributes lines to the working source.
struct SourceFile {
    std::string path; // include path as found; empty for the main file
    std::string name; // the file name without its folder, used in diagnostics
};

// One working line of the expanded source.
struct SourceEntry {
    int file = 0;     // index into Compilation::sourceFiles
    int line = 0;     // 0-based line number within its own file
    std::string text; // the line exactly as in the file
};

// The current line and the read position that all statement parsing moves.
struct LineBuffer {
    static constexpr size_t kMaxLength = 249;

    std::string upper; // trimmed, upper-cased, at most kMaxLength characters
    std::string cased; // the same characters with their case kept
    std::string raw;   // the text with leading blanks removed, case kept
    size_t pos = 0;

    size_t length() const { return upper.size(); }
    bool atEnd() const { return pos >= upper.size(); }
    char at(size_t i) const { return i < upper.size() ? upper[i] : '\0'; }
    char peek() const { return at(pos); }
    char casedAt(size_t i) const { return i < cased.size() ? cased[i] : '\0'; }
};

struct CompileContext {
    int pass = 0;
    int lineIndex = 0;
    int lineLimit = 100000;
    int lineCount = 0;
    int errorCount = 0;
    bool warningRaised = false;
    bool endSeen = false;
    bool deviceSet = false;
    bool defaultDevice = true;
    std::string asmName;
    std::string libraryName;
    std::string runMessage;
    std::string currentFile;
    int currentSourceLine = 0;
    int wordsUsed = 0;
    int variablesUsed = 0;
};

// Flags of the statement being compiled.
struct StatementState {
    std::string keyword; // upper case, at most 32 characters
    std::string token;   // the last word read by the lexical readers
    bool lineHasLabel = false;
    bool nothingToDispatch = false;
    bool firstStatementOfLine = false;
    bool remarksOn = false;
    bool macroParamsOn = false;
    bool macroDefinition = false; // the head was "name MACRO"
    int blockDepth = 0;           // block bodies (IF, FOR, WHILE, REPEAT) being compiled
};

// Where the next packed bit variable goes, and the temporaries in use.
struct AllocatorState {
    int bitByteCount = 0;  // B@VR1, B@VR2, ...
    int bitIndex = 0;      // next bit in the current bit byte; 0 or 8 opens a new one
    std::string bitByte;   // name of the current bit byte
    int nextTemporary = 7; // N@VAR7, N@VAR8, ...
    // The first PP temporary a new expression may take; raised while an
    // expression inside an array index is compiled.
    int firstExpressionTemporary = 7;
};

// A DATA table's skip label, placed before the first statement after the table.
struct DataTableState {
    std::string skipLabel;
    bool pending = false;
};

// Names as pass 2 writes them: the labels placed so far, the first line that
// jumps to each, the macro declaration still waiting for its ENDM, and the
// names handed to the assembler's #define.
struct PassNames {
    std::unordered_set<std::string> placedLabels;
    std::unordered_set<std::string> defines;
    std::unordered_map<std::string, int> firstReference; // label -> workfile index
    std::string openMacro;
    std::vector<std::string> openMacroParams;                 // its parameter names, upper case
    std::unordered_set<std::string> openMacroLocals;          // its #LOCAL names
    std::unordered_map<std::string, std::string> macroLabels; // label -> its macro
    std::vector<std::pair<std::string, int>> labelUses;       // label, workfile index
    std::vector<std::string> labelUseMacros;                  // the macro of each use
    int openMacroLine = -1;
};

// Per-pass counters of generated labels.
struct LabelCounters {
    int block = 1;   // IF, loops, END and STOP
    int compare = 1; // "CP@LB" and "P@LB" of the comparisons
    int step = 1;    // "N@Lab" of the FOR steps
};

// The value of the last number converted, with its byte parts as text.
struct NumberValue {
    int32_t value = 0;
    std::string text, high, low;
};

// What a pre-scan of an operand expression found.
struct TermScan {
    static constexpr size_t kMaxEntries = 40;
    struct Entry {
        std::string name;
        int kind = kKindNum;
        int value = 0;
    };
    std::vector<Entry> entries;
    int terms = 0;
    bool allConstant = false;
};

// What the library writer needs to know about the runtime subroutines: one
// need mark per routine group (numbered from 1 in writing order) and the
// marks the code generators set for the macro prelude.
struct RuntimeState {
    static constexpr int kGroupCount = 73;
    std::array<bool, kGroupCount + 1> need{}; // index = group number; 0 unused
    std::array<bool, 18> tests{};             // entries of the comparison group
    bool testTail = false;                    // t@st, set by the comparison entries
    bool serout = false;                      // SEROUT forms the dispatcher routes to:
    bool seroutFlow = false;                  // plain (serout), with flow-control pin
    bool seroutTimeout = false;               // (sro@f), with pin and timeout (sro@t)
    bool jumpTableUsed = false;               // a computed jump into a table was emitted
};

// The data EEPROM image collected by EDATA.
struct EepromImage {
    std::vector<int32_t> values; // in order of the EDATA statements
    bool present = false;
};

struct CompileOptions {
    std::filesystem::path sourceName; // the main source file
    std::filesystem::path homeFolder; // holds inc/ with the device files
    std::string assembler = "gpasm";  // path or name on PATH
    bool assemble = true;             // false: stop after writing the .asm and library files
    // When set, the main source is this text instead of the file's contents, and
    // nothing is written: the output stays in asmlist and libraryOutput.
    // sourceName still names the program (diagnostics, INCLUDE folder).
    std::optional<std::string> sourceText{};
};

class Compilation {
public:
    explicit Compilation(CompileOptions options);

    // Appends one line to the output; only pass 2 writes output.
    void emit(std::string line) {
        if (ctx.pass == 2) asmlist.push_back(std::move(line));
    }

    // A message for the user outside the message list (a message box in the IDE).
    void alert(std::string text) {
        for (const std::string& a : alerts)
            if (a == text) return;
        alerts.push_back(std::move(text));
    }

    bool watchdogOn() const { return device.watchdog; }

    CompileOptions options;
    CompileContext ctx;
    std::vector<SourceFile> sourceFiles;
    std::vector<SourceEntry> workfile;
    std::vector<std::string> asmlist;       // output lines of pass 2
    std::vector<std::string> libraryOutput; // the library file's lines, in-memory runs only
    std::vector<std::string> messages;      // the message list shown to the user
    std::vector<std::string> alerts;        // message-box texts
    LineBuffer line;
    StatementState stmt;
    LabelCounters counters;
    PassNames names;
    AllocatorState alloc;
    DataTableState dataTable;
    RuntimeState runtime;
    HexImage hex; // what the assembler produced, after a clean build
    EepromImage eeprom;
    Operand operand;    // the operand being classified or compiled
    NumberValue number; // the last number converted
    TermScan termScan;
    SymbolTable symbols;
    NameTable labels{1000};
    NameTable macroNames{200};
    DeviceModel device;
    DeviceFileCache deviceFiles;
};

} // namespace zorvel
