// What statuses, reasons and headers of SIP mean for events, and the other way round.
#include "telephone/calls/SipMeaning.h"

#include <vector>

#include <gtest/gtest.h>

namespace telephone::test {

namespace {

using Statuses = std::vector<int>;

void expectEndings(Statuses const& statuses, sfiCallState state, sfiReason reason)
{
    for (int const status : statuses) {
        EXPECT_EQ(endingOf(status).state, state) << status;
        EXPECT_EQ(endingOf(status).reason, reason) << status;
    }
}

void expectFailures(Statuses const& statuses, sfiFeatureFailure failure)
{
    for (int const status : statuses) {
        EXPECT_EQ(featureFailureOf(status), failure) << status;
    }
}

void expectResults(Statuses const& statuses, sfiRegistrationResult result)
{
    for (int const status : statuses) {
        EXPECT_EQ(registrationResultOf(status), result) << status;
    }
}

// Each text and what it means.
template <typename Meaning>
void expectMeanings(Meaning (*meaningOf)(std::string_view),
                    std::vector<std::pair<std::string_view, Meaning>> const& meanings)
{
    for (auto const& [text, meaning] : meanings) {
        EXPECT_EQ(meaningOf(text), meaning) << text;
    }
}

sip::Closing closingBy(sip::CloseCause cause, int status = 0, std::string const& reason = {})
{
    sip::Closing closing;
    closing.cause = cause;
    closing.status = status;
    closing.reasonHeader = reason;
    return closing;
}

std::string lineOf(StatusLine const& line)
{
    return std::to_string(line.status) + " " + line.text;
}

std::string alertOf(std::string_view header)
{
    auto const alert = alertInformationOf(header);
    return alert.uri + " | " + alert.infoParam;
}

}  // namespace

TEST(SipMeaning, Refusal_OfACallEndsItWithItsReason)
{
    expectEndings({486, 600}, sfiCallStateBusy, sfiReasonBusy);
    expectEndings({487}, sfiCallStateIdle, sfiReasonCancelled);
    expectEndings({401, 407}, sfiCallStateFailed, sfiReasonUnauthorised);
    expectEndings({404, 410, 484, 604}, sfiCallStateFailed, sfiReasonNotFound);
    expectEndings({406, 415, 488, 606}, sfiCallStateFailed, sfiReasonNotAcceptable);
    expectEndings({408}, sfiCallStateFailed, sfiReasonTimeout);
    expectEndings({480, 481}, sfiCallStateFailed, sfiReasonUnavailable);
    expectEndings({403, 491, 603}, sfiCallStateFailed, sfiReasonRefused);
    expectEndings({302, 402, 499, 601, 699}, sfiCallStateFailed, sfiReasonRefused);
    expectEndings({500, 503, 599}, sfiCallStateFailed, sfiReasonServerFailure);
}

TEST(SipMeaning, EndOfASession_IsThatOfTheCall)
{
    auto const reasonOf = [](sip::Closing const& closing) { return endingOf(closing).reason; };

    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kRemoteHangUp)), sfiReasonNormal);
    EXPECT_EQ(endingOf(closingBy(sip::CloseCause::kRemoteHangUp)).state, sfiCallStateIdle);
    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kCancelled)), sfiReasonCancelled);
    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kCancelled, 0, "SIP;cause=200")), sfiReasonAnsweredElsewhere);
    EXPECT_EQ(endingOf(closingBy(sip::CloseCause::kCancelled)).state, sfiCallStateIdle);
    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kTimeout, 486)), sfiReasonTimeout);
    EXPECT_EQ(endingOf(closingBy(sip::CloseCause::kTimeout, 486)).state, sfiCallStateFailed);
    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kRejected, 486)), sfiReasonBusy);
    EXPECT_EQ(reasonOf(closingBy(sip::CloseCause::kFailed, 488)), sfiReasonNotAcceptable);
}

TEST(SipMeaning, Refusal_OfAFeatureIsItsFailure)
{
    expectFailures({404, 410, 484, 604}, sfiFeatureFailureUnknownTarget);
    expectFailures({408, 480, 487}, sfiFeatureFailureTimeout);
    expectFailures({486, 600}, sfiFeatureFailureTargetBusy);
    expectFailures({481, 491}, sfiFeatureFailureNotPossible);
    expectFailures({401, 403, 406, 407, 415, 488, 603, 606}, sfiFeatureFailureRefused);
    expectFailures({302, 500, 503}, sfiFeatureFailureRefused);
}

TEST(SipMeaning, Refusal_OfARegistrationIsItsResult)
{
    expectResults({401, 403, 407}, sfiRegistrationUnauthorised);
    expectResults({408, 503}, sfiRegistrationNoAnswer);
    expectResults({400, 402, 404, 500, 504}, sfiRegistrationRefused);
}

