// A telephone for the console's tests. Its controls record their calls; its invoker gives the answers that a test sets.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/TelephoneControls.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/TelephoneContext.h"
#include "tests/unit/framework/FrameworkDoubles.h"

class ControlsDouble : public telephone::TelephoneControls
{
public:
    Rows lines() override { return {"4711 idle"}; }
    Rows calls() override { return {}; }
    Rows keys() override { return {"1 line 4711"}; }
    Rows lamps() override { return {"1 off"}; }
    telephone::Outcome<> press(std::string const& key) override { return note("press " + key); }
    telephone::Outcome<> release(std::string const& key) override { return note("release " + key); }
    telephone::Outcome<> hook(bool up) override { return note(up ? "hook up" : "hook down"); }
    telephone::Outcome<> plug(std::string const& plug, bool in) override
    {
        return note("plug " + plug + (in ? " in" : " out"));
    }
    telephone::Outcome<> record(std::string const& line, bool on) override
    {
        return note((on ? "record on " : "record off ") + line);
    }
    telephone::Outcome<> lock(bool locked) override { return note(locked ? "lock" : "unlock"); }
    std::optional<std::string> lampMode(std::string const& lamp) override
    {
        return lamp == "1" ? std::optional(lampOfKey1) : std::nullopt;
    }
    Rows settings() override { return {"agent-state = ready"}; }
    std::optional<std::string> setting(std::string const& key) override
    {
        return key == "agent-state" ? std::optional<std::string>("ready") : std::nullopt;
    }
    telephone::Outcome<> set(std::string const& key, std::string const& value) override
    {
        return note("set " + key + " " + value);
    }

    std::vector<std::string> asked;
    std::string lampOfKey1 = "off";

private:
    telephone::Outcome<> note(std::string const& text)
    {
        asked.push_back(text);
        if (text == "press 99") {
            return telephone::refuse(telephone::RefusalKind::kNotFound, "no key 99");
        }
        return {};
    }
};

// Subscribes as the service does, and answers every other request by `answer`.
class InvokerDouble : public Invoker
{
public:
    InvokerDouble(telephone::TelephoneContext& context, telephone::EventDispatcher& dispatcher)
        : context_(context)
        , dispatcher_(dispatcher)
    {}

    void handleMessage(Executable*, char const* message, int, InvokerResponse* response) override
    {
        std::string const text = message;
        if (text == "<Method>Subscribe</Method>") {
            auto* const proxy = context_.findProxy("CommunicationsServiceEventIfc", response->channelName());
            send(*response, dispatcher_.subscribe(proxy) ? "sfiSuccess" : "sfiFailure");
        } else {
            requests.push_back(text);
            std::string const words = answer(text);
            if (!words.empty()) {
                send(*response, words);
            }
        }
        response->finish();
    }
    void initInvoker(FrameworkContext*) override {}

    std::function<std::string(std::string const&)> answer = [](std::string const&) { return "sfiSuccess"; };
    std::vector<std::string> requests;

private:
    static void send(InvokerResponse& response, std::string const& words)
    {
        response.sendResponse(words.data(), static_cast<int>(words.size()));
    }

    telephone::TelephoneContext& context_;
    telephone::EventDispatcher& dispatcher_;
};

// A conversation with this telephone, and its transcript.
class TalkingTelephone
{
public:
    TalkingTelephone()
    {
        context.setProxyFactory([] { return std::make_unique<ProxyDouble>(); });
        conversation =
            std::make_unique<telephone::Conversation>("test", context, runner, controls, transcript, stop.descriptor());
    }
    ~TalkingTelephone() { dispatcher.stop(); }

    void held(int callID)
    {
        dispatcher.post([callID](CommunicationsServiceEventIfc& events) { events.callHeld("4711", callID); });
    }

    telephone::EventDispatcher dispatcher;
    telephone::TelephoneContext context{dispatcher};
    InvokerDouble invoker{context, dispatcher};
    ExecutableDouble service;
    telephone::RequestRunner runner{service, invoker};
    ControlsDouble controls;
    std::string written;
    telephone::Transcript transcript{[this](std::string const& line) { written += line + "\n"; }};
    telephone::WakeUp stop;
    std::unique_ptr<telephone::Conversation> conversation;
};
