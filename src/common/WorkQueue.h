#pragma once
// A few worker threads taking jobs from one queue, each job as soon as a
// thread is free. The jobs of one queue may run side by side and in any order:
// a caller whose job must follow an earlier one drains the queue first.
//
// The queue is a ring of fixed size, so that posting a job allocates nothing:
// memory allocated on one thread and freed on another would make the threads
// queue for the allocator's lock.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace ht
{

template <typename Job> class WorkQueue
{
  public:
    // Runs a job on worker `worker` (0 to threads - 1); must not throw.
    using Handler = std::function<void(int worker, Job &job)>;

    // `capacity` jobs wait at the most. A sleeping worker is woken for a batch
    // of jobs, or by drain(): every wake-up costs two thread switches.
    WorkQueue(int threads, std::size_t capacity, Handler handler)
        : m_handler(std::move(handler)), m_ring(std::max<std::size_t>(capacity, 2))
    {
        for (int i = 0; i < std::max(1, threads); ++i)
            m_threads.emplace_back([this, i] { work(i); });
    }

    // Runs every job posted, then ends the threads.
    ~WorkQueue()
    {
        drain();
        {
            std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        m_posted.notify_all();
        for (std::thread &t : m_threads)
            t.join();
    }

    WorkQueue(const WorkQueue &) = delete;
    WorkQueue &operator=(const WorkQueue &) = delete;

    // Queues `job`. While the queue is full the caller waits, and
    // `whileWaiting` (if any) runs every few milliseconds, so that a user
    // interface stays alive.
    void post(Job job, const std::function<void()> &whileWaiting = {})
    {
        std::unique_lock lock(m_mutex);
        // A full queue takes jobs again once it is half empty, not at every job that ends.
        if (m_size == m_ring.size())
            waitUntil(
                lock, [&] { return m_size <= m_ring.size() / 2; }, whileWaiting);
        m_ring[(m_first + m_size) % m_ring.size()] = std::move(job);
        ++m_size;
        const bool wake = m_sleeping > 0 && m_size >= std::min(kBatch, m_ring.size());
        lock.unlock();
        if (wake)
            m_posted.notify_one();
    }

    // Waits until every job posted so far has run.
    void drain(const std::function<void()> &whileWaiting = {})
    {
        std::unique_lock lock(m_mutex);
        ++m_draining;
        m_posted.notify_all();
        waitUntil(
            lock, [&] { return m_size == 0 && m_running == 0; }, whileWaiting);
        --m_draining;
    }

  private:
    static constexpr std::size_t kBatch = 8;

    void work(int index)
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            if (m_size == 0 || (m_size < kBatch && m_draining == 0 && !m_ending)) {
                ++m_sleeping;
                m_posted.wait(lock, [&] { return m_ending || m_size >= kBatch || (m_size > 0 && m_draining > 0); });
                --m_sleeping;
            }
            if (m_size == 0)
                return; // ending
            // Once awake, a worker goes on while there is anything to do.
            while (m_size > 0) {
                Job job = std::move(m_ring[m_first]);
                m_first = (m_first + 1) % m_ring.size();
                --m_size;
                ++m_running;
                const bool roomAgain = m_size == m_ring.size() / 2;
                if (roomAgain && m_waiting > 0)
                    m_taken.notify_all();
                lock.unlock();
                m_handler(index, job);
                job = Job(); // what the job holds goes on this thread, outside the lock
                lock.lock();
                --m_running;
            }
            if (m_running == 0 && m_waiting > 0)
                m_taken.notify_all();
        }
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
    std::vector<Job> m_ring;
    std::size_t m_first = 0, m_size = 0;
    int m_running = 0, m_sleeping = 0, m_waiting = 0, m_draining = 0;
    bool m_ending = false;
    std::mutex m_mutex;
    std::condition_variable m_posted; // jobs to take, a drain, or the end
    std::condition_variable m_taken;  // room again, or all done; told only while somebody waits
    std::vector<std::thread> m_threads;
};

} // namespace ht
