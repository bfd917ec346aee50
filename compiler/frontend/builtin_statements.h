// The statements the dispatcher compiles itself: comments, the remarks and
// macro-parameter switches, END, STOP, inline assembly, DEFINE, the assembler
// directives and #ERROR; and the routes of statements not compiled yet.
#pragma once

#include "compiler/frontend/statement.h"

#include <span>
#include <string_view>

namespace zorvel {

struct Route {
    std::string_view keyword;
    StatementHandler handler;
};

std::span<const Route> builtinRoutes();

// Keywords whose generators are not part of the compiler yet: each reports
// that it is not supported, never compiling silently.
std::span<const Route> laterRoutes();

void compileNotSupported(Compilation& c, std::string_view what);
void placeDataSkipLabel(Compilation& c);

} // namespace zorvel
