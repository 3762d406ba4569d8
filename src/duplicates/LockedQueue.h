#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

// A fixed list of work units handed out one at a time to the workers of a pool, from the front, or from
// the back for work that fits in between.
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
        return m_cursor < m_end ? &m_items[m_cursor++] : nullptr;
    }

    // The last unit not yet handed out when `suits` accepts it, else nullptr.
    template <typename Suits> Item* takeLastIf(const Suits& suits)
    {
        std::lock_guard guard(m_lock);
        return m_cursor < m_end && suits(m_items[m_end - 1]) ? &m_items[--m_end] : nullptr;
    }

    std::size_t size() const { return m_items.size(); }

private:
    std::mutex m_lock; // guards m_cursor and m_end
    std::vector<Item> m_items;
    std::size_t m_cursor = 0;
    std::size_t m_end = m_items.size();
};
