#include "compiler/driver/compile_run.h"

#include "compiler/driver/assembler.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "compiler/driver/file_io.h"
#include "compiler/driver/line_loop.h"
#include "compiler/driver/source_reader.h"
#include "compiler/library/library_writer.h"
#include "compiler/library/runtime_groups.h"

#include <algorithm>

namespace zorvel {
namespace {

constexpr const char* kDefaultDevice = "16F84";

void resetRun(Compilation& c) {
    c.messages.clear();
    c.asmlist.clear();
    c.libraryOutput.clear();
    c.alerts.clear();
    c.labels.clear();
    c.macroNames.clear();
    c.device.interruptOn = false;
    c.device.interruptUsed = false;
    c.device.handlerLabel.clear();
    c.runtime = RuntimeState{};
    c.eeprom = EepromImage{};
    c.ctx = CompileContext{};
    fs::path source = c.options.sourceName;
    c.ctx.asmName = fs::path(source).replace_extension(".asm").string();
    c.ctx.libraryName = source.stem().string() + ".zvl";
}

void resetPass(Compilation& c, int pass) {
    CompileContext& ctx = c.ctx;
    ctx.pass = pass;
    ctx.lineIndex = 0;
    ctx.lineLimit = 100000;
    ctx.variablesUsed = 0;
    ctx.warningRaised = false;
    ctx.errorCount = 0;
    c.messages.clear();
    c.asmlist.clear();
    // Most statements compile to a handful of lines: reserve for a few per
    // source line so the list is not copied as it grows.
    if (pass == 2) c.asmlist.reserve(c.workfile.size() * 8);
    c.stmt = StatementState{};
    c.counters = LabelCounters{};
    c.names = PassNames{};
    c.alloc = AllocatorState{};
    c.dataTable = DataTableState{};
    c.device.resetForPass();
}

void emitPrologue(Compilation& c) {
    c.emit(";*********************************************");
    c.emit(";*           Code Produced by the            *");
    c.emit(";* ZORVEL Compiler. Version 1.10 *");
    c.emit(";*********************************************");
    c.emit("\r\n\t#include \"" + c.ctx.libraryName + "\" \r\n");
}

// Every pass starts from the default device; DEVICE replaces it. Loading it
// again in pass 2 gives it the interrupt save bytes when pass 1 found a handler.
void loadDefaultDevice(Compilation& c) {
    c.device.name = kDefaultDevice;
    c.ctx.deviceSet = loadDevice(c);
}

const char* strayCloserText(const std::string& keyword) {
    if (keyword == "NEXT") return "NEXT without FOR";
    if (keyword == "WEND") return "WEND without WHILE";
    if (keyword == "UNTIL") return "UNTIL without REPEAT";
    if (keyword == "ELSE") return "ELSE without IF";
    return "ENDIF without IF";
}

// A closing keyword that reaches the top level has no block to close.
void compileTopLevel(Compilation& c) {
    CompileContext& ctx = c.ctx;
    while (lineLoop(c) == LoopExit::ClosingKeyword) {
        reportError(c, kErrText, strayCloserText(c.stmt.keyword));
        ++ctx.lineIndex;
        if (ctx.errorCount >= 2) {
            c.messages.push_back("\tToo many COMPILER ERRORS.");
            return;
        }
        if (ctx.lineIndex >= ctx.lineCount || ctx.lineIndex >= ctx.lineLimit) return;
    }
}

std::string joinLines(const std::vector<std::string>& lines) {
    size_t size = 0;
    for (const std::string& line : lines)
        size += line.size() + 2;
    std::string out;
    out.reserve(size);
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i) out += "\r\n";
        out += lines[i];
    }
    return out;
}

// A source named like one of the build's own files would be overwritten.
bool sourceIsAnOutput(Compilation& c) {
    for (const char* ext : {".asm", ".zvl", ".hex", ".err", ".lst", ".cod"}) {
        std::error_code ec;
        if (!fs::equivalent(outputPath(c, ext), c.options.sourceName, ec)) continue;
        c.messages.push_back("\tThe source file " + c.options.sourceName.filename().string() +
                             " would be overwritten by the build's output: rename it to .bas");
        ++c.ctx.errorCount;
        return true;
    }
    return false;
}

