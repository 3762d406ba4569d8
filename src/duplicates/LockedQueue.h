#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

// A fixed list of work units handed out one at a time to the workers of a pool.
template <typename Item> class LockedQueue {
public:
    explicit LockedQueue(std::vector<Item> items)
        : m_items(std::move(items))
    {
    }

    // The next unit, or nullptr when every unit has been handed out. The pointer stays valid for the
    // queue's life.
    Item* take()
    {
        std::lock_guard guard(m_lock);
        return m_cursor < m_items.size() ? &m_items[m_cursor++] : nullptr;
    }

    std::size_t size() const { return m_items.size(); }

private:
    std::mutex m_lock; // guards m_cursor
    std::vector<Item> m_items;
    std::size_t m_cursor = 0;
};
