// Times a complete build of a generated 20,000-line program for the 16F877,
// split into compiler time (passes, .asm and library file) and assembler time
// (gpasm, error file, HEX read-back). Usage: bench_build [lines] [runs]
#include "compiler/driver/assembler.h"
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

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point a, Clock::time_point b) {
    return std::chrono::duration<double>(b - a).count();
}

// Declarations, labels, inline code (about 5,000 instructions), directives.
void writeProgram(const fs::path& file, int lines) {
    std::ofstream out(file, std::ios::binary);
    out << "DEVICE 16F877\r\nCONFIG HS_OSC, WDT_OFF, LVP_OFF\r\nDECLARE XTAL 20\r\n";
    for (int i = 0; i < 40; ++i)
        out << "DIM VAR" << i << (i % 4 == 0 ? " AS WORD" : "") << "\r\n";
    int labels = 0;
    for (int i = 0; i < lines - 50; ++i) {
        switch (i % 12) {
        case 0: out << "' block " << i << "\r\n"; break;
        case 1:
            out << (labels < 900 ? "L" + std::to_string(labels++) + ":" : "REM spare") << "\r\n";
            break;
        case 2: out << "ASM\r\n"; break;
        case 3: out << "  movlw " << i % 256 << "\r\n"; break;
        case 4: out << "  movwf PORTB\r\n"; break;
        case 5: out << "  addlw 3\r\n"; break;
        case 6: out << "ENDASM\r\n"; break;
        case 7: out << "#IF XTAL > 4\r\n"; break;
        case 8: out << "@ nop\r\n"; break;
        case 9: out << "#ENDIF\r\n"; break;
        case 10: out << "DEFINE ITEM" << i << " " << i % 100 << "\r\n"; break;
        default: out << "#DEFINE FLAG" << i << "\r\n"; break;
        }
    }
    out << "END\r\n";
}

} // namespace

int main(int argc, char** argv) {
    int lines = argc > 1 ? std::atoi(argv[1]) : 20000;
    int runs = argc > 2 ? std::atoi(argv[2]) : 3;
    fs::path dir = fs::temp_directory_path() / ("zorvel-build-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    fs::path source = dir / "bench.bas";
    writeProgram(source, lines);
    double bestCompile = 1e30, bestAssemble = 1e30;
    int errors = 0, words = 0;
    for (int r = 0; r < runs; ++r) {
        zorvel::CompileOptions options{source, ZORVEL_SOURCE_DATA};
        options.assemble = false;
        zorvel::Compilation c(options);
        auto t0 = Clock::now();
        zorvel::runCompile(c);
        auto t1 = Clock::now();
        if (c.ctx.errorCount == 0) zorvel::assembleAndReadBack(c);
        auto t2 = Clock::now();
        bestCompile = std::min(bestCompile, seconds(t0, t1));
        bestAssemble = std::min(bestAssemble, seconds(t1, t2));
        errors = c.ctx.errorCount;
        words = c.ctx.wordsUsed;
        for (const auto& m : c.messages)
            std::fprintf(stderr, "%s\n", m.c_str());
    }
    fs::remove_all(dir);
    std::printf("build of %d lines: %d errors, %d words used (best of %d runs)\n", lines, errors,
                words, runs);
    std::printf("compiler:  %.1f ms\n", bestCompile * 1000);
    std::printf("assembler: %.1f ms\n", bestAssemble * 1000);
    return errors == 0 ? 0 : 1;
}
