// Word-write parameters for the parallel-port programmer, per device family.
// docs/device-data.md lists the document each value was taken from.
#pragma once

#include <string_view>

namespace gendevices {

struct ProgrammerTiming {
    int endFlag = 1;         // 0: send "end programming" (command 14) after each word
    int extraPasses = 0;     // additional writes of a word once it verified
    int programDelayMs = 10; // wait after "begin erase/programming cycle" (command 8)
    int eraseDelayMs = 10;   // wait after a bulk erase
};

// chip is gpasm's lower-case name, e.g. "p16f877a".
ProgrammerTiming programmerTiming(std::string_view chip);

} // namespace gendevices
