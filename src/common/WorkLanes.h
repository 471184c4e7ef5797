#pragma once
// A few worker threads, each working off its own queue in order. Jobs that
// must not overtake one another (the same file, say) go into the same lane;
// the rest spread over the lanes and run side by side.
//
// Each lane keeps its jobs in a ring of fixed size, so that posting a job
// allocates nothing: memory allocated on one thread and freed on another
// would make the threads queue for the allocator's lock.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ht
{

template <typename Job> class WorkLanes
{
  public:
    // Runs a job on the lane it was posted to; must not throw.
    using Handler = std::function<void(int lane, Job &job)>;

    // `capacity` jobs wait per lane at the most. An idle lane is woken for a
    // batch of jobs, or by drain(): every wake-up costs two thread switches.
    WorkLanes(int lanes, std::size_t capacity, Handler handler)
        : m_handler(std::move(handler)), m_capacity(std::max<std::size_t>(capacity, 2))
    {
        for (int i = 0; i < std::max(1, lanes); ++i)
            m_lanes.push_back(std::make_unique<Lane>(m_capacity));
        for (int i = 0; i < count(); ++i)
            m_threads.emplace_back([this, i] { work(i); });
    }

    // Runs every job posted, then ends the threads.
    ~WorkLanes()
    {
        drain();
        {
            std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        for (auto &lane : m_lanes)
            lane->posted.notify_one();
        for (std::thread &t : m_threads)
            t.join();
    }

    WorkLanes(const WorkLanes &) = delete;
    WorkLanes &operator=(const WorkLanes &) = delete;

    int count() const { return int(m_lanes.size()); }

    // Queues `job` on lane `key % count()`. While that lane is full the caller
    // waits, and `whileWaiting` (if any) runs every few milliseconds, so that
    // a user interface stays alive.
    void post(std::size_t key, Job job, const std::function<void()> &whileWaiting = {})
    {
        Lane &lane = *m_lanes[key % m_lanes.size()];
        std::unique_lock lock(m_mutex);
        // A full lane takes jobs again once it is half empty, not at every job it finishes.
        if (lane.size == m_capacity)
            waitUntil(
                lock, [&] { return lane.size <= m_capacity / 2; }, whileWaiting);
        lane.ring[(lane.first + lane.size) % m_capacity] = std::move(job);
        ++lane.size;
        const bool wake = !lane.awake && lane.size >= std::min(kBatch, m_capacity);
        if (wake)
            lane.awake = true;
        lock.unlock();
        if (wake)
            lane.posted.notify_one();
    }

    // Waits until every job posted so far has run.
    void drain(const std::function<void()> &whileWaiting = {})
    {
        std::unique_lock lock(m_mutex);
        for (auto &lane : m_lanes) {
            if (!lane->awake && lane->size > 0) {
                lane->awake = true;
                lane->posted.notify_one();
            }
        }
        waitUntil(
            lock,
            [&] {
                return std::all_of(m_lanes.begin(), m_lanes.end(),
                                   [](const auto &l) { return l->size == 0 && !l->busy; });
            },
            whileWaiting);
    }

  private:
    static constexpr std::size_t kBatch = 8;

    struct Lane {
        explicit Lane(std::size_t capacity) : ring(capacity) {}
        std::vector<Job> ring;
        std::size_t first = 0, size = 0;
        bool busy = false;
        bool awake = false; // set with a batch of jobs, cleared when the lane ran dry
        std::condition_variable posted;
    };

    void work(int index)
    {
        Lane &lane = *m_lanes[std::size_t(index)];
        std::unique_lock lock(m_mutex);
        for (;;) {
            lane.posted.wait(lock, [&] { return m_ending || (lane.awake && lane.size > 0); });
            if (lane.size == 0)
                return;
            Job job = std::move(lane.ring[lane.first]);
            lane.first = (lane.first + 1) % m_capacity;
            --lane.size;
            lane.busy = true;
            const bool roomAgain = lane.size == m_capacity / 2;
            lock.unlock();
            if (roomAgain)
                notifyWaiter();
            m_handler(index, job);
            job = Job(); // what the job holds goes on this thread, outside the lock
            lock.lock();
            lane.busy = false;
            if (lane.size == 0) {
                lane.awake = false;
                lock.unlock();
                notifyWaiter();
                lock.lock();
            }
        }
    }

    void notifyWaiter()
    {
        std::lock_guard lock(m_mutex);
        if (m_waiting > 0)
            m_taken.notify_all();
    }

    // With `lock` held; it is let go while `whileWaiting` runs.
    template <typename Ready>
    void waitUntil(std::unique_lock<std::mutex> &lock, Ready ready, const std::function<void()> &whileWaiting)
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

    Handler m_handler;
    std::size_t m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_taken; // room in a lane, or a lane ran dry; told only while somebody waits
    int m_waiting = 0;
    bool m_ending = false;
    std::vector<std::unique_ptr<Lane>> m_lanes;
    std::vector<std::thread> m_threads;
};

} // namespace ht
