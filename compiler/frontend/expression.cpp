#include "compiler/frontend/expression.h"

#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"

namespace zorvel {

void compileExpression(Compilation& c, const Value&) {
    reportError(c, kErrText, "Expressions are not supported yet");
}

} // namespace zorvel
