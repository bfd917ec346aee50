// An attachable part: something wired to the device's pins by name that
// watches pin levels and drives pins at cycle times it schedules.
#pragma once

namespace zorvel::sim {

class Pic16;

class Part {
public:
    virtual ~Part() = default;
    // Connects the part to its pins (by name, through pic.pin("PORTB.0")) and
    // to the scheduler. Called once, after the program is loaded.
    virtual void attach(Pic16& pic) = 0;
    // Called on every device reset (power-on, MCLR, watchdog, and after a
    // load), each of which clears the scheduler: parts keep their state and
    // re-schedule what they had pending.
    virtual void reset() {}
};

} // namespace zorvel::sim
