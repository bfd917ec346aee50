// What the software serial routines can time at the configured crystal: the
// compile-time checks of a constant SERIN/SEROUT mode word and of the
// SERIAL_BAUD setting that RSIN and RSOUT use.
#pragma once

#include <optional>
#include <string>

namespace zorvel {

class Compilation;

// A message when the routines cannot time the bit of `mode` at the crystal.
std::optional<std::string> serialModeProblem(const Compilation& c, int mode);
// A message when RSIN and RSOUT cannot time SERIAL_BAUD at the crystal.
std::optional<std::string> serialBaudProblem(const Compilation& c);

} // namespace zorvel
