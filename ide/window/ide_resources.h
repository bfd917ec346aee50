// The IDE's compiled-in resources (the icon). They live in a static
// library, so they are registered explicitly before the first use.
#pragma once

namespace zorvel::ide {

void registerResources();

} // namespace zorvel::ide
