// The requests and their handlers, one row each in the order of their descriptions, and the look-up of a row by name.
//
// Only the invoker includes it; other code reads the descriptions in CommunicationsServiceRequests.h.
#pragma once

#include "CommunicationsServiceInvoker.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "CommunicationsServiceRequests.h"
#include "RequestText.h"

class RequestTable
{
public:
    using Handle = std::string (*)(CommunicationsServiceInvoker& invoker, CommunicationsServiceIfc* service,
                                   RequestText const& request, InvokerResponse* response);

    struct Row
    {
        std::string_view name;
        Handle handle;
        bool answers;  // otherwise the requester only learns that the request is finished
    };

    static constexpr std::size_t kCount = kRequestCount;
    using Rows = std::array<Row, kCount>;

    static constexpr Rows rows();
    // The row of a request, or null for an unknown name.
    static Row const* find(std::string_view name);

private:
    using I = CommunicationsServiceInvoker;
    using Service = CommunicationsServiceIfc;

    template <std::string (I::*kHandler)(Service*, RequestText const&)>
    static constexpr Row row(std::string_view name)
    {
        return {name,
                [](I& invoker, Service* service, RequestText const& request, InvokerResponse* /*response*/) {
                    return (invoker.*kHandler)(service, request);
                },
                true};
    }
    template <std::string (I::*kHandler)(Service*, RequestText const&, InvokerResponse*)>
    static constexpr Row row(std::string_view name)
    {
        return {name,
                [](I& invoker, Service* service, RequestText const& request, InvokerResponse* response) {
                    return (invoker.*kHandler)(service, request, response);
                },
                true};
    }
    template <void (I::*kHandler)(Service*, RequestText const&)>
    static constexpr Row row(std::string_view name)
    {
        return {name,
                [](I& invoker, Service* service, RequestText const& request, InvokerResponse* /*response*/) {
                    (invoker.*kHandler)(service, request);
                    return std::string();
                },
                false};
    }
};

// clang-format off
constexpr RequestTable::Rows RequestTable::rows()
{
    return {{
        row<&I::OutgoingCallMakeRequest>           ("OutgoingCallMakeRequest"),
        row<&I::AcceptCallRequest>                 ("AcceptCall"),
        row<&I::AnswerCallRequest>                 ("AnswerCall"),
        row<&I::DeflectCallRequest>                ("DeflectCall"),
        row<&I::HoldCallRequest>                   ("HoldCall"),
        row<&I::RetrieveCallRequest>               ("RetrieveCall"),
        row<&I::ConsultationCallRequest>           ("Consult"),
        row<&I::AttendedTransferCallRequest>       ("AttendedTransfer"),
        row<&I::BlindTransferCallRequest>          ("BlindTransfer"),
        row<&I::RefuseCallRequest>                 ("RefuseCall"),
        row<&I::CallClearRequest>                  ("CallClearRequest"),
        row<&I::SystemStatus>                      ("SystemStatus"),
        row<&I::Subscribe>                         ("Subscribe"),
        row<&I::ActivateCallbackRinging>           ("ActivateCallbackRinging"),
        row<&I::ActivateCallbackBusy>              ("ActivateCallbackBusy"),
        row<&I::CancelCallbacks>                   ("CancelCallbacks"),
        row<&I::DirectedPickupCallRequest>         ("DirectedPickupCall"),
        row<&I::GroupPickupCallRequest>            ("GroupPickupCall"),
        row<&I::ConferenceCallRequest>             ("ConferenceCall"),
        row<&I::setServiceState>                   ("SetServiceState"),
        row<&I::getServiceState>                   ("GetServiceState"),
        row<&I::setDoNotDisturb>                   ("SetDoNotDisturb"),
        row<&I::getDoNotDisturb>                   ("GetDoNotDisturb"),
        row<&I::setAgentState>                     ("SetAgentState"),
        row<&I::GenerateDigits>                    ("GenerateDigits"),
        row<&I::GetDevices>                        ("GetDevices"),
        row<&I::SetMicrophoneMuteRequest>          ("SetMicrophoneMute"),
        row<&I::GetMicrophoneMuteRequest>          ("GetMicrophoneMute"),
        row<&I::GetManualHoldIndication>           ("getManualHoldIndication"),
        row<&I::Activate>                          ("Activate"),
        row<&I::Deactivate>                        ("Deactivate"),
        row<&I::SendCSTARequest>                   ("SendCSTARequest"),
        row<&I::InitializeOrFinalizeServerFeatures>("InitializeOrFinalizeServerFeatures"),
        row<&I::AlternateCallsRequest>             ("AlternateCalls"),
        row<&I::getMessageWaitingIndicator>        ("GetMessageWaitingIndicator"),
        row<&I::setAssociatedCalls>                ("setAssociatedCalls"),
        row<&I::setLampMode>                       ("setLampMode"),
        row<&I::makeSecurityChangeReinvite>        ("makeSecurityChangeReinvite"),
        row<&I::setForwardingConfiguration>        ("setForwardingConfiguration"),
        row<&I::getForwardingConfiguration>        ("getForwardingConfiguration"),
        row<&I::setIsInServiceInitiatedState>      ("setIsInServiceInitiatedState"),
        row<&I::sendUACSTAServerMessage>           ("SendUACSTAServerMessage"),
        row<&I::callbackDOFeatureCallID>           ("callbackDOFeatureCallID"),
    }};
}
// clang-format on

