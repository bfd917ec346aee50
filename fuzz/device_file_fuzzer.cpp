// A device definition file as the compiler and the simulator read it. When
// both accept it, a small program is compiled for the device and the
// simulator runs a few hundred cycles on it: odd field values must be refused
// or survived, never crash.
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"
#include "compiler/frontend/device.h"
#include "sim/device_layout.h"
#include "sim/pic16.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr size_t kMaxFile = 64 * 1024;

const char* const kProgram = "DEVICE FUZZ\nDIM A AS BYTE\nDIM W AS WORD\nDIM F AS BIT\n"
                             "DIM ARR[4]\nFOR A = 0 TO 3\nARR[A] = A * 3\nW = W + A\nNEXT\n"
                             "IF W > 2 THEN F = 1\nEND\n";

// A scratch home folder with inc/ for the device file under test.
const fs::path& home() {
    static const fs::path path = [] {
        fs::path p = fs::temp_directory_path() / ("zorvel-inf-fuzz-" + std::to_string(::getpid()));
        fs::create_directories(p / "inc");
        return p;
    }();
    return path;
}

void compileFor() {
    zorvel::CompileOptions options;
    options.sourceName = home() / "prog.bas";
    options.homeFolder = home();
    options.assemble = false;
    options.sourceText = kProgram;
    zorvel::Compilation c(std::move(options));
    zorvel::runCompile(c);
    if (c.ctx.errorCount > 0 && c.messages.empty() && c.alerts.empty()) std::abort();
}

void simulate(const zorvel::sim::DeviceLayout& layout) {
    zorvel::sim::Pic16 pic(layout, 4.0);
    zorvel::sim::HexData hex;
    // Reads the register file through FSR and INDF, round and round:
    // clrf FSR; movf INDF,f; incf FSR,f; btfsc STATUS,Z; goto 0; goto 1.
    const uint16_t words[] = {0x0184, 0x0880, 0x0A84, 0x1903, 0x2800, 0x2801};
    for (int i = 0; i < 6; ++i)
        hex.program[i] = words[i];
    pic.load(hex);
    pic.run(600);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > kMaxFile) return 0;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    zorvel::DeviceFile parsed = zorvel::parseDeviceFile(text);
    {
        std::ofstream out(home() / "inc" / "PFUZZ.inf", std::ios::binary | std::ios::trunc);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    std::string error;
    std::optional<zorvel::sim::DeviceLayout> layout =
        zorvel::sim::loadDeviceLayout(home() / "inc", "FUZZ", error);
    if (!layout && error.empty()) std::abort();
    if (parsed.error.empty()) compileFor();
    if (layout) simulate(*layout);
    return 0;
}
