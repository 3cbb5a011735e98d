#include "telephone/http/EventStream.h"

#include <algorithm>
#include <array>
#include <utility>

#include <httplib.h>
#include <poll.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/access/TelephoneControls.h"
#include "telephone/display/ElementWords.h"
#include "telephone/protocol/EventJson.h"
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr std::size_t kEventsAtOnce = 256;
constexpr std::chrono::milliseconds kLongestWait{1000};  // until a reader that has gone is noticed

std::string eventLines(std::uint64_t id, std::string_view name, std::string_view data)
{
    return fmt::format("id: {}\nevent: {}\ndata: {}\n\n", id, name, data);
}

}  // namespace

EventStream::EventStream(std::string name, SessionServices const& services, StreamLimits& limits)
    : place_{limits}
    , session_(std::move(name), services, 1, [this] { came_.signal(); })
{}

Outcome<std::shared_ptr<EventStream>> EventStream::open(std::string name, SessionServices const& services,
                                                        StreamLimits& limits)
{
    if (limits.open.fetch_add(1) >= limits.most) {
        --limits.open;
        return refuse(RefusalKind::kLimit,
                      fmt::format("{} streams are open, which is the most: close one", limits.most));
    }
    auto const close = [](EventStream const* stream) {
        Visit const visit;  // to close its session
        delete stream;
    };
    return std::shared_ptr<EventStream>(new EventStream(std::move(name), services, limits), close);
}

Outcome<> EventStream::select(Words const& events, bool resumes)
{
    std::string result;
    Outcome<> outcome;
    session_.handle(events, [&](Message const& message) {
        if (message.kind == MessageKind::kError) {
            outcome = refuse(RefusalKind::kBadInput, std::string(message.text));
        }
        result = message.text;
    });
    if (!outcome || resumes) {
        return outcome;
    }
    return session_.hello(std::nullopt).map([&](std::string const& hello) {
        // Its id is the number after which the stream begins, so that a reader resumes there.
        auto const after = Json::parse(result).at("after").get<std::uint64_t>();
        beginning_ = eventLines(after, "hello", hello);
    });
}

void EventStream::addWords(bool wanted)
{
    if (wanted) {
        words_ = DisplayOptions{.ownDomain = session_.services().telephone.state().domain};
    }
}

void EventStream::addSteps(bool wanted)
{
    if (wanted) {
        steps_ = std::make_unique<StepQueue>([this] { came_.signal(); });
    }
}

std::string EventStream::dataOf(Message const& message) const
{
    std::string const data = eventJson(message.number, message.time, message.text);
    auto const event = words_ ? readEvent(message.text) : std::nullopt;
    if (!event) {
        return data;
    }
    MessageWords const words = eventWords(*event, *words_).words;
    Json object = Json::parse(data);
    object["words"] = {{"what", words.what}, {"party", words.party}, {"details", words.details}};
    return lineOf(object);
}

std::string EventStream::linesOf(Message const& message) const
{
    std::string_view const kind = kMessageKindNames.at(static_cast<std::size_t>(message.kind));
    if (message.kind == MessageKind::kGap) {
        return fmt::format("event: {}\ndata: {}\n\n", kind, message.text);  // the state behind it has the number
    }
    if (message.kind != MessageKind::kEvent) {
        return eventLines(message.number, kind, message.text);
    }
    auto const event = readEvent(message.text);
    return eventLines(message.number, event ? event->description->method : kind, dataOf(message));
}

bool EventStream::waitForEvents() const
{
    std::array<pollfd, 2> queries{pollfd{place_.limits.end.descriptor(), POLLIN, 0},
                                  pollfd{came_.descriptor(), POLLIN, 0}};
    bool const mayWait = beginning_.empty() && !hasMore_;
    auto const wait = mayWait ? std::min(kLongestWait, place_.limits.silence) : std::chrono::milliseconds(0);
    poll(queries.data(), queries.size(), static_cast<int>(wait.count()));
    return queries[0].revents == 0;
}

bool EventStream::write(httplib::DataSink& sink)
{
    if (!waitForEvents()) {
        sink.done();
        return true;
    }
    came_.clear();
    std::string text = std::exchange(beginning_, {});
    {
        Visit const visit;
        text += steps_ ? steps_->take() : "";  // what causes an event comes before it
        hasMore_ = session_.takeEvents(kEventsAtOnce, [&](Message const& message) { text += linesOf(message); });
    }
    auto const now = std::chrono::steady_clock::now();
    if (text.empty() && now - written_ >= place_.limits.silence) {
        text = ": keep-alive\n\n";
    }
    if (text.empty()) {
        return hasMore_ || sink.is_writable();
    }
    written_ = now;
    return sink.write(text.data(), text.size());
}

}  // namespace telephone