namespace request_rows {
inline constexpr RequestTable::Rows kRows = RequestTable::rows();

constexpr bool matchDescriptions()
{
    for (std::size_t index = 0; index < kRows.size(); ++index) {
        RequestDescription const& description = kRequestDescriptions[index];
        if (kRows[index].name != description.name ||
            kRows[index].answers != (description.answer != RequestAnswer::nothing)) {
            return false;
        }
    }
    return true;
}
static_assert(matchDescriptions(), "the handlers differ from the descriptions in number, a name, order or the answer");

// A name is found with one look into a table of slots, in which no two names share a slot. The slot follows from the
// length of the name and three of its characters.
inline constexpr std::size_t kSlots = 256;
inline constexpr std::uint8_t kNoRow = 255;
static_assert(RequestTable::kCount <= kNoRow, "row numbers have one byte");

constexpr std::size_t slotOf(std::string_view name, std::uint32_t factor)
{
    std::uint32_t mark = static_cast<std::uint32_t>(name.size());
    for (char const character : {name.front(), name[name.size() / 2], name.back()}) {
        mark = mark << 8U | static_cast<unsigned char>(character);
    }
    return mark * factor >> 24U;
}

constexpr bool separates(std::uint32_t factor)
{
    std::array<bool, kSlots> taken{};
    for (RequestTable::Row const& row : kRows) {
        bool& slot = taken[slotOf(row.name, factor)];
        if (slot) {
            return false;
        }
        slot = true;
    }
    return true;
}

constexpr std::uint32_t findFactor()
{
    constexpr std::uint32_t kStart = 0x9E3779B1;  // odd, its bits well mixed
    constexpr std::uint32_t kTries = 4096;
    for (std::uint32_t factor = kStart; factor != kStart + 2 * kTries; factor += 2) {
        if (separates(factor)) {
            return factor;
        }
    }
    return 0;
}
inline constexpr std::uint32_t kFactor = findFactor();
static_assert(separates(kFactor), "no factor gives every name its own slot: add a character to slotOf");

constexpr std::array<std::uint8_t, kSlots> makeSlots()
{
    std::array<std::uint8_t, kSlots> slots{};
    for (std::uint8_t& slot : slots) {
        slot = kNoRow;
    }
    for (std::size_t index = 0; index < kRows.size(); ++index) {
        slots[slotOf(kRows[index].name, kFactor)] = static_cast<std::uint8_t>(index);
    }
    return slots;
}
inline constexpr auto kRowInSlot = makeSlots();
}  // namespace request_rows

inline RequestTable::Row const* RequestTable::find(std::string_view name)
{
    if (name.empty()) {
        return nullptr;
    }
    std::size_t const index = request_rows::kRowInSlot[request_rows::slotOf(name, request_rows::kFactor)];
    if (index == request_rows::kNoRow || request_rows::kRows[index].name != name) {
        return nullptr;
    }
    return &request_rows::kRows[index];
}
