// The threads of the HTTP server: one works for each connection, a stream of events for as long as it is open. Made and
// ended by the server's listening thread.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>

#include <httplib.h>

namespace telephone {

class ConnectionThreads : public httplib::ThreadPool
{
public:
    // `cut` ends the connections that do not end by themselves.
    ConnectionThreads(std::size_t count, std::function<void()> cut);

    void enqueue(std::function<void()> connection) override;
    // Gives connections a moment to send what they have to say, cuts the others and ends the threads.
    void shutdown() override;

private:
    std::function<void()> const cut_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t open_ = 0;  // connections
};

}  // namespace telephone
