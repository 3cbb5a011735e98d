#include "telephone/sip/ServerRequest.h"

#include <map>
#include <new>
#include <set>
#include <utility>

#include "telephone/sip/EventLoop.h"
#include "telephone/sip/StackFunctions.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

namespace {

class ServerRequest
{
public:
    ServerRequest(StackRequest const& request, Servers& servers, Destination destination);
    ~ServerRequest();
    ServerRequest(ServerRequest const&) = delete;
    ServerRequest& operator=(ServerRequest const&) = delete;

    // 0, or why the request is over already.
    int start();
    bool isOver() const { return isOver_; }
    // From now on the holder's pointer is kept up to date.
    void handOver();
    void cancel();
    void abort();
    bool isOf(::sip const* stack) const { return stack_.get() == stack; }
    // Whether it waits there for a first response, over a connection.
    bool waitsFor(SocketAddress const& peer) const;
    void onConnectionEnded();

private:
    void onFound(Outcome<Servers::Places> const& places);
    void sendToNext(int error);
    int transmit(Place const& place);
    void moveOn(std::string const& why, int error, sip_msg const* message);
    int onSending(sip_transp transport, sa const& source, sa const* target, mbuf& message);
    void onResponse(int error, sip_msg const* message);
    void onSilence();
    void end(int error, sip_msg const* message);

    bool hasNext() const { return next_ < places_.size() && !cancelled_ && !ringing_; }
    Place const& current() const { return places_[next_ - 1]; }

    StackRequest request_;
    Servers& servers_;
    Destination const destination_;
    Ref<::sip> stack_;
    Ref<mbuf> message_;
    Ref<struct sip_request> attempt_;
    Timer silence_;
    std::shared_ptr<void> token_ = std::make_shared<char>();
    Servers::Places places_;
    std::size_t next_ = 0;
    int error_ = 0;
    bool starting_ = false;
    bool isOver_ = false;
    bool cancelled_ = false;
    bool answered_ = false;  // by the current server
    bool ringing_ = false;   // a server has reached somebody: another one would ring twice
};

// Those in progress, and the servers of each stack. Used under the lock; never destroyed, as what the stack keeps may
// outlive the variables of main.
std::set<ServerRequest*>& requests()
{
    static auto& all = *new std::set<ServerRequest*>;
    return all;
}
std::map<::sip const*, Servers*>& serversOfStacks()
{
    static auto& all = *new std::map<::sip const*, Servers*>;
    return all;
}

ServerRequest::ServerRequest(StackRequest const& request, Servers& servers, Destination destination)
    : request_(request)
    , servers_(servers)
    , destination_(std::move(destination))
    , silence_(servers.loop())
{
    stack_.share(request.stack);
    message_.share(request.message);
    requests().insert(this);
}

ServerRequest::~ServerRequest()
{
    requests().erase(this);
    if (!isOver_ && request_.holder) {
        *request_.holder = nullptr;
    }
}

int ServerRequest::start()
{
    auto const use = request_.method == "REGISTER" ? Servers::Use::kRegistration : Servers::Use::kOther;
    starting_ = true;
    servers_.find(destination_, use, token_, [this](Outcome<Servers::Places> const& places) { onFound(places); });
    starting_ = false;
    return error_;
}

void ServerRequest::handOver()
{
    if (request_.holder) {
        *request_.holder = reinterpret_cast<struct sip_request*>(this);
    }
}

void ServerRequest::onFound(Outcome<Servers::Places> const& places)
{
    if (cancelled_) {
        return end(ECANCELED, nullptr);
    }
    if (!places) {
        return end(failureOf(places.error().reason), nullptr);
    }
    places_ = *places;
    sendToNext(0);
}

// error: of the attempt before.
void ServerRequest::sendToNext(int error)
{
    while (hasNext()) {
        error = transmit(places_[next_++]);
        if (!error) {
            break;
        }
        servers_.noteFailure(destination_, current());
        servers_.log(LogLevel::kWarning,
                     destination_.host + ": " + placeText(current()) + " cannot be reached: " + errorText(error));
    }
    if (error || !request_.stateful) {
        return end(error, nullptr);
    }
    if (hasNext()) {
        silence_.start(kLongestSilence, [this] { onSilence(); });
    }
}

// The stack lets the attempt before go, and cancels it if its server answers after all.
int ServerRequest::transmit(Place const& place)
{
    answered_ = false;
    std::string const parameters = std::string(";transport=") + transportText(place.transport);
    uri route{};
    route.scheme = slice("sip");
    route.host = slice(place.address);
    route.port = place.port;
    route.params = slice(parameters);
    return stack_sip_request(attempt_.out(), stack_.get(), request_.stateful, request_.method.c_str(), -1,
                             request_.uri.c_str(), -1, &route, message_.get(), request_.sortKey,
                             handlerOf<&ServerRequest::onSending>, handlerOf<&ServerRequest::onResponse>, this);
}

int ServerRequest::onSending(sip_transp transport, sa const& source, sa const* target, mbuf& message)
{
    return request_.sending ? request_.sending(transport, &source, target, &message, request_.argument) : 0;
}

void ServerRequest::onResponse(int error, sip_msg const* message)
{
    silence_.cancel();
    if (error || !message || message->scode == 503) {
        return moveOn(error ? errorText(error) : "answers 503", error, message);
    }
    servers_.noteAnswer(destination_, current());
    if (message->scode >= 200) {
        return end(0, message);
    }
    answered_ = true;
    ringing_ = ringing_ || message->scode > 100;
    if (request_.answered) {
        request_.answered(0, message, request_.argument);  // may destroy this
    }
}

bool ServerRequest::waitsFor(SocketAddress const& peer) const
{
    sa address{};
    return attempt_ && !answered_ && !cancelled_ && current().transport != Transport::kUdp &&
           sa_set_str(&address, current().address.c_str(), current().port) == 0 && SocketAddress(address) == peer;
}

void ServerRequest::onConnectionEnded()
{
    silence_.start(std::chrono::milliseconds(0),
                   [this] { moveOn("ended the connection before it answered", ECONNRESET, nullptr); });
}

void ServerRequest::onSilence()
{
    moveOn("does not answer", ETIMEDOUT, nullptr);
}

void ServerRequest::moveOn(std::string const& why, int error, sip_msg const* message)
{
    if (!cancelled_) {
        servers_.noteFailure(destination_, current());
    }
    if (!hasNext()) {
        return end(error, message);
    }
    servers_.log(LogLevel::kWarning, request_.method + " to " + destination_.host + ": " + placeText(current()) + ": " +
                                         why + "; " + placeText(places_[next_]) + " is next");
    sendToNext(error);
}

void ServerRequest::cancel()
{
    cancelled_ = true;
    silence_.cancel();
    if (attempt_) {
        stack_sip_request_cancel(attempt_.get());
    } else {
        silence_.start(std::chrono::milliseconds(0), [this] { end(ECANCELED, nullptr); });
    }
}

void ServerRequest::abort()
{
    cancelled_ = true;
    if (!attempt_) {
        end(ECONNABORTED, nullptr);
    }
}

void ServerRequest::end(int error, sip_msg const* message)
{
    if (std::exchange(isOver_, true)) {
        return;
    }
    error_ = error;
    if (starting_) {
        return;
    }
    silence_.cancel();
    if (request_.holder) {
        *request_.holder = nullptr;
    }
    // Who sends without a transaction hears of a failure only, as from the stack.
    if (request_.answered && (request_.stateful || error)) {
        request_.answered(error, message, request_.argument);
    }
    mem_deref(this);
}

}  // namespace

