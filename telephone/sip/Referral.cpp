#include "telephone/sip/Referral.h"

#include <algorithm>
#include <charconv>

#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {

namespace {

// "SIP/2.0 180 Ringing" (RFC 3420); status 0 if malformed.
Response parseStatusLine(std::string const& body)
{
    Response response;
    constexpr std::string_view kVersion = "SIP/2.0 ";
    if (!body.starts_with(kVersion)) {
        return response;
    }
    char const* begin = body.data() + kVersion.size();
    auto const [end, error] = std::from_chars(begin, body.data() + body.size(), response.status);
    if (error != std::errc() || response.status < 100 || response.status > 699) {
        return {};
    }
    auto const rest = static_cast<std::size_t>(end - body.data());
    auto const line = std::min(body.find_first_of("\r\n"), body.size());
    if (rest + 1 < line) {
        response.reason = body.substr(rest + 1, line - rest - 1);
    }
    return response;
}

}  // namespace

Referral::Referral(Element& element, Progress progress)
    : element_(element)
    , progress_(std::move(progress))
{}

Outcome<> Referral::start(sip_dialog* dialog, std::string const& contactUser, Ref<Credentials> const& credentials,
                          std::string const& headers)
{
    int const error = sipevent_drefer(subscription_.out(), element_.eventSocket(), dialog, contactUser.c_str(),
                                      answerChallenge, credentials.get(), true, handlerOf<&Referral::onNotify>,
                                      handlerOf<&Referral::onClosed>, this, "%s", headers.c_str());
    running_ = error == 0;
    return sent(error, "REFER");
}

void Referral::onNotify(::sip* /*stack*/, sip_msg const& message)
{
    element_.answer(message, 200, "OK");
    if (!running_) {
        return;
    }
    Response const progress = parseStatusLine(remainingText(message.mb));
    if (progress.status) {
        status_ = progress.status;
    }
    std::string const state = headerValue(message, "Subscription-State");
    bool const terminated = equalsIgnoringCase(std::string_view(state).substr(0, 10), "terminated");
    bool const ended = status_ >= 200 || terminated;
    if (progress.status || ended) {
        report(status_ ? status_ : 503, progress.reason, ended);
    }
}

// The REFER was refused or not answered, or its notifications ended without a final status.
void Referral::onClosed(int error, sip_msg const* message, sipevent_substate const* /*state*/)
{
    if (!running_) {
        return;
    }
    if (message && !message->req) {
        report(message->scode, text(message->reason), true);
    } else {
        report(statusOf(error), errorText(error), true);
    }
}

void Referral::report(int status, std::string const& reason, bool ended)
{
    running_ = !ended;
    auto const progress = progress_;  // may destroy this
    progress(status, reason, ended);
}

}  // namespace telephone::sip