TEST(SipMeaning, ReasonToRefuse_HasItsStatus)
{
    EXPECT_EQ(lineOf(statusOf(sfiRefuseCallBusy)), "486 Busy Here");
    EXPECT_EQ(lineOf(statusOf(sfiRefuseCallDecline)), "603 Decline");
    EXPECT_EQ(lineOf(statusOf(sfiRefuseCallUnavailable)), "480 Temporarily Unavailable");
    EXPECT_EQ(lineOf(statusOf(sfiRefuseCallNotFound)), "404 Not Found");
    EXPECT_EQ(lineOf(statusOf(sfiRefuseCallForbidden)), "403 Forbidden");
    EXPECT_EQ(statusOf(static_cast<sfiRefuseCall>(-1)).status, 0);
}

TEST(SipMeaning, CauseToClear_HasItsStatus)
{
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseNone)), "603 Decline");
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseNormalClearing)), "603 Decline");
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseBusy)), "486 Busy Here");
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseCallCancelled)), "603 Decline");
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseNoAnswer)), "480 Temporarily Unavailable");
    EXPECT_EQ(lineOf(statusOf(CSTAEventCauseNetworkCongestion)), "503 Service Unavailable");
    EXPECT_EQ(lineOf(statusOf(static_cast<CSTAEventCause>(-1))), "603 Decline");
}

TEST(SipMeaning, CauseToClear_HasItsReasonHeader)
{
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseNone), "");
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseNormalClearing), "Q.850;cause=16;text=\"Normal call clearing\"");
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseBusy), "Q.850;cause=17;text=\"User busy\"");
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseCallCancelled), "SIP;cause=487;text=\"Request Terminated\"");
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseNoAnswer), "Q.850;cause=19;text=\"No answer from user\"");
    EXPECT_EQ(reasonHeaderOf(CSTAEventCauseNetworkCongestion),
              "Q.850;cause=42;text=\"Switching equipment congestion\"");
}

TEST(SipMeaning, Party_IsShownByItsAddress)
{
    EXPECT_EQ(displayUri(*sip::NameAddr::parse("\"Al\" <sip:al@h:5061;x=y>")), "sip:al@h:5061");
    EXPECT_EQ(displayUri(*sip::NameAddr::parse("<sip:h>")), "sip:h");
    EXPECT_EQ(displayUri(*sip::NameAddr::parse("<tel:4711>")), "tel:4711");
    EXPECT_EQ(displayUri({}), "");
}

TEST(SipMeaning, WordsOfADiversion_AreReadInAnyCaseAndWritten)
{
    expectMeanings<sfiForwardReason>(forwardReasonOf, {{"unconditional", sfiForwardReasonUnconditional},
                                                       {"USER-BUSY", sfiForwardReasonBusy},
                                                       {"no-answer", sfiForwardReasonNoReply},
                                                       {"deflection", sfiForwardReasonDeflected},
                                                       {"do-not-disturb", sfiForwardReasonDoNotDisturb},
                                                       {"unknown", sfiForwardReasonUnknown},
                                                       {"time-of-day", sfiForwardReasonUnknown}});
    EXPECT_STREQ(diversionReasonOf(sfiForwardReasonUnconditional), "unconditional");
    EXPECT_STREQ(diversionReasonOf(sfiForwardReasonBusy), "user-busy");
    EXPECT_STREQ(diversionReasonOf(sfiForwardReasonNoReply), "no-answer");
    EXPECT_STREQ(diversionReasonOf(sfiForwardReasonDeflected), "deflection");
    EXPECT_STREQ(diversionReasonOf(sfiForwardReasonDoNotDisturb), "do-not-disturb");
    EXPECT_STREQ(diversionReasonOf(static_cast<sfiForwardReason>(-1)), "unknown");
}

TEST(SipMeaning, Priority_IsTheFirstWordOfItsHeader)
{
    expectMeanings<sfiResourcePriority>(priorityOf, {{"dsn.routine", sfiResourcePriorityRoutine},
                                                     {"dsn.priority, wps.0", sfiResourcePriorityPriority},
                                                     {"DSN.immediate;x", sfiResourcePriorityImmediate},
                                                     {"dsn.flash", sfiResourcePriorityFlash},
                                                     {"dsn.flash-override", sfiResourcePriorityFlashOverride},
                                                     {"wps.0", sfiResourcePriorityNone},
                                                     {"", sfiResourcePriorityNone}});
}

TEST(SipMeaning, AlertInformation_HasItsUriAndItsParameter)
{
    EXPECT_EQ(alertOf("<http://bell>;info=alert-internal"), "http://bell | alert-internal");
    EXPECT_EQ(alertOf("<http://bell>;x=y;info=a;b=c"), "http://bell | a");
    EXPECT_EQ(alertOf("<http://bell>;info=a, <http://other>;info=b"), "http://bell | a");
    EXPECT_EQ(alertOf("<http://bell;info=inside>"), "http://bell;info=inside | ");
    EXPECT_EQ(alertOf("info=a"), " | a");
    EXPECT_EQ(alertOf("<http://bell"), " | ");
    EXPECT_EQ(alertOf(""), " | ");
}

}  // namespace telephone::test
