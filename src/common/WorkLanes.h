#pragma once
// A few worker threads, each working off its own queue in order. Jobs that
// must not overtake one another (the same file, say) go into the same lane;
// the rest spread over the lanes and run side by side.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace ht
{

class WorkLanes
{
  public:
    // A job learns the lane it runs on, to use that lane's own tools.
    using Job = std::function<void(int lane)>;

    // `capacity` jobs wait per lane at the most.
    WorkLanes(int lanes, std::size_t capacity);
    // Runs every job posted, then ends the threads.
    ~WorkLanes();
    WorkLanes(const WorkLanes &) = delete;
    WorkLanes &operator=(const WorkLanes &) = delete;

    int count() const { return int(m_lanes.size()); }

    // Queues `job` on lane `key % count()`. While that lane is full the caller
    // waits, and `whileWaiting` (if any) runs every few milliseconds, so that
    // a user interface stays alive. A job must not throw.
    void post(std::size_t key, Job job, const std::function<void()> &whileWaiting = {});
    // Waits until every job posted so far has run.
    void drain(const std::function<void()> &whileWaiting = {});

  private:
    struct Lane {
        std::deque<Job> jobs;
        bool busy = false;
        std::condition_variable posted; // a job arrived, or the lanes end
    };
    void work(int lane);
    // With `lock` held; it is let go while `whileWaiting` runs.
    template <typename Ready>
    void waitUntil(std::unique_lock<std::mutex> &lock, Ready ready, const std::function<void()> &whileWaiting);

    std::mutex m_mutex;
    std::condition_variable m_taken; // a job was taken or finished, told only while somebody waits
    int m_waiting = 0;
    std::vector<Lane> m_lanes;
    std::vector<std::thread> m_threads;
    std::size_t m_capacity;
    bool m_ending = false;
};

} // namespace ht
