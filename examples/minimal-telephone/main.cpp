// The smallest telephone: the porting kit, a call control that can do three things, and one application that sends two
// requests and prints the answers and the event that follows.
//
// Usage: minimal-telephone LIBRARY
#include <chrono>
#include <exception>
#include <future>
#include <iostream>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>

#include "CommunicationsServiceEventIfc.h"
#include "platform/kit/DefaultCSfi.h"
#include "platform/kit/ServiceHost.h"

namespace {

constexpr char const* kLine = "4711";
constexpr char const* kApplication = "call view";
constexpr int kAnswerOfTheServer = 50;  // milliseconds
constexpr auto kPatience = std::chrono::seconds(10);

// A call control without calls: it is in service, and tells its subscribers that its line is registered. Every other
// operation is the kit's, which says on standard error what to implement.
class CallControl final : public kit::DefaultCSfi
{
public:
    sfiResult Subscribe(Executable* subscriber) override
    {
        auto* const events = dynamic_cast<CommunicationsServiceEventIfc*>(subscriber);
        if (events == nullptr) {
            return sfiFailure;
        }
        std::lock_guard const hold(mutex_);
        subscribers_.insert(events);
        // In place of the call server, whose answer takes a moment. Under the lock: the timer may expire at once.
        registration_ = StartTimer(kAnswerOfTheServer);
        return sfiSuccess;
    }

    sfiResult GetServiceState(sfiServiceState& state) override
    {
        state = sfiServiceInService;
        return sfiSuccess;
    }

    // On the timer thread. An event is never sent from an operation that the service calls, nor with a lock held.
    void TimerExpired(int timerId) override
    {
        for (auto* const subscriber : subscribersIfRegistered(timerId)) {
            subscriber->registrationStateChange(kLine, 0, true, sfiRegistrationSucceeded);
        }
    }

private:
    std::set<CommunicationsServiceEventIfc*> subscribersIfRegistered(int timerId)
    {
        std::lock_guard const hold(mutex_);
        return timerId == registration_ ? subscribers_ : std::set<CommunicationsServiceEventIfc*>();
    }

    std::mutex mutex_;
    std::set<CommunicationsServiceEventIfc*> subscribers_;
    int registration_ = 0;
};

void ask(kit::ServiceHost& host, std::string const& request)
{
    std::cout << "request: " << request << '\n';
    std::cout << "answer:  " << host.request(kApplication, request) << '\n';
}

void run(std::string const& library)
{
    std::promise<std::string> promise;
    kit::ServiceHost host(library);
    host.receive(kApplication, [&promise](std::string const& event) { promise.set_value(event); });
    host.start();
    ask(host, "<Method>GetServiceState</Method>");
    ask(host, "<Method>Subscribe</Method>");
    auto event = promise.get_future();
    if (event.wait_for(kPatience) == std::future_status::timeout) {
        throw std::runtime_error("no event has come");
    }
    std::cout << "event:   " << event.get() << '\n';
}

}  // namespace

// This definition takes the place of the kit's.
CSfi* CSfi::GetInstance()
{
    static CallControl callControl;
    return &callControl;
}

int main(int count, char** arguments)
{
    if (count != 2) {
        std::cerr << "Usage: minimal-telephone LIBRARY\n";
        return 2;
    }
    try {
        run(arguments[1]);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "minimal-telephone: " << error.what() << '\n';
        return 1;
    }
}
