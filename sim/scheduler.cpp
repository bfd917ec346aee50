#include "sim/scheduler.h"

#include <algorithm>

namespace zorvel::sim {

int Scheduler::schedule(uint64_t cycle, Callback callback) {
    int id = nextId_++;
    events_.push_back({cycle, id, std::move(callback)});
    if (cycle < next_) next_ = cycle;
    return id;
}

void Scheduler::cancel(int id) {
    auto it =
        std::find_if(events_.begin(), events_.end(), [id](const Event& e) { return e.id == id; });
    if (it == events_.end()) return;
    events_.erase(it);
    updateNext();
}

void Scheduler::runDue(uint64_t now) {
    while (next_ <= now) {
        // The earliest event; among equal cycles the one scheduled first.
        auto it =
            std::min_element(events_.begin(), events_.end(), [](const Event& a, const Event& b) {
                return a.cycle != b.cycle ? a.cycle < b.cycle : a.id < b.id;
            });
        Callback callback = std::move(it->callback);
        uint64_t cycle = it->cycle;
        events_.erase(it);
        updateNext();
        callback(cycle);
    }
}

void Scheduler::clear() {
    events_.clear();
    next_ = UINT64_MAX;
}

void Scheduler::updateNext() {
    next_ = UINT64_MAX;
    for (const Event& e : events_)
        next_ = std::min(next_, e.cycle);
}

} // namespace zorvel::sim
