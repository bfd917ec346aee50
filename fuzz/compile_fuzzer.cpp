// Compiles the input as a program's source text, in memory: no files are
// written and the assembler does not run. Besides the sanitizers it checks
// that every failed compile says why.
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

constexpr size_t kMaxSource = 64 * 1024;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > kMaxSource) return 0;
    zorvel::CompileOptions options;
    // A folder that does not exist: INCLUDE finds only the home folder's files.
    options.sourceName = "/nonexistent/zorvel-fuzz/prog.bas";
    options.homeFolder = ZORVEL_SOURCE_DATA;
    options.assemble = false;
    options.sourceText = std::string(reinterpret_cast<const char*>(data), size);
    zorvel::Compilation c(std::move(options));
    zorvel::runCompile(c);
    if (c.ctx.errorCount > 0 && c.messages.empty() && c.alerts.empty()) std::abort();
    return 0;
}
