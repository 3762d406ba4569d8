#pragma once

#include <mutex>

// A one-shot latch: of the reply, the error and the time limit racing to finish a call, only the first
// to claim it does; the others find it claimed and do nothing.
class Once {
public:
    bool claim()
    {
        std::lock_guard guard(m_lock);
        if (m_done)
            return false;
        m_done = true;
        return true;
    }

private:
    std::mutex m_lock; // guards m_done
    bool m_done = false;
};
