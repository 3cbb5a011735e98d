// The application socket: a UNIX stream socket at which any number of applications send requests and get answers and
// events (ApplicationProtocol.h says in which form). One thread of its own does the reading, the requests and the
// writing; an application that does not read is not waited for.
//
//     ApplicationServer server({path, 256, 20000}, context, runner);   // from here on applications can connect
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "telephone/framework/FileDescriptor.h"
#include "telephone/framework/WakeUp.h"

namespace telephone {

class ApplicationConnection;
class RequestRunner;
class TelephoneContext;

class ApplicationServer
{
public:
    struct Settings
    {
        std::string path;
        std::size_t maximumApplications = 256;
        std::size_t queuedEvents = 20000;  // for an application that does not read
    };

    // Opens the socket. Throws SocketInUse or std::runtime_error, see listenAt.
    ApplicationServer(Settings settings, TelephoneContext& context, RequestRunner& runner);
    // Ends every connection and removes the socket.
    ~ApplicationServer();
    ApplicationServer(ApplicationServer const&) = delete;
    ApplicationServer& operator=(ApplicationServer const&) = delete;

    [[nodiscard]] std::string const& path() const { return settings_.path; }

private:
    using Id = std::uint64_t;

    void watch(int descriptor, Id id, std::uint32_t events, bool isNew);
    void run();
    void dispatch(Id id, std::uint32_t events);
    void accept();
    void refuse(FileDescriptor socket);
    void eventsCame(Id id);
    void sendEvents();
    void update(Id id, ApplicationConnection& connection);
    void close(Id id);

    Settings const settings_;
    TelephoneContext& context_;
    RequestRunner& runner_;
    FileDescriptor listener_;
    FileDescriptor poll_;
    WakeUp wakeUp_;
    std::map<Id, std::unique_ptr<ApplicationConnection>> connections_;
    Id lastId_;

    std::mutex mutex_;
    std::vector<Id> withEvents_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace telephone
