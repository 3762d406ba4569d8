#include "duplicates/AnchorHasher.h"

#include <algorithm>
#include <optional>

AnchorHasher::AnchorHasher(std::size_t ringBytes)
    : m_ringBytes(ringBytes)
    , m_ring(std::make_unique_for_overwrite<std::byte[]>(ringBytes))
    , m_thread([this](std::stop_token stop) { run(stop); })
{
}

AnchorHasher::~AnchorHasher()
{
    m_thread.request_stop();
    m_thread.join();
}

bool AnchorHasher::fits(std::size_t offset, std::size_t length) const
{
    // Taken space runs from the oldest chunk still queued round to m_head.
    const auto oldest
        = std::find_if(m_tasks.begin(), m_tasks.end(), [](const Task& task) { return !task.chunk.empty(); });
    if (oldest == m_tasks.end())
        return offset + length <= m_ringBytes;
    const std::size_t tail = std::size_t(oldest->chunk.data() - m_ring.get());
    if (tail < m_head) // not wrapped: free after the head and before the tail
        return offset >= m_head ? offset + length <= m_ringBytes : offset + length <= tail;
    return offset >= m_head && offset + length <= tail;
}

std::span<std::byte> AnchorHasher::space(std::size_t length, const std::function<bool()>& whileFull)
{
    length = std::min(length, m_ringBytes);
    std::unique_lock guard(m_lock);
    if (std::none_of(m_tasks.begin(), m_tasks.end(), [](const Task& task) { return !task.chunk.empty(); }))
        m_head = 0; // nothing taken: start again at the front, where the pages are warm
    std::size_t offset = 0;
    const auto found = [&] {
        offset = m_head + length <= m_ringBytes ? m_head : 0; // a chunk never wraps: it goes to the front
        return fits(offset, length);
    };
    while (!found()) {
        if (whileFull) {
            guard.unlock();
            const bool worked = whileFull();
            guard.lock();
            if (worked)
                continue;
        }
        m_changed.wait(guard, found);
        break;
    }
    m_head = offset + length;
    return {m_ring.get() + offset, length};
}

void AnchorHasher::release(std::span<std::byte> chunk)
{
    enqueue({Task::Kind::release, chunk});
}

AnchorHasher::Ticket AnchorHasher::startDigest()
{
    enqueue({Task::Kind::reset, {}});
    return ++m_nextTicket;
}

void AnchorHasher::hash(std::span<std::byte> chunk)
{
    enqueue({Task::Kind::hash, chunk});
}

void AnchorHasher::finishDigest()
{
    enqueue({Task::Kind::finish, {}, m_nextTicket});
}

std::vector<std::pair<AnchorHasher::Ticket, ContentHash>> AnchorHasher::finishedDigests(bool waitForAll)
{
    std::unique_lock guard(m_lock);
    if (waitForAll)
        m_changed.wait(guard, [&] { return m_tasks.empty(); });
    return std::exchange(m_finished, {});
}

void AnchorHasher::enqueue(Task task)
{
    std::lock_guard guard(m_lock);
    m_tasks.push_back(task);
    m_changed.notify_all();
}

void AnchorHasher::run(std::stop_token stop)
{
    std::unique_lock guard(m_lock);
    while (m_changed.wait(guard, stop, [&] { return !m_tasks.empty(); })) {
        const Task task = m_tasks.front();
        guard.unlock();
        std::optional<ContentHash> digest;
        switch (task.kind) {
        case Task::Kind::reset: m_hasher.reset(); break;
        case Task::Kind::hash: m_hasher.update(task.chunk); break;
        case Task::Kind::release: break;
        case Task::Kind::finish: digest = m_hasher.finish(); break;
        }
        guard.lock();
        if (digest)
            m_finished.emplace_back(task.ticket, *digest);
        m_tasks.pop_front(); // frees the chunk's space
        m_changed.notify_all();
    }
}
