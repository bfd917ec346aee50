#include "compiler/commands/command_routes.h"

namespace zorvel {

std::span<const Route> loopRoutes() {
    return {};
}

} // namespace zorvel