void saveAssembly(Compilation& c) {
    if (sourceIsAnOutput(c)) return;
    fs::path asmPath = c.ctx.asmName;
    std::string error = writeFileAtomic(asmPath, joinLines(c.asmlist));
    if (!error.empty()) {
        c.messages.push_back("\t" + error);
        ++c.ctx.errorCount;
        return;
    }
    c.asmlist.clear();
}

// The .asm, the library file, then the assembler and what it produced. An
// in-memory run only makes the library file's lines.
void buildOutputs(Compilation& c) {
    if (c.options.sourceText) {
        c.libraryOutput = libraryLines(c);
        reportRoutineNameClashes(c);
        reportPinClashes(c);
        return;
    }
    saveAssembly(c);
    if (c.ctx.errorCount != 0) return;
    writeLibraryFile(c);
    reportRoutineNameClashes(c);
    reportPinClashes(c);
    if (c.options.assemble && c.ctx.errorCount == 0) assembleAndReadBack(c);
}

} // namespace

// What only the end of the program shows: a macro left open, jumps to labels
// that were never written because END stopped the compile before them, and
// jumps from outside a macro to a label local to it.
void checkProgramEnd(Compilation& c) {
    PassNames& use = c.names;
    if (!use.openMacro.empty())
        reportErrorAtLine(c, use.openMacroLine, kErrText,
                          "Macro '" + use.openMacro + "' has no ENDM");
    std::vector<std::pair<int, std::string>> faults; // line, message
    for (const auto& [label, line] : use.firstReference)
        if (!use.placedLabels.count(label))
            faults.emplace_back(line, "Label '" + label + "' is after END");
    for (size_t i = 0; i < use.labelUses.size(); ++i) {
        const auto& [label, line] = use.labelUses[i];
        auto local = use.macroLabels.find(label);
        if (local != use.macroLabels.end() && local->second != use.labelUseMacros[i])
            faults.emplace_back(line,
                                "Label '" + label + "' is local to macro '" + local->second + "'");
    }
    std::sort(faults.begin(), faults.end());
    for (const auto& [line, message] : faults)
        reportErrorAtLine(c, line, kErrText, message);
}

void runPass(Compilation& c, int pass) {
    resetPass(c, pass);
    emitPrologue(c);
    loadDefaultDevice(c);
    compileTopLevel(c);
    if (pass == 2 && c.ctx.errorCount < 2) checkProgramEnd(c);
}

// The library file's name goes into a quoted #include: a name with a double
// quote or a control character cannot be written there.
bool sourceNameUsable(Compilation& c) {
    std::string name = c.options.sourceName.filename().string();
    bool usable = std::none_of(name.begin(), name.end(), [](char ch) {
        return ch == '"' || static_cast<unsigned char>(ch) < 32;
    });
    if (!usable)
        c.ctx.runMessage = "\tThe source file name " + name +
                           " cannot be used: the assembler cannot include a file whose name has a "
                           "double quote or a control character. Rename the file!";
    return usable;
}

void runCompile(Compilation& c) {
    resetRun(c);
    if (!sourceNameUsable(c) || !readAndExpandSource(c)) {
        c.messages.push_back(c.ctx.runMessage);
        c.ctx.errorCount = 1;
        return;
    }
    CompileContext& ctx = c.ctx;
    ctx.defaultDevice = true;
    ctx.lineCount = static_cast<int>(c.workfile.size());
    runPass(c, 1);
    runPass(c, 2);
    if (!ctx.endSeen) {
        c.emit("\tEND\r\n");
        ctx.endSeen = true;
    }
    if (!ctx.deviceSet) reportError(c, kErrWhole, "DEVICE NOT SPECIFIED");
    if (ctx.errorCount == 0 && ctx.deviceSet) buildOutputs(c);
    if (ctx.errorCount == 0 && c.options.assemble && !c.options.sourceText) appendSummary(c);
}

} // namespace zorvel
