// A transfer that we request in a dialog (REFER, RFC 3515), and its progress. Owned by the session; used under the
// lock.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "telephone/sip/Element.h"

namespace telephone::sip {

class Referral
{
public:
    // The status of the call that the far end makes, or of the refused REFER. ended: the last report. May destroy the
    // referral.
    using Progress = std::function<void(int status, std::string const& reason, bool ended)>;

    Referral(Element& element, Progress progress);

    // Sends the REFER with these headers.
    [[nodiscard]] Outcome<> start(sip_dialog* dialog, std::string const& contactUser,
                                  Ref<Credentials> const& credentials, std::string const& headers);
    bool isRunning() const { return running_; }

private:
    void onNotify(::sip* stack, sip_msg const& message);
    void onClosed(int error, sip_msg const* message, sipevent_substate const* state);
    void report(int status, std::string const& reason, bool ended);

    Element& element_;
    Progress progress_;
    Ref<sipsub> subscription_;
    int status_ = 0;
    bool running_ = false;
};

}  // namespace telephone::sip
