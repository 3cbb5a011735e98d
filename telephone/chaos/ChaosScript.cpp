#include "telephone/chaos/ChaosScript.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <string_view>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceRequests.h"

namespace telephone {

namespace {

constexpr double kDuration = 3600;  // seconds
constexpr int kStepsBetweenRests = 25;
constexpr int kFirstIncoming = 1001;  // id of the first call that comes in; the next one has the next id
constexpr int kIdsInUse = 4;          // an id is chosen among those of so many latest calls
constexpr int kForget = 70;           // seconds after which a call-back, a timer or a transaction is over

// A line of the script with its share of all. {line}, {number}, {key}, {new}, {call}, {offered}, {flag}, {fault} and
// {moment} are filled in.
struct Template
{
    int weight;
    std::string_view line;
};

constexpr std::array kTemplates{
    Template{14, "OutgoingCallMakeRequest Line={line} CallID={new} Destination={number}"},
    Template{6, "call {line} from {number}"},
    Template{3, "call {line} from {number} name 'A <Name> & \"more\"'"},
    Template{8, "AnswerCall Line={line} CallID={offered}"},
    Template{2, "AcceptCall Line={line} CallID={offered}"},
    Template{3, "RefuseCall Line={line} CallID={offered} RefuseCallReason=1"},
    Template{3, "DeflectCall Line={line} CallID={offered} Destination={number}"},
    Template{6, "HoldCall Line={line} CallID={call}"},
    Template{6, "RetrieveCall Line={line} CallID={call}"},
    Template{4, "Consult Line={line} CallID={new} Destination={number}"},
    Template{3, "AttendedTransfer Line={line} activeCall={call} heldCall={call}"},
    Template{3, "BlindTransfer Line={line} CallID={call} Destination={number}"},
    Template{4, "ConferenceCall Line={line} activeCall={call} heldCall={call}"},
    Template{3, "AlternateCalls Line={line}"},
    Template{8, "CallClearRequest Line={line} CallID={call}"},
    Template{3, "CallClearRequest Line={line} CallID={offered}"},
    Template{2, "ActivateCallbackBusy Line={line} CallID={call}"},
    Template{2, "ActivateCallbackRinging Line={line} CallID={call}"},
    Template{2, "GenerateDigits Line={line} activeCall={call} digits=12#"},
    Template{2, "setForwardingConfiguration Line={line} fwType=6 status=1 uri={number} cfnrRingCount=2"},
    Template{2, "setForwardingConfiguration Line={line} fwType=6 status=0 uri="},
    Template{12, "press {key}"},
    Template{8, "release {key}"},
    Template{4, "hook up"},
    Template{4, "hook down"},
    Template{2, "plug headset"},
    Template{2, "unplug headset"},
    Template{3, "message {line} new 3 old 1"},
    Template{2, "message {line} new 0 old 0"},
    Template{1, "lock"},
    Template{2, "unlock"},
    Template{1, "registrar off"},
    Template{2, "registrar on"},
    Template{3, "exchange {number} hang-up"},
    Template{2, "exchange {number} hold 1s, retrieve"},
    Template{2, "exchange {number} hold"},
    Template{2, "exchange {number} transfer {number}"},
    Template{2, "exchange {number} dtmf 12"},
    Template{1, "exchange {number} silent"},
    Template{1, "exchange {number} garbage"},
    Template{3, "exchange {number} call {line} 5s, wait 2s, hang-up"},
    Template{2, "exchange 107 does ring 1s, redirect {number}"},
    Template{2, "exchange 107 does early-media 1s, answer 3s, transfer {number}"},
    Template{4, "OutgoingCallMakeRequest Line={line} CallID={new} Destination=107"},
    Template{1, "store set cfnr-delay 4"},
    Template{2, "store set cfb-activated {flag}"},
    Template{1, "store set cfb-address {number}"},
    Template{1, "store set call-dnd-activated {flag}"},
    Template{8, "fault {fault} {moment}"},
};

// The values of a fault's arguments, in the form of its usage; other words of it stand for themselves.
struct ArgumentValues
{
    std::string_view argument;
    std::array<std::string_view, 4> values;
};

constexpr std::array kArgumentValues{
    ArgumentValues{"COUNT", {"2", "3", "4", "5"}},
    ArgumentValues{"SECONDS", {"0.1", "0.5", "1", "3"}},
    ArgumentValues{"PERCENT", {"1", "10", "50", "100"}},
    ArgumentValues{"BYTES", {"1", "100", "1000", "100000"}},
};

constexpr std::array<std::string_view, 4> kKindsOfDatagrams{"", " sip", " rtp", " all"};

// When a fault begins. All end after a while.
constexpr std::array<std::string_view, 7> kMoments{
    "at 0.5",
    "at 4",
    "after 1 request",
    "after 3 requests",
    "on CallHeldEvent",
    "on CallStateChangeEvent CallState=ringing",
    "on CallStateChangeEvent CallState=connected",
};
constexpr int kLongestFault = 40;  // seconds

// What a rest begins with, so that nothing is left to happen.
constexpr std::array<std::string_view, 8> kPutInOrder{
    "fault off",      "SetServiceState state=sfiServiceInService",
    "Activate",       "registrar on",
    "unlock",         "hook down",
    "unplug headset", "SetMicrophoneMute Status=0",
};

// Requests that end the service or speak for it, or set lamps that then have no cause.
constexpr std::array<std::string_view, 5> kLeftOut{"Deactivate", "SetServiceState", "Subscribe", "setLampMode",
                                                   "SystemStatus"};

class Writer
{
public:
    Writer(ChaosGround const& ground, std::uint64_t seed)
        : ground_(ground)
        , random_(seed)
    {}

