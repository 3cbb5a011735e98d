// A telephone for the tests of sessions. Its controls record their calls; its invoker gives the answers that a test
// sets.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "telephone/access/Commands.h"
#include "telephone/access/Session.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/EventHistory.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/TelephoneContext.h"
#include "tests/unit/framework/FrameworkDoubles.h"

class ControlsDouble : public telephone::TelephoneControls
{
public:
    explicit ControlsDouble(telephone::EventDispatcher const& dispatcher)
        : dispatcher_(dispatcher)
    {}

    // `present`, with the number of the latest event.
    telephone::TelephoneState state() override
    {
        telephone::TelephoneState now = present;
        now.event = dispatcher_.posted();
        return now;
    }
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
    telephone::Outcome<> call(std::string const& to, std::string const& from, std::string const& name) override
    {
        return note("call " + to + " from " + from + " name " + name);
    }
    telephone::Outcome<> setMessages(std::string const& number, int fresh, int old) override
    {
        return note("messages " + number + " " + std::to_string(fresh) + " " + std::to_string(old));
    }
    telephone::Outcome<> setRegistrar(std::string const& conduct) override { return note("registrar " + conduct); }
    telephone::Outcome<> defineNumber(std::string const& number, std::string const& steps) override
    {
        return note(number + " does " + steps);
    }
    telephone::Outcome<> playSteps(std::string const& number, std::string const& steps) override
    {
        return note(number + " plays " + steps);
    }
    telephone::Outcome<Rows> exchangeNumbers() override { return Rows{"100 answers", "107 ring 2s, answer"}; }
    telephone::Outcome<> addFault(std::string const& order) override { return note("fault " + order); }
    telephone::Outcome<> endFault(std::string const& name) override { return note("fault off " + name); }
    Rows faults() override { return {"active: store full"}; }
    void watchLamps(std::function<void()> changed) override { lampsChanged = std::move(changed); }
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

    telephone::Outcome<Rows> missingSettings() override { return Rows(); }

    std::vector<std::string> asked;
    std::string lampOfKey1 = "off";
    telephone::TelephoneState present;
    std::function<void()> lampsChanged;

private:
    telephone::Outcome<> note(std::string const& text)
    {
        asked.push_back(text);
        if (text == "press 99") {
            return telephone::refuse(telephone::RefusalKind::kNotFound, "no key 99");
        }
        return {};
    }

    telephone::EventDispatcher const& dispatcher_;
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

// Everything that sessions share.
class TelephoneDouble
{
public:
    explicit TelephoneDouble(std::size_t keptEvents = 100)
        : kept_(keptEvents)
    {
        context.setProxyFactory([] { return std::make_unique<ProxyDouble>(); });
    }
    ~TelephoneDouble() { dispatcher.stop(); }

    telephone::SessionServices services()
    {
        if (!history) {
            history = std::make_unique<telephone::EventHistory>(context, runner, dispatcher, kept_);
        }
        return {context, runner, *history, controls, description, [this] { ++ends; }, nullptr, &readingRate};
    }

    void held(int callID)
    {
        dispatcher.post([callID](CommunicationsServiceEventIfc& events) { events.callHeld("4711", callID); });
    }

    telephone::EventDispatcher dispatcher;
    telephone::TelephoneContext context{dispatcher};
    InvokerDouble invoker{context, dispatcher};
    ExecutableDouble service;
    telephone::RequestRunner runner{service, invoker};
    ControlsDouble controls{dispatcher};
    telephone::ProtocolDescription description{"1.2.3", telephone::commandDescriptions()};
    std::unique_ptr<telephone::EventHistory> history;
    std::atomic<int> readingRate{0};
    int ends = 0;  // how often a session wanted to end the telephone

private:
    std::size_t const kept_;
};
