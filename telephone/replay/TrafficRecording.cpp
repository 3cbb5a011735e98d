#include "telephone/replay/TrafficRecording.h"

#include <utility>

#include "telephone/access/TelephoneControls.h"
#include "telephone/replay/RecordingLines.h"
#include "telephone/replay/RecordingWriter.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

// Events that come during a command are written as all others are.
bool isReply(MessageKind kind)
{
    switch (kind) {
    case MessageKind::kAnswer:
    case MessageKind::kReason:
    case MessageKind::kFinished:
    case MessageKind::kResult:
    case MessageKind::kError:
        return true;
    case MessageKind::kRequest:
    case MessageKind::kEvent:
    case MessageKind::kGap:
    case MessageKind::kState:
        break;
    }
    return false;
}

}  // namespace

TrafficRecording::TrafficRecording(EventHistory& history, TelephoneControls& controls)
    : history_(history)
    , controls_(controls)
{}

TrafficRecording::~TrafficRecording()
{
    static_cast<void>(stop());
}

Outcome<> TrafficRecording::start(std::string const& file)
{
    std::lock_guard const switching(switching_);
    if (on_) {
        return refuse(RefusalKind::kAlreadyExists, "a recording is being written already: record off ends it");
    }
    TelephoneState const state = controls_.state();
    auto opened = RecordingWriter::open(file, history_, state.event);
    if (!opened) {
        return tl::unexpected(opened.error());
    }
    (*opened)->write([state] { return recordingHeader(state); });
    {
        std::lock_guard const lock(mutex_);
        writer_ = *std::move(opened);
    }
    on_ = true;
    listener_ = history_.listen([this] { eventsCame(); });
    eventsCame();
    return {};
}

Outcome<> TrafficRecording::stop()
{
    std::lock_guard const switching(switching_);
    if (!on_.exchange(false)) {
        return refuse(RefusalKind::kWrongState, "nothing is being recorded");
    }
    history_.endListening(listener_);
    std::shared_ptr<RecordingWriter> ended;
    {
        std::lock_guard const lock(mutex_);
        ended = std::exchange(writer_, nullptr);
    }
    ended->writeEvents(history_.latest());
    ended->write([time = wallTime()] { return recordingEnd(time); });
    auto const failure = ended->finish();
    return failure ? Outcome<>(tl::unexpected(*failure)) : Outcome<>();
}

std::shared_ptr<RecordingWriter> TrafficRecording::writer()
{
    std::lock_guard const lock(mutex_);
    return writer_;
}

void TrafficRecording::eventsCame()
{
    if (auto const to = writer()) {
        to->writeEvents(history_.latest());
    }
}

void TrafficRecording::input(SessionInput const& input)
{
    if (auto const to = writer()) {
        to->write([time = wallTime(), session = std::string(input.session), text = std::string(input.text),
                   kind = input.kind, strict = input.strict, reasons = input.reasons] {
            return recordingLine(time, SessionInput{session, kind, text, strict, reasons});
        });
    }
}

void TrafficRecording::reply(std::string_view session, Message const& message)
{
    if (!isReply(message.kind)) {
        return;
    }
    if (auto const to = writer()) {
        to->write(
            [time = wallTime(), session = std::string(session), kind = message.kind, text = std::string(message.text)] {
                return recordingLine(time, session, Message{kind, text});
            });
    }
}

}  // namespace telephone
