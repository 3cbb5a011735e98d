#include "telephone/replay/Replayer.h"

#include <algorithm>
#include <utility>

#include "telephone/access/TelephoneControls.h"
#include "telephone/replay/InputWords.h"
#include "telephone/replay/MessageParts.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 1s;
constexpr std::size_t kQueuedForReplay = 1;  // events of Subscribe; the conversation has them, too

bool neverEnough()
{
    return false;
}

// All replies of a kind, one a line.
std::string textsOf(std::vector<RecordedReply> const& replies, MessageKind kind)
{
    std::string texts;
    for (RecordedReply const& each : replies) {
        texts += each.kind != kind ? "" : (texts.empty() ? "" : "\n") + each.text;
    }
    return texts;
}

bool hasReply(std::vector<RecordedReply> const& replies, MessageKind kind)
{
    return std::any_of(replies.begin(), replies.end(), [kind](RecordedReply const& each) { return each.kind == kind; });
}

}  // namespace

Replayer::Replayer(Conversation& conversation, Recording const& recording, DisplayOptions const& options)
    : conversation_(conversation)
    , recording_(recording)
    , options_(options)
    , ids_(recording.domain, conversation.controls().state().domain)
    , events_(recording, ids_)
    , sent_(Clock::now())
    , recorded_(recording.begin)
{}

Replayer::~Replayer()
{
    conversation_.listen(nullptr);
}

Outcome<> Replayer::play(ReplayReport& report)
{
    // The start of this telephone counts only if that of the recorded one is in the recording.
    if (recording_.ready) {
        conversation_.settle();
    }
    conversation_.listen([this](std::string const& event) { events_.came(event); });
    conversation_.settle();
    sent_ = Clock::now();
    for (std::size_t i = 0; i < recording_.entries.size() && !conversation_.isStopped(); ++i) {
        auto const* const input = std::get_if<RecordedInput>(&recording_.entries[i].what);
        if (input != nullptr && (input->kind == InputKind::kRequest || isReplayed(input->text))) {
            play(i, *input, report);
        }
    }
    rest(sent_ + (recording_.end - recorded_), neverEnough);
    waitForEventsBefore(recording_.entries.size());
    conversation_.settle();
    if (conversation_.isStopped()) {
        return refuse(RefusalKind::kUnavailable, "ended by a signal before the end of the recording");
    }
    events_.compare(report, options_);
    return {};
}

void Replayer::play(std::size_t index, RecordedInput const& input, ReplayReport& report)
{
    RecordedEntry const& entry = recording_.entries[index];
    // The telephone is ready here, while the recorded one may have had to become so.
    bool const isFirst = sessions_.empty() && !recording_.ready;
    rest(isFirst ? sent_ : sent_ + (entry.time - recorded_), neverEnough);
    waitForEventsBefore(index);
    if (conversation_.isStopped()) {
        return;
    }
    sent_ = Clock::now();
    recorded_ = entry.time;
    compare(entry, input, send(input), report);
}

void Replayer::rest(Clock::time_point deadline, std::function<bool()> const& enough)
{
    while (!enough() && !conversation_.isStopped() &&
           (conversation_.waitForEvents(deadline) || Clock::now() < deadline)) {
    }
}

void Replayer::waitForEventsBefore(std::size_t entry)
{
    rest(Clock::now() + kGrace, [this, entry] { return events_.haveComeBefore(entry); });
    events_.giveUpBefore(entry);
}

std::string Replayer::textOf(RecordedInput const& input)
{
    if (input.kind == InputKind::kCommand) {
        return ids_.presented(input.text);
    }
    // What no event has named is an id that the application has chosen.
    MessageParts const recorded = requestParts(input.text);
    ids_.bind(recorded, recorded);
    return telephone::textOf(ids_.presented(recorded));
}

std::vector<RecordedReply> Replayer::send(RecordedInput const& input)
{
    Session& session = sessionOf(input);
    session.options() = {.strict = input.strict, .reasons = input.reasons};
    std::string const text = textOf(input);
    std::vector<RecordedReply> replies;
    session.handle(text, [&replies](Message const& message) {
        if (message.kind != MessageKind::kRequest) {
            replies.push_back({message.kind, std::string(message.text)});
        }
    });
    conversation_.noteActivity();
    return replies;
}

void Replayer::compare(RecordedEntry const& entry, RecordedInput const& input,
                       std::vector<RecordedReply> const& replies, ReplayReport& report) const
{
    std::vector<PartDifference> parts;
    for (MessageKind const kind : {MessageKind::kAnswer, MessageKind::kReason, MessageKind::kError}) {
        std::string const was = ids_.presented(textsOf(input.replies, kind));
        std::string const is = textsOf(replies, kind);
        if (was != is || hasReply(input.replies, kind) != hasReply(replies, kind)) {
            parts.push_back({std::string(kMessageKindNames.at(static_cast<std::size_t>(kind))), was, is});
        }
    }
    if (parts.empty()) {
        return report.addEqual(inputName(input));
    }
    report.add({DifferenceKind::kDifferent, entry.line, inputName(input), inputInWords(input), std::move(parts)});
}

Session& Replayer::sessionOf(RecordedInput const& input)
{
    auto& session = sessions_[input.session];
    if (session == nullptr) {
        session = std::make_unique<Session>("replay of " + input.session, conversation_.session().services(),
                                            kQueuedForReplay, [] {});
    }
    return *session;
}

}  // namespace telephone
