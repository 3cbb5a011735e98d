// The application socket: a UNIX stream socket for applications, which send requests and receive answers and events in
// the form of ApplicationProtocol.h. A single thread reads, runs the requests and writes; it never waits for an
// application that does not read.
//
//     auto server = ApplicationServer::open({path, 256, 20000}, sessionsOf(services));   // applications can connect
//     now
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "telephone/access/ClientSession.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"
#include "telephone/framework/WakeUp.h"
#include "telephone/time/SteadyClock.h"
#include "telephone/time/Thread.h"

namespace telephone {

class ApplicationConnection;

class ApplicationServer
{
public:
    struct Settings
    {
        std::string path;
        std::size_t maximumApplications = 256;
        std::size_t queuedEvents = 20000;  // for an application that does not read
    };

    // Refused as listenAt.
    [[nodiscard]] static Outcome<std::unique_ptr<ApplicationServer>> open(Settings settings, SessionFactory sessions);
    // Ends every connection and removes the socket.
    ~ApplicationServer();
    ApplicationServer(ApplicationServer const&) = delete;
    ApplicationServer& operator=(ApplicationServer const&) = delete;

    [[nodiscard]] std::string const& path() const { return settings_.path; }

private:
    using Id = std::uint64_t;

    ApplicationServer(Settings settings, FileDescriptor listener, SessionFactory sessions);

    void watch(int descriptor, Id id, std::uint32_t events, bool isNew);
    void run();
    bool isStopping();
    // False: first, a connection sends again what it kept back.
    bool waitForFiles();
    void sendKeptBack();
    // Without epoll events, sends to a connection.
    void dispatch(Id id, std::uint32_t events);
    void accept();
    void refuse(FileDescriptor socket);
    void eventsCame(Id id);
    void sendEvents();
    void update(Id id, ApplicationConnection& connection);
    void close(Id id);

    Settings const settings_;
    SessionFactory const makeSession_;
    FileDescriptor listener_;
    FileDescriptor poll_;
    WakeUp wakeUp_;
    std::map<Id, std::unique_ptr<ApplicationConnection>> connections_;
    Id lastId_;
    SteadyClock::time_point nextSend_ = kNoDeadline;  // of connections that keep something back

    std::mutex mutex_;
    std::vector<Id> withEvents_;
    bool stopping_ = false;
    Thread thread_;
};

}  // namespace telephone
