#include "common/WorkLanes.h"

#include <algorithm>
#include <chrono>

namespace ht
{

WorkLanes::WorkLanes(int lanes, std::size_t capacity) : m_lanes(std::size_t(std::max(1, lanes))), m_capacity(capacity)
{
    for (int i = 0; i < count(); ++i)
        m_threads.emplace_back([this, i] { work(i); });
}

WorkLanes::~WorkLanes()
{
    drain();
    {
        std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    for (Lane &lane : m_lanes)
        lane.posted.notify_one();
    for (std::thread &t : m_threads)
        t.join();
}

void WorkLanes::work(int lane)
{
    std::unique_lock lock(m_mutex);
    Lane &mine = m_lanes[std::size_t(lane)];
    for (;;) {
        mine.posted.wait(lock, [&] { return m_ending || !mine.jobs.empty(); });
        if (mine.jobs.empty())
            return;
        Job job = std::move(mine.jobs.front());
        mine.jobs.pop_front();
        mine.busy = true;
        if (m_waiting > 0)
            m_taken.notify_all();
        lock.unlock();
        job(lane);
        lock.lock();
        mine.busy = false;
        if (m_waiting > 0)
            m_taken.notify_all();
    }
}

template <typename Ready>
void WorkLanes::waitUntil(std::unique_lock<std::mutex> &lock, Ready ready, const std::function<void()> &whileWaiting)
{
    ++m_waiting;
    while (!ready()) {
        if (!whileWaiting) {
            m_taken.wait(lock);
            continue;
        }
        m_taken.wait_for(lock, std::chrono::milliseconds(10));
        lock.unlock();
        whileWaiting();
        lock.lock();
    }
    --m_waiting;
}

void WorkLanes::post(std::size_t key, Job job, const std::function<void()> &whileWaiting)
{
    Lane &lane = m_lanes[key % m_lanes.size()];
    std::unique_lock lock(m_mutex);
    waitUntil(
        lock, [&] { return lane.jobs.size() < m_capacity; }, whileWaiting);
    lane.jobs.push_back(std::move(job));
    const bool wasIdle = lane.jobs.size() == 1 && !lane.busy;
    lock.unlock();
    if (wasIdle)
        lane.posted.notify_one();
}

void WorkLanes::drain(const std::function<void()> &whileWaiting)
{
    std::unique_lock lock(m_mutex);
    waitUntil(
        lock,
        [&] {
            return std::all_of(m_lanes.begin(), m_lanes.end(), [](const Lane &l) { return l.jobs.empty() && !l.busy; });
        },
        whileWaiting);
}

} // namespace ht