std::optional<Destination> destinationOf(::sip const* stack, uri const& route)
{
    if (!serversOfStacks().contains(stack) || pl_strcasecmp(&route.scheme, "sip") != 0) {
        return std::nullopt;
    }
    pl host = route.host;
    (void)msg_param_decode(&route.params, "maddr", &host);
    pl transport{};
    bool const isGiven = msg_param_decode(&route.params, "transport", &transport) == 0;
    return namedDestination(view(host), route.port, isGiven ? std::optional(view(transport)) : std::nullopt);
}

int sendToServers(StackRequest const& request, Destination const& destination)
{
    auto const destroy = [](void* object) { static_cast<ServerRequest*>(object)->~ServerRequest(); };
    void* const memory = mem_zalloc(sizeof(ServerRequest), destroy);
    if (!memory) {
        return ENOMEM;
    }
    auto* const made = new (memory) ServerRequest(request, *serversOfStacks().at(request.stack), destination);
    int const error = made->start();
    if (made->isOver()) {
        mem_deref(made);
    } else {
        made->handOver();
    }
    return error;
}

bool cancelServerRequest(struct sip_request* request)
{
    auto const found = requests().find(reinterpret_cast<ServerRequest*>(request));
    if (found == requests().end()) {
        return false;
    }
    (*found)->cancel();
    return true;
}

void noteConnectionEnded(::sip const* stack, SocketAddress const& peer)
{
    for (ServerRequest* const each : requests()) {
        if (each->isOf(stack) && each->waitsFor(peer)) {
            each->onConnectionEnded();
        }
    }
}

void setServers(::sip* stack, Servers* servers)
{
    if (servers) {
        serversOfStacks()[stack] = servers;
        return;
    }
    serversOfStacks().erase(stack);
    for (ServerRequest* const each : std::set<ServerRequest*>(requests())) {
        if (requests().contains(each) && each->isOf(stack)) {
            each->abort();
        }
    }
}

}  // namespace telephone::sip
