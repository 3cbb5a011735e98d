// An application's session with a recording in place of a telephone. What concerns only the session is answered here;
// everything else by the recording. One thread uses it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "telephone/access/ClientSession.h"
#include "telephone/access/CommandSyntax.h"
#include "telephone/access/EventSubscription.h"
#include "telephone/access/Words.h"
#include "telephone/protocol/ProtocolDescription.h"
#include "telephone/replay/PlayedTelephone.h"

namespace telephone {

// Whether a command or a request concerns the session alone, so that a recording need not have it.
[[nodiscard]] bool isAboutSession(RecordedInput const& input);
// Whether events come after it.
[[nodiscard]] bool isSubscription(RecordedInput const& input);

class PlayedSession : public ClientSession
{
public:
    PlayedSession(std::string name, PlayedTelephone& telephone, std::function<void()> wake);
    ~PlayedSession() override;
    PlayedSession(PlayedSession const&) = delete;
    PlayedSession& operator=(PlayedSession const&) = delete;

    void handle(std::string_view text, MessageSink const& sink) override;
    bool takeEvents(std::size_t most, MessageSink const& sink) override;
    [[nodiscard]] std::uint64_t dropped() const override { return 0; }
    [[nodiscard]] std::string const& name() const override { return name_; }

private:
    using Answer = Outcome<std::string>;
    using Given = Arguments const;
    // A command that the session answers itself.
    struct Own
    {
        std::string_view name;
        Answer (*answer)(PlayedSession&, Given&);
    };
    friend bool isAboutSession(RecordedInput const& input);
    static std::vector<Own> const& own();

    void handleRequest(std::string const& text, MessageSink const& sink);
    void handleCommand(Words const& words, MessageSink const& sink);
    void subscribe(MessageSink const& sink);
    void reply(std::vector<RecordedReply> const& replies, MessageSink const& sink) const;
    // With the end of the request.
    void replyToRequest(std::vector<RecordedReply> const& replies, MessageSink const& sink) const;
    [[nodiscard]] Answer follow(Given& given);
    [[nodiscard]] Answer hello() const;

    std::string const name_;
    PlayedTelephone& telephone_;
    ProtocolDescription const description_;
    PlayedTelephone::SessionId const id_;
    bool reasons_ = false;
    bool strict_ = false;
    bool isGap_ = false;                       // the application knows events of another start
    bool isSubscribed_ = false;                // by Subscribe: events are numbered for this session
    std::uint64_t subscribed_ = 0;             // events that Subscribe has brought
    std::optional<EventSelection> selection_;  // nothing: no events
};

}  // namespace telephone
