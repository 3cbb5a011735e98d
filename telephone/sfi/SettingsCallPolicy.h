// The rules for incoming calls as the settings and the lines have them. The composition root makes it before the call
// engine, to which it is the CallPolicy.
//
// The forwarding rules of the configuration store are those of the telephone's present user (on a keyset one line, else
// the only one); every other line has the rules that were set on it.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "telephone/calls/CallPolicy.h"
#include "telephone/calls/LineDirectory.h"

namespace telephone {

class Settings;
struct Configuration;

class SettingsCallPolicy final : public CallPolicy
{
public:
    // Settings and lines outlive it.
    SettingsCallPolicy(Settings const& settings, LineDirectory const& lines, Configuration const& configuration);

    bool forwardsHere() const override;
    ForwardingRule forwarding(int lineNumber, sfiForwardingType type) const override;
    int ringsBeforeNoReply() const override;
    bool doNotDisturb(int lineNumber) const override;

    // Line number 0 is the whole telephone: switching it off ends what single lines have, too. Any thread.
    void setDoNotDisturb(int lineNumber, bool on);

private:
    bool isUsersLine(std::string const& lineURI) const;

    Settings const& settings_;
    LineDirectory const& lines_;
    const std::string ownLine_;
    mutable std::mutex mutex_;
    std::map<int, bool> doNotDisturb_;  // by line number
};

}  // namespace telephone
