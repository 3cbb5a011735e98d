#include "telephone/applications/ApplicationServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/epoll.h>
#include <sys/socket.h>

#include "telephone/applications/ApplicationConnection.h"
#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/framework/Log.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

constexpr std::uint64_t kListener = 0;
constexpr std::uint64_t kWakeUp = 1;
constexpr std::size_t kEventsAtOnce = 64;
constexpr std::chrono::milliseconds kPauseWithoutDescriptors{100};

}  // namespace

Outcome<std::unique_ptr<ApplicationServer>> ApplicationServer::open(Settings settings, SessionFactory sessions)
{
    return listenAt(settings.path).map([&](FileDescriptor listener) {
        return std::unique_ptr<ApplicationServer>(
            new ApplicationServer(std::move(settings), std::move(listener), std::move(sessions)));
    });
}

ApplicationServer::ApplicationServer(Settings settings, FileDescriptor listener, SessionFactory sessions)
    : settings_(std::move(settings))
    , makeSession_(std::move(sessions))
    , listener_(std::move(listener))
    , poll_(epoll_create1(EPOLL_CLOEXEC))
    , lastId_(kWakeUp)
{
    if (!poll_) {
        throw std::system_error(errno, std::generic_category(), "epoll");
    }
    watch(listener_.get(), kListener, EPOLLIN, true);
    watch(wakeUp_.descriptor(), kWakeUp, EPOLLIN, true);
    thread_ = Thread("applications", [this] { run(); });
    log(kLogInfo, "applications", "listening at {}", settings_.path);
}

ApplicationServer::~ApplicationServer()
{
    {
        std::lock_guard const lock(mutex_);
        stopping_ = true;
    }
    wakeUp_.signal();
    thread_.join();
    while (!connections_.empty()) {
        close(connections_.begin()->first);
    }
    ::unlink(settings_.path.c_str());
}

void ApplicationServer::watch(int descriptor, Id id, std::uint32_t events, bool isNew)
{
    epoll_event event{};
    event.events = events;
    event.data.u64 = id;
    if (epoll_ctl(poll_.get(), isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, descriptor, &event) != 0) {
        throw std::system_error(errno, std::generic_category(), "epoll");
    }
}

void ApplicationServer::run()
{
    std::array<epoll_event, kEventsAtOnce> events{};
    // Asked directly before each wait: sendEvents() also takes the signal that announces the end.
    while (!isStopping()) {
        if (!waitForFiles()) {
            sendKeptBack();
            continue;
        }
        int const count = waitForEvents(poll_.get(), events, "applications");
        for (int i = 0; i < count; ++i) {
            auto const& event = events.at(static_cast<std::size_t>(i));
            dispatch(event.data.u64, event.events);
        }
    }
}

bool ApplicationServer::waitForFiles()
{
    if (nextSend_ == kNoDeadline) {
        return true;  // the wait for events waits
    }
    pollfd file{poll_.get(), POLLIN, 0};
    return SteadyClock::now() < nextSend_ && pollUntil({&file, 1}, nextSend_, "applications") > 0;
}

void ApplicationServer::sendKeptBack()
{
    nextSend_ = kNoDeadline;
    std::vector<Id> ids;
    for (auto const& [id, connection] : connections_) {
        ids.push_back(id);
    }
    for (Id const id : ids) {
        dispatch(id, 0);
    }
}

bool ApplicationServer::isStopping()
{
    std::lock_guard const lock(mutex_);
    return stopping_;
}

void ApplicationServer::dispatch(Id id, std::uint32_t events)
{
    if (id == kListener) {
        return accept();
    }
    if (id == kWakeUp) {
        return sendEvents();
    }
    auto const found = connections_.find(id);
    if (found == connections_.end()) {
        return;
    }
    ApplicationConnection& connection = *found->second;
    if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) {
        connection.receive();
    } else {
        connection.send();
    }
    update(id, connection);
}

void ApplicationServer::accept()
{
    FileDescriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) {
        // Without descriptors the listener stays readable, and without a pause this thread would spin.
        if (errno == EMFILE || errno == ENFILE) {
            log(kLogFailure, "applications", "an application cannot connect: too many open files");
            sleepFor(kPauseWithoutDescriptors);
        }
        return;
    }
    if (connections_.size() >= settings_.maximumApplications) {
        return refuse(std::move(socket));
    }
    Id const id = ++lastId_;
    auto session = makeSession_("application-" + std::to_string(id - kWakeUp), settings_.queuedEvents,
                                [this, id] { eventsCame(id); });
    watch(socket.get(), id, EPOLLIN, true);
    connections_.emplace(id, std::make_unique<ApplicationConnection>(std::move(socket), std::move(session)));
}

void ApplicationServer::refuse(FileDescriptor socket)
{
    log(kLogWarning, "applications", "an application is refused: {} are already connected", connections_.size());
    std::string message;
    appendMessage(message, {MessageKind::kError, "too many applications are connected"});
    [[maybe_unused]] ssize_t const sent =
        send(socket.get(), message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

void ApplicationServer::eventsCame(Id id)
{
    {
        std::lock_guard const lock(mutex_);
        withEvents_.push_back(id);
    }
    wakeUp_.signal();
}

void ApplicationServer::sendEvents()
{
    wakeUp_.clear();
    std::unique_lock lock(mutex_);
    auto const ids = std::exchange(withEvents_, {});
    lock.unlock();
    for (Id const id : ids) {
        dispatch(id, 0);
    }
}

void ApplicationServer::update(Id id, ApplicationConnection& connection)
{
    if (connection.isOver()) {
        return close(id);
    }
    nextSend_ = std::min(nextSend_, connection.resumes().value_or(kNoDeadline));
    std::uint32_t const receive = connection.wantsToReceive() ? std::uint32_t{EPOLLIN} : 0U;
    std::uint32_t const send = connection.wantsToSend() ? std::uint32_t{EPOLLOUT} : 0U;
    if (connection.changeInterest(receive | send)) {
        watch(connection.descriptor(), id, receive | send, false);
    }
}

void ApplicationServer::close(Id id)
{
    auto const found = connections_.find(id);
    std::unique_ptr<ApplicationConnection> const connection = std::move(found->second);
    connections_.erase(found);
    std::uint64_t const dropped = connection->session().dropped();
    if (dropped > 0) {
        log(kLogWarning, "applications", "{} did not read: {} events were dropped", connection->session().name(),
            dropped);
    }
}

}  // namespace telephone
