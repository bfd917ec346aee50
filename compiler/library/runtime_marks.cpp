#include "compiler/library/runtime_marks.h"

#include "compiler/driver/compilation.h"

#include <cassert>

namespace zorvel {
namespace {

int testIndex(Test test, TestEntry entry) {
    return static_cast<int>(test) * 3 + static_cast<int>(entry);
}

} // namespace

void need(Compilation& c, Group group) {
    int number = static_cast<int>(group);
    assert(number >= 1 && number <= RuntimeState::kGroupCount && "group number out of range");
    c.runtime.need[number] = true;
}

bool needed(const Compilation& c, Group group) {
    return c.runtime.need[static_cast<int>(group)];
}

void needTest(Compilation& c, Test test, TestEntry entry) {
    need(c, Group::Compare);
    c.runtime.tests[testIndex(test, entry)] = true;
}

bool neededTest(const Compilation& c, Test test, TestEntry entry) {
    return c.runtime.tests[testIndex(test, entry)];
}

std::string testLabel(Test test, TestEntry entry) {
    static constexpr const char* kStems[] = {"t@e", "t@ge", "t@gt", "t@le", "t@lt", "t@ne"};
    static constexpr const char* kSuffixes[] = {"b", "w", ""};
    return std::string(kStems[static_cast<int>(test)]) + kSuffixes[static_cast<int>(entry)];
}

} // namespace zorvel
