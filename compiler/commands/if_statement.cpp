#include "compiler/commands/command_routes.h"

namespace zorvel {

std::span<const Route> conditionRoutes() {
    return {};
}

} // namespace zorvel
