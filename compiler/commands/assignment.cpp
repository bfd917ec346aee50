#include "compiler/commands/command_routes.h"

namespace zorvel {

std::span<const Route> assignmentRoutes() {
    return {};
}

} // namespace zorvel
