// SIP messages in the trace, and what causes them. An answer is caused by the request of its transaction; a request in
// a dialog, if by nothing else, by the first message of the dialog. All user agents of the process share what is known
// of both, because the built-in exchange is a far end in the same process. Used under the lock, while tracing.
#pragma once

#include <string_view>

#include "telephone/sip/Stack.h"
#include "telephone/trace/Trace.h"

namespace telephone::sip {

struct TracedMessage
{
    bool isSent = false;
    sip_transp transport = SIP_TRANSP_NONE;
    sa const& peer;
    std::string_view packet;
};

// A message that is being sent, or that the stack is about to read. Those of the telephone are steps; those of the
// exchange only pass on what has caused them.
void traceMessage(TracedMessage const& message, bool isStep);

}  // namespace telephone::sip
