// Helpers for simulator tests: device layouts from the project's data
// folder, programs assembled with gpasm in a scratch folder, and machines
// loaded with a few raw instruction words.
#pragma once

#include "sim/pic16.h"

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace zorvel::test {

sim::DeviceLayout deviceLayout(const std::string& device);

struct AssembledProgram {
    sim::HexData hex;
    std::filesystem::path folder; // holds prog.asm, prog.hex, prog.cod
    std::string log;              // gpasm's output when it failed
    bool ok = false;
};

// Assembles `source` with gpasm -a inhx8m for `processor` ("p16f877") into `folder`.
AssembledProgram assemble(const std::string& source, const std::filesystem::path& folder,
                          const std::string& processor = "p16f877");

// A 16F877 (or `device`) at 4 MHz with `source` assembled and loaded; fails
// the calling test through ADD_FAILURE when gpasm does.
std::unique_ptr<sim::Pic16> loadProgram(const std::string& source,
                                        const std::string& device = "16F877");

// A machine with raw program words from address 0.
std::unique_ptr<sim::Pic16> loadWords(std::initializer_list<uint16_t> words,
                                      const std::string& device = "16F877");

// The address of the first `goto $` in the program, or -1.
int endLoopAddress(const sim::HexData& hex);

} // namespace zorvel::test
