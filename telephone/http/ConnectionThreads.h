// The threads of the HTTP server: one works for each connection, a stream of events for as long as it is open. A thread
// is started when a connection finds no idle one, so that a server nobody uses has none. Made and ended by the server's
// listening thread.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <httplib.h>

namespace telephone {

class ConnectionThreads : public httplib::TaskQueue
{
public:
    // `most`: threads at a time; further connections wait. `cut` ends the connections that do not end by themselves.
    ConnectionThreads(std::size_t most, std::function<void()> cut);

    void enqueue(std::function<void()> connection) override;
    // Gives connections a moment to send what they have to say, cuts the others and ends the threads.
    void shutdown() override;

private:
    void work();

    std::size_t const most_;
    std::function<void()> const cut_;
    std::vector<std::thread> threads_;
    std::mutex mutex_;
    std::condition_variable came_;  // a connection, or the end
    std::condition_variable ended_;
    std::deque<std::function<void()>> waiting_;
    std::size_t idle_ = 0;  // threads
    std::size_t open_ = 0;  // connections, with those that wait
    bool isOver_ = false;
};

}  // namespace telephone
