// Measures the compiler on a generated 20,000-line program of assignments,
// arithmetic, conditions and loops for the 16F877, and prints lines per
// second (both passes, the .asm and the library file; no assembler: a
// program this long does not fit the chip). Usage: bench_statements [lines] [runs]
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

// One 24-line block of the mix; `n` varies the constants.
constexpr const char* kBlock[] = {
    "A = B + C",
    "W1 = W2 * A + %N%",
    "IF A > B THEN C = 1",
    "IF W1 <> W2 THEN",
    "  A = A - 1",
    "ELSE",
    "  B = B ^ C",
    "ENDIF",
    "FOR I = 0 TO %N%",
    "  W1 = W1 + I",
    "NEXT",
    "WHILE A < 100",
    "  INC A",
    "WEND",
    "REPEAT",
    "  DEC B",
    "UNTIL B = 0",
    "W2 = (A + B) * (C - 2) / 3",
    "F = A & 1",
    "A = W1 >> 2",
    "FOR W1 = 1000 TO 10 STEP -%N%",
    "  C = C + W1 // 7",
    "NEXT",
    "' a comment line",
};

void writeProgram(const fs::path& file, int lines) {
    std::ofstream out(file, std::ios::binary);
    out << "DEVICE 16F877\r\nDECLARE XTAL 20\r\n";
    out << "DIM A AS BYTE\r\nDIM B AS BYTE\r\nDIM C AS BYTE\r\nDIM I AS BYTE\r\n";
    out << "DIM W1 AS WORD\r\nDIM W2 AS WORD\r\nDIM F AS BIT\r\n";
    int written = 9;
    for (int n = 1; written < lines - 1; ++n) {
        for (const char* text : kBlock) {
            std::string line = text;
            if (size_t at = line.find("%N%"); at != std::string::npos)
                line.replace(at, 3, std::to_string(n % 200 + 1));
            out << line << "\r\n";
            ++written;
        }
    }
    out << "END\r\n";
}

} // namespace

int main(int argc, char** argv) {
    int lines = argc > 1 ? std::atoi(argv[1]) : 20000;
    int runs = argc > 2 ? std::atoi(argv[2]) : 5;
    fs::path dir =
        fs::temp_directory_path() / ("zorvel-statements-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    fs::path source = dir / "bench.bas";
    writeProgram(source, lines);
    double best = 1e30;
    int errors = 0, total = 0;
    uintmax_t asmBytes = 0;
    for (int r = 0; r < runs; ++r) {
        zorvel::CompileOptions options{source, ZORVEL_SOURCE_DATA};
        options.assemble = false;
        zorvel::Compilation c(options);
        auto t0 = std::chrono::steady_clock::now();
        zorvel::runCompile(c);
        auto t1 = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double>(t1 - t0).count());
        errors = c.ctx.errorCount;
        asmBytes = fs::file_size(c.ctx.asmName);
        total = static_cast<int>(c.workfile.size());
        for (const auto& m : c.messages)
            std::fprintf(stderr, "%s\n", m.c_str());
    }
    fs::remove_all(dir);
    std::printf("%d source lines, %d errors, %ju bytes of assembly (best of %d runs)\n", total,
                errors, asmBytes, runs);
    std::printf("compile: %.1f ms, %.0f lines/s\n", best * 1000, total / best);
    return errors == 0 ? 0 : 1;
}