    ScriptLines write()
    {
        while (seconds_ < kDuration) {
            for (int i = 0; i < kStepsBetweenRests; ++i) {
                step();
            }
            rest();
        }
        return std::move(lines_);
    }

private:
    int upTo(int count) { return static_cast<int>(random_() % static_cast<std::uint64_t>(count)); }

    template <typename Values>
    auto const& oneOf(Values const& values)
    {
        return *(std::begin(values) + upTo(static_cast<int>(std::distance(std::begin(values), std::end(values)))));
    }

    void pause(double seconds)
    {
        lines_.push_back(fmt::format("pause {:.2f}", seconds));
        seconds_ += seconds;
    }

    void attempt(std::string const& line) { lines_.push_back("try " + line); }

    void step()
    {
        attempt(upTo(4) == 0 ? anyRequest() : filled(std::string(oneTemplate())));
        // Often at once, so that things cross; sometimes long enough for every timer.
        if (int const kind = upTo(10); kind < 5) {
            pause(0.01 * upTo(100));
        } else if (kind < 7) {
            pause(upTo(15));
        }
    }

    // Ends every call that there may be and waits until nothing is left to happen.
    void rest()
    {
        for (std::string_view const each : kPutInOrder) {
            attempt(std::string(each));
        }
        clear(firstCall_, lastCall_);
        clear(firstOffered_, lastOffered_ + 2 * kIdsInUse);
        for (std::string const& number : ground_.numbers) {
            attempt(fmt::format("exchange {} hang-up", number));  // transferred calls go on without the telephone
        }
        pause(kForget);
        // Call-backs and forwarded calls may have come meanwhile.
        clear(firstOffered_, lastOffered_ + 4 * kIdsInUse);
        pause(kForget);
        lines_.emplace_back("check");
        firstCall_ = lastCall_;
        firstOffered_ = lastOffered_;
    }

    void clear(int first, int last)
    {
        for (int id = first; id <= last; ++id) {
            attempt(fmt::format("CallClearRequest Line={} CallID={}", ground_.lines.front(), id));
        }
    }

