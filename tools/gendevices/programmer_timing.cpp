#include "programmer_timing.hpp"

#include <array>

namespace gendevices {

namespace {

struct FamilyTiming {
    std::string_view chip;
    ProgrammerTiming timing;
};

// PIC16F8X (DS30262): command 8 is internally timed and needs no end command;
// a 10 ms wait covers one word and one bulk erase.
constexpr ProgrammerTiming f8xTiming{1, 0, 10, 10};

// PIC16F87X (DS39025F): command 8 erases then writes under internal timing,
// TERA and TPROG are 4 ms maximum each; the bulk erase procedure waits 8 ms.
constexpr ProgrammerTiming f87xTiming{1, 0, 8, 8};

// PIC16F87XA (DS39589C): internally timed cycles take 4 ms per operation;
// erase plus write of a word is allowed 8 ms, as is a bulk erase.
constexpr ProgrammerTiming f87xaTiming{1, 0, 8, 8};

constexpr std::array<FamilyTiming, 16> families{{
    {"p16cr83", f8xTiming},
    {"p16cr84", f8xTiming},
    {"p16f83", f8xTiming},
    {"p16f84", f8xTiming},
    {"p16f84a", f8xTiming},
    {"p16f870", f87xTiming},
    {"p16f871", f87xTiming},
    {"p16f872", f87xTiming},
    {"p16f873", f87xTiming},
    {"p16f874", f87xTiming},
    {"p16f876", f87xTiming},
    {"p16f877", f87xTiming},
    {"p16f873a", f87xaTiming},
    {"p16f874a", f87xaTiming},
    {"p16f876a", f87xaTiming},
    {"p16f877a", f87xaTiming},
}};

} // namespace

ProgrammerTiming programmerTiming(std::string_view chip) {
    for (const FamilyTiming& family : families) {
        if (family.chip == chip) return family.timing;
    }
    // Everything else, flash and EPROM parts alike, gets the conservative default.
    return ProgrammerTiming{};
}

} // namespace gendevices
