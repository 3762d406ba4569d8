#include "duplicates/BackgroundHasher.h"

BackgroundHasher::BackgroundHasher()
    : m_thread([this](std::stop_token stop) { run(stop); })
{
}

BackgroundHasher::~BackgroundHasher()
{
    m_thread.request_stop();
    m_thread.join();
}

void BackgroundHasher::reset()
{
    waitUntilIdle();
    m_hasher.reset();
}

void BackgroundHasher::add(std::span<const std::byte> chunk)
{
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [&] { return !m_busy; });
    m_pending = chunk;
    m_busy = true;
    m_changed.notify_all();
}

ContentHash BackgroundHasher::finish()
{
    waitUntilIdle();
    return m_hasher.finish();
}

void BackgroundHasher::waitUntilIdle()
{
    std::unique_lock guard(m_lock);
    m_changed.wait(guard, [&] { return !m_busy; });
}

void BackgroundHasher::run(std::stop_token stop)
{
    std::unique_lock guard(m_lock);
    while (m_changed.wait(guard, stop, [&] { return m_busy; })) {
        const std::span<const std::byte> chunk = m_pending;
        guard.unlock();
        m_hasher.update(chunk);
        guard.lock();
        m_busy = false;
        m_changed.notify_all();
    }
}
