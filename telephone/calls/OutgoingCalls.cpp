#include "telephone/calls/OutgoingCalls.h"

#include <mutex>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

OutgoingCalls::OutgoingCalls(sip::UserAgent& agent, EngineConfiguration const& configuration,
                             LineDirectory const& lines, Availability const& availability, CallList& calls,
                             EstablishedCalls& established, CallBacks& callBacks)
    : agent_(agent)
    , configuration_(configuration)
    , lines_(lines)
    , availability_(availability)
    , calls_(calls)
    , established_(established)
    , callBacks_(callBacks)
{}

Outcome<> OutgoingCalls::make(int recordLine, int appearance, int callID, std::string const& destination,
                              CallPurpose purpose)
{
    std::lock_guard const guard(agent_.loop());
    auto draft = this->draft(recordLine, appearance, callID, destination);
    if (!draft) {
        return tl::unexpected(draft.error());
    }
    std::string const target = draft->request.target;
    if (auto const pickup = pickupOf(destination)) {
        draft->call->setPickup(*pickup);
    }
    if (purpose == CallPurpose::kConsultation && !calls_.speaking().empty()) {
        draft->call->setConsultation();
    }
    return begin(std::move(*draft)).map([this, &target] { callBacks_.called(target); });
}

Outcome<OutgoingCalls::Draft> OutgoingCalls::draft(int recordLine, int appearance, int callID) const
{
    if (auto const may = mayBegin(callID); !may) {
        return tl::unexpected(may.error());
    }
    auto const place = lines_.placeOf(recordLine, appearance);
    if (!place) {
        return tl::unexpected(place.error());
    }
    auto line = lines_.accountOfLine(place->lineNumber);
    if (!line) {
        return tl::unexpected(line.error());
    }
    Draft draft{calls_.make(callID, *place, false), {}};
    draft.request.account = std::move(line->account);
    if (line->shared && place->appearance > 0) {
        // RFC 7463 section 5.4: the appearance that the call is on.
        draft.request.headers.add("Alert-Info",
                                  fmt::format("<urn:alert:service:normal>;appearance={}", place->appearance));
    }
    return draft;
}

Outcome<OutgoingCalls::Draft> OutgoingCalls::draft(int recordLine, int appearance, int callID,
                                                   std::string const& destination) const
{
    return draft(recordLine, appearance, callID).and_then([&destination](Draft&& draft) {
        return callTarget(destination, draft.request.account).map([&draft](std::string const& target) {
            draft.request.target = target;
            return std::move(draft);
        });
    });
}

Outcome<> OutgoingCalls::mayBegin(int callID) const
{
    if (auto available = availability_.forNewCalls(); !available) {
        return available;
    }
    if (callID < 1) {
        return refuse(RefusalKind::kBadInput, fmt::format("{} is not a call id: these are 1 or more", callID));
    }
    if (calls_.find(callID) != nullptr) {
        return refuse(RefusalKind::kAlreadyExists, fmt::format("call id {} is in use", callID));
    }
    if (calls_.isFull()) {
        return refuse(RefusalKind::kLimit,
                      fmt::format("call {} cannot be made: there are {} calls already", callID, calls_.maximum()));
    }
    return {};
}

// The numbers at which the call server hands over another telephone's call.
std::optional<sfiFeature> OutgoingCalls::pickupOf(std::string const& destination) const
{
    std::string const& group = configuration_.groupPickup;
    std::string const& directed = configuration_.directedPickup;
    if (!group.empty() && destination == group) {
        return sfiFeatureGroupPickup;
    }
    if (!directed.empty() && destination.starts_with(directed)) {
        return sfiFeatureDirectedPickup;
    }
    return std::nullopt;
}

Outcome<> OutgoingCalls::begin(Draft draft)
{
    if (calls_.speaking().empty()) {
        auto dialled = draft.call->dial(agent_, draft.request);
        if (dialled) {
            calls_.add(std::move(draft.call)).announceDialling(draft.request.target);
        }
        return dialled;
    }
    Call& call = calls_.add(std::move(draft.call));
    call.announceDialling(draft.request.target);
    dialWhenAlone(call, std::move(draft.request));
    return {};
}

void OutgoingCalls::dialWhenAlone(Call& call, sip::CallRequest request)
{
    auto const dial = [this, request = std::move(request)](Call& waiting, Outcome<> const& alone) {
        auto const dialled = alone.and_then([&] { return waiting.dial(agent_, request); });
        if (reportIfRefused(kComponent, dialled)) {
            waiting.end({sfiCallStateFailed, alone ? sfiReasonServerFailure : sfiReasonRefused});
        }
    };
    established_.afterHoldingOthers(call, sfiFeatureConsultationHold, dial);
}

}  // namespace telephone
