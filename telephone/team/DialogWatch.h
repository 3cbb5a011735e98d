// Watches parties by the dialog event package (RFC 4235): one subscription a party, made as one of the telephone's
// lines once that is registered, renewed by the stack, and tried again where it was refused or has ended.
//
// Owned by the composition root; made after the call engine is, ended before it goes. Callbacks come on the event loop
// with the phone lock held.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone {

class CallEngine;

// Puts the documents of one subscription together: whole states and changes, in whatever order they come.
class DialogNotices
{
public:
    enum class Outcome
    {
        kTaken,
        kOld,  // came late or twice
        kNoDocument,
    };

    Outcome take(std::string const& document);
    WatchedParty const& party() const { return party_; }
    // A new subscription begins: its versions have nothing to do with those before.
    void forget();

private:
    std::optional<std::uint32_t> version_;
    std::map<std::string, sip::DialogEntry> dialogs_;
    WatchedParty party_;
};

class DialogWatch final : public PartyWatch, public CallObserver
{
public:
    // How long a subscription that failed waits before it is tried again.
    static constexpr std::chrono::seconds kRetry{30};

    // `lineNumber`: whose account the subscriptions are made with.
    DialogWatch(CallEngine& engine, int lineNumber);
    ~DialogWatch() override;
    DialogWatch(DialogWatch const&) = delete;
    DialogWatch& operator=(DialogWatch const&) = delete;

    // Subscribes at once when started, else when it is.
    void watch(std::string const& number, Listener changed) override;
    // Subscriptions can be sent from now on; those that live are left alone. Comes by itself when the line is
    // registered; for a line that does not register the owner says so.
    void start();
    // Ends all subscriptions; the parties are unknown from now on.
    void stop();

    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;
    void registrationChanged(int lineNumber, bool registered) override;

private:
    class Party;

    CallEngine& engine_;
    int lineNumber_;
    bool started_ = false;
    std::vector<std::unique_ptr<Party>> parties_;
};

}  // namespace telephone
