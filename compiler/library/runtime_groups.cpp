#include "compiler/library/runtime_groups.h"

#include "compiler/driver/compilation.h"

namespace zorvel {
namespace {

// Group 27: the label in front of the RSOUT routine, the target of the
// character dispatcher; written even when the routine itself is not.
void writeRsoutLabel(Compilation&, LibraryOutput& out) {
    out.add("rsout@");
}

// Group 73, the common exit of the routines: returns in bank 0 with IRP,
// RP0 and RP1 clear.
void writeCommonExit(Compilation& c, LibraryOutput& out) {
    std::string status = regAddress(c, "STATUS");
    out.add("i@nt\tbcf " + status + ",7");
    out.add("\tbcf " + status + ",5");
    out.add("\tbcf " + status + ",6");
    out.add(filler(c));
    out.add("\treturn");
}

struct RuntimeGroup {
    int number;
    bool always; // written whatever the need mark says
    void (*write)(Compilation&, LibraryOutput&);
};

constexpr RuntimeGroup kGroups[] = {
    {27, true, writeRsoutLabel},
    {73, false, writeCommonExit},
};

const RuntimeGroup* findGroup(int number) {
    for (const RuntimeGroup& group : kGroups)
        if (group.number == number) return &group;
    return nullptr;
}

} // namespace

void writeRuntimeGroups(Compilation& c, LibraryOutput& out) {
    for (int number = 1; number <= RuntimeState::kGroupCount; ++number) {
        const RuntimeGroup* group = findGroup(number);
        if (group && (group->always || c.runtime.need[number])) group->write(c, out);
    }
}

} // namespace zorvel
