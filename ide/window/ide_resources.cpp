#include "ide/window/ide_resources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE declares the generated registration function, which lives
// in the global namespace.
static void registerIdeQrc() {
    Q_INIT_RESOURCE(ide);
}

namespace zorvel::ide {

void registerResources() {
    static const bool done = [] {
        registerIdeQrc();
        return true;
    }();
    (void)done;
}

} // namespace zorvel::ide
