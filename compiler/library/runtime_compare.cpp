// The word comparisons of the runtime library: for each relation a byte, a
// word and a full entry, and the common tail t@st that compares PP0H:PP0
// with PP1H:PP1 and returns W = 255 when the outcome is in the relation's
// mask, else 0. Only the entries whose marks are set are written.
#include "compiler/driver/compilation.h"
#include "compiler/library/runtime_marks.h"
#include "compiler/library/runtime_routines.h"

namespace zorvel {
namespace {

constexpr Test kTests[] = {Test::Equal,     Test::GreaterEqual, Test::Greater,
                           Test::LessEqual, Test::Less,         Test::NotEqual};

// Outcome classes: 4 less, 1 greater, 2 equal.
int testMask(Test test) {
    switch (test) {
    case Test::Equal: return 2;
    case Test::GreaterEqual: return 3;
    case Test::Greater: return 1;
    case Test::LessEqual: return 6;
    case Test::Less: return 4;
    case Test::NotEqual: return 5;
    }
    return 0;
}

// A byte entry marks its word entry, a word entry its full entry; any full
// entry marks the tail.
void passOnTestMarks(Compilation& c) {
    for (Test test : kTests) {
        if (neededTest(c, test, TestEntry::Byte)) needTest(c, test, TestEntry::Word);
        if (neededTest(c, test, TestEntry::Word)) needTest(c, test, TestEntry::Full);
        if (neededTest(c, test, TestEntry::Full)) c.runtime.testTail = true;
    }
}

// The entries of one relation: the byte entry clears the left high byte, the
// word entry the right high byte, the full entry stores W as the right low
// byte; then the mask goes to t@st (not-equal, the last, falls into it).
void writeTestEntries(Compilation& c, LibraryOutput& out, Test test) {
    if (neededTest(c, test, TestEntry::Byte))
        out.add(testLabel(test, TestEntry::Byte) + " clrf " + regAddress(c, "PP0H"));
    if (neededTest(c, test, TestEntry::Word))
        out.add(testLabel(test, TestEntry::Word) + " clrf " + regAddress(c, "PP1H"));
    if (!neededTest(c, test, TestEntry::Full)) return;
    out.add(testLabel(test, TestEntry::Full) + " movwf " + regAddress(c, "PP1"));
    out.add("\tmovlw " + std::to_string(testMask(test)));
    if (test != Test::NotEqual) out.add("\tgoto t@st");
}

// The outcome class comes from the carry and zero flags of the high-byte
// subtraction, or of the low-byte one when the high bytes are equal.
void writeTestTail(Compilation& c, LibraryOutput& out) {
    std::string gpr = regAddress(c, "GPR");
    out.add("t@st movwf " + gpr);
    out.add("\tmovfw " + regAddress(c, "PP1H"));
    out.add("\tsubwf " + regAddress(c, "PP0H") + ",w");
    out.add("\tbnz $+3");
    out.add("\tmovfw " + regAddress(c, "PP1"));
    out.add("\tSubwf " + regAddress(c, "PP0") + ",w");
    out.add("\tmovlw 4");
    out.add("\tskpnc");
    out.add("\tmovlw 1");
    out.add("\tskpnz");
    out.add("\tmovlw 2");
    out.add("\tandwf " + gpr + ",w");
    out.add("\tskpz");
    out.add("\tmovlw 255");
    out.add("\tgoto i@nt");
}

} // namespace

void writeComparisons(Compilation& c, LibraryOutput& out) {
    passOnTestMarks(c);
    for (Test test : kTests)
        writeTestEntries(c, out, test);
    if (c.runtime.testTail) writeTestTail(c, out);
}

} // namespace zorvel
