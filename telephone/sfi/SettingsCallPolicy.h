// The rules for incoming calls from the settings. The composition root makes it before the call engine, which uses it
// as its CallPolicy.
//
// The telephone's forwarding settings apply to the line of its present user, or without one to the primary line. Every
// other line has the rules that were set on it, and with its no-reply rule its own number of rings.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/lines/Line.h"
#include "telephone/calls/CallPolicy.h"
#include "telephone/lines/LineTable.h"

namespace telephone {

class Settings;

class SettingsCallPolicy final : public CallPolicy
{
public:
    // Settings and lines outlive it.
    SettingsCallPolicy(Settings& settings, LineTable const& lines);

    bool forwardsHere() const override;
    ForwardingRule forwarding(int lineNumber, sfiForwardingType type) const override;
    int ringsBeforeNoReply(int lineNumber) const override;
    bool doNotDisturb(int lineNumber) const override;

    // Line number 0 is the whole telephone, whose change ends the state of each line. Any thread.
    void setDoNotDisturb(int lineNumber, bool on);

private:
    bool isUsersLine(std::string const& lineURI) const;
    Line::serverFeaturesSettings featuresOf(LineAddress const& place) const;
    // The rule that was set on a line which is not the user's; nothing if none was.
    std::optional<Line::singleCFSetting> ownRule(LineAddress const& place, sfiForwardingType type) const;

    Settings& settings_;
    LineTable const& lines_;
    mutable std::mutex mutex_;
    std::map<int, bool> doNotDisturb_;  // by line number
};

}  // namespace telephone
