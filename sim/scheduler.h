// Time in the simulator is counted in instruction cycles (Fosc/4). Everything
// that happens at a later time (a timer overflow, an EEPROM write finishing,
// the next bit a part sends) is a callback scheduled for a cycle.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace zorvel::sim {

class Scheduler {
public:
    using Callback = std::function<void(uint64_t now)>;

    // Runs `callback` once the cycle count reaches `cycle`; returns an id for cancel().
    int schedule(uint64_t cycle, Callback callback);
    void cancel(int id);
    // The earliest scheduled cycle, or UINT64_MAX when nothing is scheduled.
    uint64_t next() const { return next_; }
    // Runs every callback due at or before `now`, in cycle order; each callback
    // receives the cycle it was scheduled for.
    void runDue(uint64_t now);
    void clear();

private:
    struct Event {
        uint64_t cycle;
        int id;
        Callback callback;
    };
    std::vector<Event> events_;
    uint64_t next_ = UINT64_MAX;
    int nextId_ = 1;
    void updateNext();
};

} // namespace zorvel::sim
