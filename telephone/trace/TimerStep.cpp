#include "telephone/trace/TimerStep.h"

#include "telephone/trace/Trace.h"

namespace telephone {

void timerRanOut(PhoneTimer timer)
{
    touch(timer);
    TraceScope::replace(traceStep(
        "timer", [timer](TraceStep& step) { step.add("name", kPhoneTimerNames[static_cast<std::size_t>(timer)]); }));
}

}  // namespace telephone
