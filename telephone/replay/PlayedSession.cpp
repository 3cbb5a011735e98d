#include "telephone/replay/PlayedSession.h"

#include <algorithm>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Commands.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/base/Names.h"
#include "telephone/base/Version.h"
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/ProtocolCheck.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/replay/InputWords.h"

namespace telephone {

namespace {

constexpr char const* kNotRecorded = "the recording has no such request that is still to come";
constexpr char const* kSubscribe = "Subscribe";

std::string afterJson(std::string const& start, std::uint64_t after)
{
    return lineOf(Json{{"start", start}, {"after", after}});
}

}  // namespace

std::vector<PlayedSession::Own> const& PlayedSession::own()
{
    static std::vector<Own> const kOwn{
        {"describe",
         [](PlayedSession& s, Given& g) { return g[0] ? s.description_.describe(*g[0]) : s.description_.overview(); }},
        {"describe json", [](PlayedSession& s, Given&) -> Answer { return s.description_.json(); }},
        {"events", [](PlayedSession& s, Given& g) { return s.follow(g); }},
        {"events off",
         [](PlayedSession& s, Given&) -> Answer {
             s.selection_.reset();
             return std::string();
         }},
        {"hello", [](PlayedSession& s, Given&) { return s.hello(); }},
        {"help", [](PlayedSession& s,
                    Given& g) { return g[0] ? s.description_.describe(*g[0]) : s.description_.commandList(); }},
        {"quit",
         [](PlayedSession& s, Given&) -> Answer {
             s.telephone_.quit();
             return std::string();
         }},
        {"reasons",
         [](PlayedSession& s, Given& g) -> Answer {
             s.reasons_ = g[0] == "on";
             return std::string();
         }},
        {"say", [](PlayedSession&, Given& g) -> Answer { return g[0].value_or(""); }},
        {"strict",
         [](PlayedSession& s, Given& g) -> Answer {
             s.strict_ = g[0] == "on";
             return std::string();
         }},
    };
    return kOwn;
}

bool isAboutSession(RecordedInput const& input)
{
    std::string const name = inputName(input);
    auto const& own = PlayedSession::own();
    return input.kind == InputKind::kRequest
               ? name == kSubscribe
               : std::any_of(own.begin(), own.end(), [&name](auto const& each) { return each.name == name; });
}

bool isSubscription(RecordedInput const& input)
{
    std::string const name = inputName(input);
    return name == kSubscribe || name == "events";
}

PlayedSession::PlayedSession(std::string name, PlayedTelephone& telephone, std::function<void()> wake)
    : name_(std::move(name))
    , telephone_(telephone)
    , description_(kTelephoneVersion, commandDescriptions())
    , id_(telephone.opened(std::move(wake)))
{}

PlayedSession::~PlayedSession()
{
    telephone_.closed(id_);
}

void PlayedSession::handle(std::string_view text, MessageSink const& sink)
{
    if (isRequestText(text)) {
        return handleRequest(std::string(text), sink);
    }
    auto const words = splitWords(text);
    if (!words) {
        return sink({MessageKind::kError, words.error().reason});
    }
    bool const isRequest = !words->empty() && findCommand(*words) == nullptr && findRequest(words->front()) != nullptr;
    if (!isRequest) {
        return handleCommand(*words, sink);
    }
    auto const request = requestText(*words);
    request ? handleRequest(*request, sink) : sink({MessageKind::kError, request.error().reason});
}

void PlayedSession::handleRequest(std::string const& text, MessageSink const& sink)
{
    if (auto const checked = strict_ ? checkRequest(text) : Outcome<>(); !checked) {
        return sink({MessageKind::kError, checked.error().reason});
    }
    if (requestParts(text).method == kSubscribe) {
        return subscribe(sink);
    }
    std::vector<RecordedReply> const otherwise{{MessageKind::kAnswer, "sfiFailure"},
                                               {MessageKind::kReason, kNotRecorded}};
    replyToRequest(telephone_.answer(text).value_or(otherwise), sink);
}

void PlayedSession::handleCommand(Words const& words, MessageSink const& sink)
{
    Command const* const command = findCommand(words);
    if (command == nullptr) {
        return sink(
            {MessageKind::kError, words.empty() ? "the message is empty" : unknownWord(words.front()).value().reason});
    }
    auto const given = parseArguments(*command, words);
    if (!given) {
        return sink({MessageKind::kError, given.error().reason});
    }
    auto const found =
        std::find_if(own().begin(), own().end(), [command](Own const& each) { return each.name == command->name; });
    if (found != own().end()) {
        auto const answer = found->answer(*this, *given);
        return answer ? sink({MessageKind::kResult, *answer}) : sink({MessageKind::kError, answer.error().reason});
    }
    auto const recorded = telephone_.answer(words);
    recorded ? reply(*recorded, sink)
             : sink({MessageKind::kError, "the recording has no such command that is still to come"});
}

void PlayedSession::reply(std::vector<RecordedReply> const& replies, MessageSink const& sink) const
{
    for (RecordedReply const& each : replies) {
        if (each.kind != MessageKind::kFinished && (each.kind != MessageKind::kReason || reasons_)) {
            sink({each.kind, each.text});
        }
    }
}

void PlayedSession::replyToRequest(std::vector<RecordedReply> const& replies, MessageSink const& sink) const
{
    reply(replies, sink);
    bool const isRefused = std::any_of(replies.begin(), replies.end(),
                                       [](RecordedReply const& each) { return each.kind == MessageKind::kError; });
    if (!isRefused) {
        sink({MessageKind::kFinished, {}});
    }
}

void PlayedSession::subscribe(MessageSink const& sink)
{
    isSubscribed_ = true;
    selection_ = EventSelection{telephone_.latest(), {}, {}};
    telephone_.begin();
    replyToRequest({{MessageKind::kAnswer, "sfiSuccess"}}, sink);
}

// The recording begins to run only when it is known which events the application has not seen.
PlayedSession::Answer PlayedSession::follow(Given& given)
{
    auto names = eventMethods(commaSeparated(given[2].value_or("")));
    if (!names) {
        return tl::unexpected(names.error());
    }
    auto const number = wholeNumber(given[0].value_or("0"));
    if (!number || *number < 0) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not the number of an event", *given[0]));
    }
    std::string const& start = telephone_.recording().start;
    auto const after = given[0] ? static_cast<std::uint64_t>(*number) : telephone_.latest();
    isGap_ = given[1] && *given[1] != start;
    isSubscribed_ = false;
    selection_ = EventSelection{after, *std::move(names), commaSeparated(given[3].value_or(""))};
    telephone_.begin();
    return afterJson(start, isGap_ ? 0 : after);
}

PlayedSession::Answer PlayedSession::hello() const
{
    Recording const& recording = telephone_.recording();
    return lineOf(Json{{"telephone", kTelephoneName},
                       {"version", kTelephoneVersion},
                       {"protocol", kProtocolVersion},
                       {"start", recording.start},
                       {"ready", true},
                       {"domain", recording.domain}});
}

bool PlayedSession::takeEvents(std::size_t most, MessageSink const& sink)
{
    if (!selection_) {
        return false;
    }
    if (std::exchange(isGap_, false)) {
        std::uint64_t const latest = telephone_.latest();
        sink({MessageKind::kGap, lineOf(Json{{"first", 1}, {"last", latest}})});
        sink({MessageKind::kState, telephone_.state(), latest});
        selection_->after = latest;
    }
    auto const events = telephone_.after(selection_->after, most);
    for (PlayedTelephone::Event const& each : events) {
        selection_->after = each.number;
        if (isSubscribed_) {
            sink({MessageKind::kEvent, each.text, ++subscribed_});
        } else if (selects(*selection_, each.text)) {
            sink({MessageKind::kEvent, each.text, each.number, each.time});
        }
    }
    return !events.empty();
}

}  // namespace telephone
