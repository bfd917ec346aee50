#include "compiler/driver/compilation.h"

namespace zorvel {

Compilation::Compilation(CompileOptions opts) : options(std::move(opts)) {}

} // namespace zorvel
