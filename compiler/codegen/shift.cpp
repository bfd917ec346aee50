// "<<" and ">>": the runtime shifts l@sh and r@sh take the value in PP0 and
// the count in W and leave the result in PP0 (its low byte also in W). A
// BYTE shifted by 1 is a rotate through a cleared carry.
#include "compiler/codegen/operation.h"
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"

namespace zorvel {
namespace {

// The count into W; a count of 256 or more becomes 255, which shifts every
// bit out just the same.
void loadCount(Compilation& c, const Value& count) {
    if (count.kind == kKindNum) {
        int n = std::min(constantOf(count), 255);
        return constToW(c, {std::to_string(n), n});
    }
    loadW(c, lowPart(count));
    if (count.kind != kKindWord) return;
    emitOp(c, Op1::MovFF, highName(count.name));
    emitOp(c, Op0::Skpz);
    emitOp(c, Op1::Movlw, "255");
}

bool shiftByteOnce(Compilation& c, const Operation& o, bool left) {
    if (o.a.kind != kKindByte || o.b.kind != kKindNum || constantOf(o.b) != 1) return false;
    emitOp(c, Op0::Clrc);
    if (o.d.kind == kKindByte && sameRegister(c, o.a, o.d)) {
        emitOp(c, left ? Op1::RlfF : Op1::RrfF, o.d.name);
        return true;
    }
    emitOp(c, left ? Op1::RlfW : Op1::RrfW, o.a.name);
    if (!left || o.d.kind != kKindWord) return storeW(c, o.d), true;
    // The bit shifted out of the byte is the word's bit 8.
    emitOp(c, Op1::MovWF, o.d.name);
    emitOp(c, Op1::ClrF, highName(o.d.name));
    emitOp(c, Op1::RlfF, highName(o.d.name));
    return true;
}

void emitShift(Compilation& c, const Operation& o, bool left) {
    if (shiftByteOnce(c, o, left)) return;
    loadWord(c, o.a, "PP0");
    loadCount(c, o.b);
    emitOp(c, Op1::FarCall, left ? "l@sh" : "r@sh");
    need(c, left ? Group::ShiftLeft : Group::ShiftRight);
    if (o.d.kind == kKindWord)
        wAndWordToWord(c, "PP0", o.d.name);
    else
        storeW(c, o.d);
}

} // namespace

void emitShiftLeft(Compilation& c, const Operation& o) {
    emitShift(c, o, true);
}

void emitShiftRight(Compilation& c, const Operation& o) {
    emitShift(c, o, false);
}

} // namespace zorvel
