// Both readers of Intel HEX files on the same text: the simulator's loader
// and the compiler's read-back of the assembler's output.
#include "compiler/driver/hex_file.h"
#include "sim/hex_loader.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const fs::path& scratchFile() {
    static const fs::path path =
        fs::temp_directory_path() / ("zorvel-hex-fuzz-" + std::to_string(::getpid()) + ".hex");
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string error;
    std::optional<zorvel::sim::HexData> hex = zorvel::sim::parseHex(text, error);
    if (!hex && error.empty()) std::abort(); // a refusal always says why
    {
        std::ofstream out(scratchFile(), std::ios::binary | std::ios::trunc);
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    zorvel::HexReading reading = zorvel::readHexFile(scratchFile(), 0x400E);
    if (reading.found && reading.wordsUsed < 0) std::abort();
    return 0;
}
