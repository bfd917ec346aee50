// Measures the compile run on a generated 100,000-line source of comments,
// labels, inline assembly blocks, directives, DECLAREs and ORGs, and prints
// lines per second (passes, .asm and library file; the assembler is timed by
// bench_build). Usage: bench_compile_run [lines] [runs]
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// One source line of the mix; `labels` counts labels so far (at most 900).
std::string sourceLine(int i, int& labels) {
    switch (i % 16) {
    case 0: return "' comment line " + std::to_string(i) + " with some words in it";
    case 1:
        if (labels < 900) return "LBL" + std::to_string(labels++) + ":";
        return "REM plain remark " + std::to_string(i);
    case 2: return "ASM";
    case 3: return "    movlw " + std::to_string(i % 256);
    case 4: return "    movwf PORTB";
    case 5: return "ENDASM";
    case 6: return "#IF XTAL > " + std::to_string(i % 20);
    case 7: return "#ENDIF";
    case 8: return "DECLARE SERIAL_BAUD " + std::to_string(9600 + i % 7);
    case 9: return "ORG (" + std::to_string(i % 100) + " + 6) * 2 - 4 / 2";
    case 10: return "DEFINE ITEM" + std::to_string(i) + " " + std::to_string(i % 1000);
    case 11: return "@ nop";
    case 12: return "#DEFINE FLAG" + std::to_string(i);
    case 13: return "DECLARE XTAL 20";
    case 14: return "   ; an indented comment";
    default: return "MACRO_PARAMS OFF : REMARKS OFF";
    }
}

} // namespace

int main(int argc, char** argv) {
    int lines = argc > 1 ? std::atoi(argv[1]) : 100000;
    int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    fs::path dir = fs::temp_directory_path() / ("zorvel-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    fs::path source = dir / "bench.bas";
    {
        std::ofstream out(source, std::ios::binary);
        int labels = 0;
        out << "DEVICE 16F877\r\n";
        for (int i = 1; i < lines - 1; ++i)
            out << sourceLine(i, labels) << "\r\n";
        out << "END\r\n";
    }
    double best = 1e30;
    int errors = 0;
    size_t outputLines = 0;
    for (int r = 0; r < runs; ++r) {
        zorvel::CompileOptions options{source, ZORVEL_SOURCE_DATA};
        options.assemble = false; // the compile run and its files; bench_build times gpasm
        zorvel::Compilation c(options);
        auto start = std::chrono::steady_clock::now();
        zorvel::runCompile(c);
        auto end = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double>(end - start).count());
        errors = c.ctx.errorCount;
        outputLines = c.workfile.size();
        for (const auto& m : c.messages)
            std::fprintf(stderr, "%s\n", m.c_str());
    }
    fs::remove_all(dir);
    std::printf("compile run: %zu source lines, %d errors, best of %d runs %.3f s\n", outputLines,
                errors, runs, best);
    std::printf("compile run: %.0f lines per second\n", static_cast<double>(lines) / best);
    return errors == 0 ? 0 : 1;
}