    std::string_view oneTemplate()
    {
        int all = 0;
        for (Template const& each : kTemplates) {
            all += each.weight;
        }
        int left = upTo(all);
        for (Template const& each : kTemplates) {
            left -= each.weight;
            if (left < 0) {
                return each.line;
            }
        }
        return kTemplates.back().line;
    }

    std::string filled(std::string line)
    {
        for (auto open = line.find('{'); open != std::string::npos; open = line.find('{', open)) {
            auto const close = line.find('}', open);
            line.replace(open, close + 1 - open, valueOf(line.substr(open + 1, close - open - 1)));
        }
        bool const offers = line.starts_with("call ") || line.find(" call ") != std::string::npos;
        lastOffered_ += offers ? 1 : 0;
        return line;
    }

    std::string valueOf(std::string_view name)
    {
        if (name == "line") {
            return oneOf(ground_.lines);
        }
        if (name == "number") {
            return oneOf(ground_.numbers);
        }
        if (name == "key") {
            return std::to_string(oneOf(ground_.keys));
        }
        if (name == "flag") {
            return upTo(2) == 0 ? "false" : "true";
        }
        if (name == "fault") {
            return withValues(oneOf(ground_.faults));
        }
        if (name == "moment") {
            int const seconds = 1 + upTo(kLongestFault);  // in a fixed order, which arguments have not
            return fmt::format("{} for {}", oneOf(kMoments), seconds);
        }
        if (name == "new") {
            return std::to_string(++lastCall_);
        }
        bool const isOffered = name == "offered" || upTo(3) == 0;
        return std::to_string(std::max(1, (isOffered ? lastOffered_ : lastCall_) - upTo(kIdsInUse)));
    }

    // "datagrams late 3 by 0.5 rtp" from "datagrams late COUNT by SECONDS [sip|rtp|all]".
    std::string withValues(std::string usage)
    {
        for (ArgumentValues const& each : kArgumentValues) {
            if (auto const place = usage.find(each.argument); place != std::string::npos) {
                usage.replace(place, each.argument.size(), oneOf(each.values));
            }
        }
        if (auto const choice = usage.find(" ["); choice != std::string::npos) {
            usage.replace(choice, std::string::npos, oneOf(kKindsOfDatagrams));
        }
        return usage;
    }

    // Any request, with values of the right form: often the description's own.
    std::string anyRequest()
    {
        RequestDescription const* request = nullptr;
        do {
            request = &oneOf(kRequestDescriptions);
        } while (std::ranges::find(kLeftOut, request->name) != kLeftOut.end());
        std::string line(request->name);
        for (RequestParameter const& each : request->parameters) {
            if (each.need == RequestNeed::required || upTo(2) == 0) {
                line += fmt::format(" {}='{}'", each.tag, anyValue(each));
            }
        }
        return line;
    }

    std::string anyValue(RequestParameter const& parameter)
    {
        if (parameter.form == "line id") {
            return valueOf("line");
        }
        if (parameter.form == "call id") {
            return valueOf("call");
        }
        if (parameter.form == "number or SIP address") {
            return valueOf("number");
        }
        if (parameter.kind == RequestParameterKind::flag) {
            return std::to_string(upTo(2));
        }
        if (parameter.values != nullptr && parameter.kind == RequestParameterKind::integer) {
            return std::to_string(oneOf(*parameter.values).number);
        }
        return std::string(parameter.sample);
    }

    ChaosGround const& ground_;
    std::mt19937_64 random_;
    ScriptLines lines_;
    double seconds_ = 0;
    int firstCall_ = 1;  // since the last rest
    int lastCall_ = 1;
    int firstOffered_ = kFirstIncoming;  // likewise
    int lastOffered_ = kFirstIncoming;   // at least; call-backs and transfers bring more
};

}  // namespace

ScriptLines chaosScript(ChaosGround const& ground, std::uint64_t seed)
{
    return Writer(ground, seed).write();
}

}  // namespace telephone
