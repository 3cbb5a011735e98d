#include "telephone/sip/MessageTrace.h"

#include <array>
#include <deque>
#include <unordered_map>

#include "telephone/sip/WireText.h"

namespace telephone::sip {

namespace {

// Of each kind: enough for two thousand calls a second whose far end rings for ten seconds.
constexpr std::size_t kMostRemembered = 100'000;

// Values by key, of which the oldest are forgotten.
template <typename Value>
class Memory
{
public:
    // The value, a new one if there is none.
    Value& operator[](std::string const& key)
    {
        auto const [found, isNew] = values_.try_emplace(key);
        if (isNew) {
            order_.push_back(key);
        }
        if (order_.size() > kMostRemembered) {
            values_.erase(order_.front());
            order_.pop_front();
        }
        return values_.at(key);
    }

    [[nodiscard]] Value find(std::string const& key) const
    {
        auto const found = values_.find(key);
        return found == values_.end() ? Value{} : found->second;
    }

private:
    std::unordered_map<std::string, Value> values_;
    std::deque<std::string> order_;
};

struct Transaction
{
    TraceCause request;
    TraceCause received;  // the latest message
};

Memory<Transaction>& transactions()
{
    static Memory<Transaction> memory;
    return memory;
}

struct Dialog
{
    TraceCause first;     // message
    TraceCause received;  // the latest one
};

// By Call-ID.
Memory<Dialog>& dialogs()
{
    static Memory<Dialog> memory;
    return memory;
}

// A CANCEL has the branch of what it cancels, and an ACK that of a refused INVITE.
std::string transactionOf(sip_msg const& message)
{
    return text(message.via.branch) + " " + text(message.cseq.met);
}

TraceCause causeOf(sip_msg const& message, bool isSent)
{
    bool const isRequest = message.req;
    TraceCause const request = transactions().find(transactionOf(message)).request;
    // An answer of ours may have a cause of its own, such as a key. A request that is known is sent again.
    if (isSent && causeOfThread() && !(isRequest && request)) {
        return causeOfThread();
    }
    if (request) {
        return request;
    }
    // What the stack sends by itself, such as an ACK, follows from what came last.
    Dialog const dialog = dialogs().find(text(message.callid));
    return isSent && dialog.received ? dialog.received : dialog.first;
}

std::string_view transportName(sip_transp transport)
{
    return transport == SIP_TRANSP_TLS ? "TLS" : transport == SIP_TRANSP_TCP ? "TCP" : "UDP";
}

// What the description says of the audio; empty: there is none.
std::string_view audioDirection(std::string_view packet)
{
    constexpr std::array<std::string_view, 4> kDirections{"sendrecv", "sendonly", "recvonly", "inactive"};
    auto const audio = packet.find("\r\nm=audio ");
    if (audio == std::string_view::npos) {
        return {};
    }
    for (std::string_view const each : kDirections) {
        if (packet.find("\r\na=" + std::string(each), audio) != std::string_view::npos) {
            return each;
        }
    }
    return kDirections.front();
}

TraceCause writeStep(TracedMessage const& traced, sip_msg const& message, TraceCause because)
{
    TraceStep step("sip", because);
    step.add("direction", traced.isSent ? "sent" : "received");
    step.add("peer", addressText(traced.peer));
    step.add("transport", transportName(traced.transport));
    step.add("method", view(message.cseq.met));
    if (!message.req) {
        step.add("status", message.scode).add("phrase", view(message.reason));
    }
    step.add("dialog", view(message.callid)).add("transaction", view(message.via.branch));
    step.addUnlessEmpty("audio", audioDirection(traced.packet));
    step.add("text", withoutSecrets(traced.packet)).write();
    return step.cause();
}

}  // namespace

void traceMessage(TracedMessage const& traced, bool isStep)
{
    Ref<mbuf> buffer;
    Ref<sip_msg> decoded;
    if (!fill(buffer, traced.packet) || sip_msg_decode(decoded.out(), buffer.get()) != 0) {
        return;
    }
    sip_msg const& message = *decoded.get();
    TraceCause cause = causeOf(message, traced.isSent);
    if (isStep) {
        cause = writeStep(traced, message, cause);
    }
    Transaction& transaction = transactions()[transactionOf(message)];
    bool const isReceivedStep = isStep && !traced.isSent;
    if (message.req && (!transaction.request || isReceivedStep)) {
        transaction.request = cause;
    }
    Dialog& dialog = dialogs()[text(message.callid)];
    if (!dialog.first) {
        dialog.first = cause;
    }
    if (!traced.isSent) {
        transaction.received = cause;
        dialog.received = cause;
    }
}

TraceCause causeOfReceived(sip_msg const& message)
{
    return transactions().find(transactionOf(message)).received;
}

}  // namespace telephone::sip
