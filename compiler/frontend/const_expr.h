// Compile-time constant expressions (ORG, array sizes, constant declarations).
#pragma once

#include <cstdint>
#include <optional>

namespace zorvel {

class Compilation;

// Evaluates a constant expression from the cursor, left to right within a
// level, in 32-bit signed arithmetic. Reports a fault and returns nullopt.
std::optional<int32_t> evaluateConstExpr(Compilation& c);

} // namespace zorvel
