// The statements that configure the target: DEVICE, DECLARE, CONFIG, ORG,
// CONTEXT, ON_INTERRUPT and SET_OSCCAL.
#pragma once

#include "compiler/frontend/builtin_statements.h"

#include <span>

namespace zorvel {

std::span<const Route> deviceRoutes();

// Compiled in both passes, so that pass 2 knows the handler from the start.
void compileOnInterrupt(Compilation& c);

} // namespace zorvel
