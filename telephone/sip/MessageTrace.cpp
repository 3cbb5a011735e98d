#include "telephone/sip/MessageTrace.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <deque>
#include <optional>
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
    TraceCause sent;      // the latest message
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
    TraceCause accepted;  // the latest 200 to an INVITE that was sent
};

// By Call-ID.
Memory<Dialog>& dialogs()
{
    static Memory<Dialog> memory;
    return memory;
}

// What the trace needs of a message. Read without the stack's own decoder, which draws a random number for each
// message: a trace would change the run.
struct Reading
{
    bool isRequest = false;
    std::string_view status;  // of an answer, with its phrase: "180 Ringing"
    std::string_view method;  // that it asks for or answers
    std::string dialog;       // Call-ID
    std::string branch;

    // A CANCEL has the branch of what it cancels, and an ACK that of a refused INVITE.
    [[nodiscard]] std::string transaction() const { return branch + " " + std::string(method); }
};

std::string_view withoutBlanks(std::string_view text)
{
    auto const first = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

// The value of the first header of that name; empty without one.
std::string_view headerIn(std::string_view packet, std::string_view name, std::string_view shortName)
{
    for (auto at = packet.find('\n'); at != std::string_view::npos; at = packet.find('\n', at + 1)) {
        std::string_view const rest = packet.substr(at + 1);
        std::string_view const line = rest.substr(0, rest.find_first_of("\r\n"));
        auto const colon = line.find(':');
        std::string_view const found = withoutBlanks(line.substr(0, std::min(colon, line.size())));
        if (line.empty()) {
            break;
        }
        if (colon != std::string_view::npos &&
            (equalsIgnoringCase(found, name) || equalsIgnoringCase(found, shortName))) {
            return withoutBlanks(line.substr(colon + 1));
        }
    }
    return {};
}

// Nothing for a packet that is not a SIP message.
std::optional<Reading> readingOf(std::string_view packet)
{
    constexpr std::string_view kAnswer = "SIP/2.0 ";
    Reading reading;
    std::string_view const firstLine = packet.substr(0, packet.find_first_of("\r\n"));
    reading.isRequest = !firstLine.starts_with(kAnswer);
    reading.status = reading.isRequest ? std::string_view() : firstLine.substr(kAnswer.size());
    reading.dialog = headerIn(packet, "Call-ID", "i");
    sip_via via{};
    sip_cseq sequence{};
    pl const viaText = slice(headerIn(packet, "Via", "v"));
    pl const sequenceText = slice(headerIn(packet, "CSeq", "CSeq"));
    if (sip_via_decode(&via, &viaText) != 0 || sip_cseq_decode(&sequence, &sequenceText) != 0) {
        return std::nullopt;
    }
    reading.branch = text(via.branch);
    reading.method = view(sequence.met);
    return reading;
}

TraceCause causeOfSent(Reading const& message)
{
    TraceCause const request = transactions().find(message.transaction()).request;
    // An answer of ours may have a cause of its own, such as a key. A request that is known is sent again.
    if (causeOfThread() && !(message.isRequest && request)) {
        return causeOfThread();
    }
    if (request) {
        return request;
    }
    // What the stack sends by itself, such as an ACK, follows from what came last.
    Dialog const dialog = dialogs().find(message.dialog);
    return dialog.received ? dialog.received : dialog.first;
}

// byTelephone: not by the exchange, which receives what the telephone has sent.
TraceCause causeOfReceived(Reading const& message, bool byTelephone)
{
    Transaction const transaction = transactions().find(message.transaction());
    if (!byTelephone && transaction.sent) {
        return transaction.sent;
    }
    if (transaction.request) {
        return transaction.request;
    }
    Dialog const dialog = dialogs().find(message.dialog);
    return message.isRequest && message.method == "ACK" ? dialog.accepted : dialog.first;
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

TraceCause writeStep(TracedMessage const& traced, Reading const& message, TraceCause because)
{
    TraceStep step("sip", because);
    step.add("direction", traced.isSent ? "sent" : "received");
    step.add("peer", addressText(traced.peer));
    step.add("transport", transportName(traced.transport));
    step.add("method", message.method);
    if (!message.isRequest) {
        auto const blank = std::min(message.status.find(' '), message.status.size() - 1);
        step.add("status", std::atoi(std::string(message.status).c_str()))
            .add("phrase", message.status.substr(blank + 1));
    }
    step.add("dialog", message.dialog).add("transaction", message.branch);
    step.addUnlessEmpty("audio", audioDirection(traced.packet));
    step.add("text", withoutSecrets(traced.packet)).write();
    return step.cause();
}

}  // namespace

void traceMessage(TracedMessage const& traced, bool isStep)
{
    auto const message = readingOf(traced.packet);
    if (!message) {
        return;
    }
    TraceCause cause = traced.isSent ? causeOfSent(*message) : causeOfReceived(*message, isStep);
    if (isStep) {
        cause = writeStep(traced, *message, cause);
    }
    bool const isReceivedStep = isStep && !traced.isSent;
    Transaction& transaction = transactions()[message->transaction()];
    if (message->isRequest && (!transaction.request || isReceivedStep)) {
        transaction.request = cause;
    }
    Dialog& dialog = dialogs()[message->dialog];
    if (!dialog.first) {
        dialog.first = cause;
    }
    (traced.isSent ? transaction.sent : transaction.received) = cause;
    if (!traced.isSent) {
        dialog.received = cause;
    } else if (message->method == "INVITE" && message->status.starts_with('2')) {
        dialog.accepted = cause;
    }
}

TraceCause causeOfReceived(sip_msg const& message)
{
    return transactions().find(text(message.via.branch) + " " + text(message.cseq.met)).received;
}

TraceCause causeOfLastReceived(std::string const& callId)
{
    return dialogs().find(callId).received;
}

}  // namespace telephone::sip
