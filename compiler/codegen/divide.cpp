// "/" and "//": the runtime division d@vd takes the dividend in PP0 and the
// divisor in PP1 and leaves the quotient in PP0 (its low byte also in W) and
// the remainder in PP2. A BYTE halved is a rotate.
#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"

namespace zorvel {
namespace {

void callDivide(Compilation& c, const Operation& o) {
    loadWord(c, o.a, "PP0");
    loadWord(c, o.b, "PP1");
    emitOp(c, Op1::FarCall, "d@vd");
    need(c, Group::Divide);
}

bool halveByte(Compilation& c, const Operation& o) {
    if (o.a.kind != kKindByte || o.b.kind != kKindNum || constantOf(o.b) != 2) return false;
    emitOp(c, Op0::Clrc);
    if (o.d.kind == kKindByte && sameRegister(c, o.a, o.d)) {
        emitOp(c, Op1::RrfF, o.d.name);
        return true;
    }
    emitOp(c, Op1::RrfW, o.a.name);
    storeW(c, o.d);
    return true;
}

} // namespace

void emitDivide(Compilation& c, const Operation& o) {
    if (halveByte(c, o)) return;
    callDivide(c, o);
    if (o.d.kind == kKindWord)
        wAndWordToWord(c, "PP0", o.d.name);
    else
        storeW(c, o.d);
}

void emitRemainder(Compilation& c, const Operation& o) {
    callDivide(c, o);
    storeWord(c, "PP2", o.d);
}

} // namespace zorvel
