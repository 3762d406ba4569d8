#pragma once

#include "usage/Progress.h"
#include "usage/WalkState.h"

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

// Measures a folder tree, folder by folder, on several worker threads. Each top-level folder of the root
// is one branch, reported through the stream as soon as everything beneath it is measured, so that a
// chart can fill in while the walk goes on. The walk never leaves the root's volume, measures a folder
// reachable twice (a bind mount) once, and counts a hard-linked file once. Sizes are allocated bytes.
class FastWalk {
public:
    // Starts measuring `root`, an absolute path, leaving out the folders whose absolute paths are in
    // `leaveOut`.
    FastWalk(std::string root, std::unordered_set<std::string> leaveOut);
    // Cancels the walk and waits until every thread has returned.
    ~FastWalk();
    FastWalk(const FastWalk&) = delete;
    FastWalk& operator=(const FastWalk&) = delete;

    // The next value of the stream, waiting for it. Nothing once the stream has ended: after the value
    // with `finished` set, at once when the root cannot be examined or listed, or after cancel().
    std::optional<Progress> next();
    // Waits at most `timeout` for a value or the end of the stream; true when next() would not wait.
    bool waitFor(std::chrono::milliseconds timeout);
    // Every worker returns at its next wait and the stream ends without a final value.
    void cancel();
    WalkCounters counters();

    // Active processors minus two (the consumer and the driving loop), held between 2 and 8.
    static int workerCount();

private:
    void drive();
    bool start(std::vector<std::shared_ptr<DirNode>>& branches, Progress& progress);
    void work();
    std::optional<Job> waitForJob();
    Job takeJob();
    void publish(Progress value);
    void endStream();

    std::string m_root;
    std::unordered_set<std::string> m_leaveOut;
    std::uint64_t m_device = 0;
    WalkState m_state;

    // The stream between the driving loop and the consumer; `m_streamLock` guards the three fields below.
    std::mutex m_streamLock;
    std::condition_variable m_streamChanged;
    std::deque<Progress> m_values;
    bool m_ended = false;

    std::vector<std::jthread> m_workers; // started and joined by the driving loop
    std::jthread m_driver;               // last, so it stops before the state it uses goes away
};
