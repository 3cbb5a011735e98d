#include "telephone/calls/SipMeaning.h"

#include <algorithm>
#include <array>

#include "telephone/sip/Uri.h"
#include "telephone/sip/WireText.h"

namespace telephone {

namespace {

struct StatusMeaning
{
    int status;
    Ending ending;
    sfiFeatureFailure featureFailure;
};

// clang-format off
constexpr std::array kStatusMeanings{
    StatusMeaning{401, {sfiCallStateFailed, sfiReasonUnauthorised},  sfiFeatureFailureRefused},
    StatusMeaning{403, {sfiCallStateFailed, sfiReasonRefused},       sfiFeatureFailureRefused},
    StatusMeaning{404, {sfiCallStateFailed, sfiReasonNotFound},      sfiFeatureFailureUnknownTarget},
    StatusMeaning{406, {sfiCallStateFailed, sfiReasonNotAcceptable}, sfiFeatureFailureRefused},
    StatusMeaning{407, {sfiCallStateFailed, sfiReasonUnauthorised},  sfiFeatureFailureRefused},
    StatusMeaning{408, {sfiCallStateFailed, sfiReasonTimeout},       sfiFeatureFailureTimeout},
    StatusMeaning{410, {sfiCallStateFailed, sfiReasonNotFound},      sfiFeatureFailureUnknownTarget},
    StatusMeaning{415, {sfiCallStateFailed, sfiReasonNotAcceptable}, sfiFeatureFailureRefused},
    StatusMeaning{480, {sfiCallStateFailed, sfiReasonUnavailable},   sfiFeatureFailureTimeout},
    StatusMeaning{481, {sfiCallStateFailed, sfiReasonUnavailable},   sfiFeatureFailureNotPossible},
    StatusMeaning{484, {sfiCallStateFailed, sfiReasonNotFound},      sfiFeatureFailureUnknownTarget},
    StatusMeaning{486, {sfiCallStateBusy,   sfiReasonBusy},          sfiFeatureFailureTargetBusy},
    StatusMeaning{487, {sfiCallStateIdle,   sfiReasonCancelled},     sfiFeatureFailureTimeout},
    StatusMeaning{488, {sfiCallStateFailed, sfiReasonNotAcceptable}, sfiFeatureFailureRefused},
    StatusMeaning{491, {sfiCallStateFailed, sfiReasonRefused},       sfiFeatureFailureNotPossible},
    StatusMeaning{600, {sfiCallStateBusy,   sfiReasonBusy},          sfiFeatureFailureTargetBusy},
    StatusMeaning{603, {sfiCallStateFailed, sfiReasonRefused},       sfiFeatureFailureRefused},
    StatusMeaning{604, {sfiCallStateFailed, sfiReasonNotFound},      sfiFeatureFailureUnknownTarget},
    StatusMeaning{606, {sfiCallStateFailed, sfiReasonNotAcceptable}, sfiFeatureFailureRefused},
};

struct CauseMeaning
{
    CSTAEventCause cause;
    StatusLine refusal;
    char const* reasonHeader;
};
constexpr std::array kCauseMeanings{
    CauseMeaning{CSTAEventCauseNone,              {603, "Decline"},                 ""},
    CauseMeaning{CSTAEventCauseNormalClearing,    {603, "Decline"},                 "Q.850;cause=16;text=\"Normal call clearing\""},
    CauseMeaning{CSTAEventCauseBusy,              {486, "Busy Here"},               "Q.850;cause=17;text=\"User busy\""},
    CauseMeaning{CSTAEventCauseCallCancelled,     {603, "Decline"},                 "SIP;cause=487;text=\"Request Terminated\""},
    CauseMeaning{CSTAEventCauseNoAnswer,          {480, "Temporarily Unavailable"}, "Q.850;cause=19;text=\"No answer from user\""},
    CauseMeaning{CSTAEventCauseNetworkCongestion, {503, "Service Unavailable"},     "Q.850;cause=42;text=\"Switching equipment congestion\""},
};

struct RefusalMeaning
{
    sfiRefuseCall reason;
    StatusLine line;
};
constexpr std::array kRefusals{
    RefusalMeaning{sfiRefuseCallBusy,        {486, "Busy Here"}},
    RefusalMeaning{sfiRefuseCallDecline,     {603, "Decline"}},
    RefusalMeaning{sfiRefuseCallUnavailable, {480, "Temporarily Unavailable"}},
    RefusalMeaning{sfiRefuseCallNotFound,    {404, "Not Found"}},
    RefusalMeaning{sfiRefuseCallForbidden,   {403, "Forbidden"}},
};

struct DiversionWord
{
    sfiForwardReason reason;
    char const* word;
};
constexpr std::array kDiversionWords{
    DiversionWord{sfiForwardReasonUnconditional, "unconditional"},
    DiversionWord{sfiForwardReasonBusy,          "user-busy"},
    DiversionWord{sfiForwardReasonNoReply,       "no-answer"},
    DiversionWord{sfiForwardReasonDeflected,     "deflection"},
    DiversionWord{sfiForwardReasonDoNotDisturb,  "do-not-disturb"},
    DiversionWord{sfiForwardReasonUnknown,       "unknown"},
};

struct PriorityWord
{
    char const* word;
    sfiResourcePriority priority;
};
constexpr std::array kPriorityWords{
    PriorityWord{"dsn.routine",        sfiResourcePriorityRoutine},
    PriorityWord{"dsn.priority",       sfiResourcePriorityPriority},
    PriorityWord{"dsn.immediate",      sfiResourcePriorityImmediate},
    PriorityWord{"dsn.flash",          sfiResourcePriorityFlash},
    PriorityWord{"dsn.flash-override", sfiResourcePriorityFlashOverride},
};
// clang-format on

static_assert(std::is_sorted(kStatusMeanings.begin(), kStatusMeanings.end(),
                             [](auto const& left, auto const& right) { return left.status < right.status; }));
static_assert(kCauseMeanings.size() == 6 && kRefusals.size() == 5 && kDiversionWords.size() == 6 &&
              kPriorityWords.size() == 5);

// The row with that value in its field; null: there is none.
template <class Row, std::size_t size, class Field>
Row const* findRow(std::array<Row, size> const& rows, Field Row::*field, Field value)
{
    auto const found = std::ranges::find(rows, value, field);
    return found == rows.end() ? nullptr : &*found;
}

// The row with that word, in any case; null: there is none.
template <class Row, std::size_t size>
Row const* findWord(std::array<Row, size> const& rows, std::string_view word)
{
    auto const found =
        std::ranges::find_if(rows, [word](Row const& row) { return sip::equalsIgnoringCase(row.word, word); });
    return found == rows.end() ? nullptr : &*found;
}

CauseMeaning const& meaningOf(CSTAEventCause cause)
{
    CauseMeaning const* const row = findRow(kCauseMeanings, &CauseMeaning::cause, cause);
    return row == nullptr ? kCauseMeanings.front() : *row;
}

}  // namespace

Ending endingOf(int status)
{
    if (auto const* meaning = findRow(kStatusMeanings, &StatusMeaning::status, status)) {
        return meaning->ending;
    }
    return {sfiCallStateFailed, status >= 500 && status < 600 ? sfiReasonServerFailure : sfiReasonRefused};
}

Ending endingOf(sip::Closing const& closing)
{
    switch (closing.cause) {
    case sip::CloseCause::kRemoteHangUp:
        return {sfiCallStateIdle, sfiReasonNormal};
    case sip::CloseCause::kCancelled:
        return {sfiCallStateIdle, closing.answeredElsewhere() ? sfiReasonAnsweredElsewhere : sfiReasonCancelled};
    case sip::CloseCause::kTimeout:
    case sip::CloseCause::kAbandoned:
        return {sfiCallStateFailed, sfiReasonTimeout};
    case sip::CloseCause::kRejected:
    case sip::CloseCause::kFailed:
        return endingOf(closing.status);
    }
    return {sfiCallStateFailed, sfiReasonServerFailure};
}

sfiFeatureFailure featureFailureOf(int status)
{
    auto const* meaning = findRow(kStatusMeanings, &StatusMeaning::status, status);
    return meaning != nullptr ? meaning->featureFailure : sfiFeatureFailureRefused;
}

sfiRegistrationResult registrationResultOf(int status)
{
    if (status == 401 || status == 403 || status == 407) {
        return sfiRegistrationUnauthorised;
    }
    return status == 408 || status == 503 ? sfiRegistrationNoAnswer : sfiRegistrationRefused;
}

StatusLine statusOf(sfiRefuseCall reason)
{
    auto const* row = findRow(kRefusals, &RefusalMeaning::reason, reason);
    return row == nullptr ? StatusLine{} : row->line;
}

StatusLine statusOf(CSTAEventCause cause)
{
    return meaningOf(cause).refusal;
}

std::string reasonHeaderOf(CSTAEventCause cause)
{
    return meaningOf(cause).reasonHeader;
}

std::string displayUri(sip::NameAddr const& party)
{
    return party.uri.host.empty() && party.uri.user.empty() ? std::string() : party.uri.formatAddressOfRecord();
}

sfiForwardReason forwardReasonOf(std::string_view diversionReason)
{
    auto const* row = findWord(kDiversionWords, diversionReason);
    return row == nullptr ? sfiForwardReasonUnknown : row->reason;
}

char const* diversionReasonOf(sfiForwardReason reason)
{
    auto const* row = findRow(kDiversionWords, &DiversionWord::reason, reason);
    return row == nullptr ? "unknown" : row->word;
}

sfiResourcePriority priorityOf(std::string_view header)
{
    auto const* row = findWord(kPriorityWords, header.substr(0, header.find_first_of(", ;")));
    return row == nullptr ? sfiResourcePriorityNone : row->priority;
}

Preemption preemptionOf(std::string_view reasonHeader)
{
    for (std::string const& reason : sip::splitList(reasonHeader)) {
        // The parameters are written like those of a name-addr.
        auto const end = std::min(reason.find_first_of(" ;"), reason.size());
        auto const parameters =
            sip::NameAddr::parse("<sip:reason>" + reason.substr(std::min(reason.find(';'), reason.size())));
        if (!parameters || !sip::equalsIgnoringCase(reason.substr(0, end), "preemption")) {
            continue;
        }
        std::string const cause = parameters->parameter("cause").value_or("");
        bool const isNamed = cause.size() == 1 && cause[0] >= '1' && cause[0] <= '4';
        std::string text = parameters->parameter("text").value_or("");
        std::erase(text, '"');
        return {isNamed ? static_cast<sfiPreemptionCause>(cause[0] - '0') : sfiPreemptionCauseGeneric, text};
    }
    return {};
}

AlertInformation alertInformationOf(std::string_view header)
{
    AlertInformation information;
    std::size_t const open = header.find('<');
    std::size_t const close = header.find('>', open == std::string_view::npos ? 0 : open);
    if (open != std::string_view::npos && close != std::string_view::npos) {
        information.uri = sip::plainText(header.substr(open + 1, close - open - 1));
    }
    constexpr std::string_view kInfo = "info=";
    std::size_t const info = header.find(kInfo, close == std::string_view::npos ? 0 : close);
    if (info != std::string_view::npos) {
        std::string_view const rest = header.substr(info + kInfo.size());
        information.infoParam = sip::plainText(rest.substr(0, rest.find_first_of(";,")));
    }
    return information;
}

}  // namespace telephone
