#include "telephone/calls/DialogPublisher.h"

#include <algorithm>
#include <utility>

#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Refusals.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone {

namespace {

sip::DialogState stateOf(sfiCallState state, bool established)
{
    if (established) {
        return sip::DialogState::kConfirmed;
    }
    switch (state) {
    case sfiCallStateRemoteRinging:
    case sfiCallStateRinging:
    case sfiCallStateAccepted:
        return sip::DialogState::kEarly;
    case sfiCallStateProceeding:
        return sip::DialogState::kProceeding;
    case sfiCallStateIdle:
    case sfiCallStateDialling:
    case sfiCallStateIncoming:
    case sfiCallStateConnected:
    case sfiCallStateHeld:
    case sfiCallStateRemotelyHeld:
    case sfiCallStateHeldByBoth:
    case sfiCallStateConference:
    case sfiCallStateTransferring:
    case sfiCallStateClearing:
    case sfiCallStateBusy:
    case sfiCallStateFailed:
        break;
    }
    return sip::DialogState::kTrying;
}

sip::DialogEntry entryOf(Call const& call, LineAccount const& line)
{
    CallSnapshot const& now = call.snapshot();
    sip::DialogEntry entry;
    entry.id = std::to_string(now.callID);
    entry.recipient = now.incoming;
    entry.appearance = line.shared ? now.line.appearance : 0;
    entry.exclusive = line.shared && line.isPrivate;
    entry.state = stateOf(now.state, call.isEstablished());
    entry.local.identity = line.account.addressOfRecord();
    entry.local.displayName = line.account.displayName;
    entry.remote.identity = now.remoteURI;
    entry.remote.displayName = now.remoteName;
    if (sip::Session const* session = call.session()) {
        entry.dialog = session->dialogId();
        entry.local.target = session->localContact();
        entry.remote.target = session->remoteContact();
        entry.local.rendering = !now.held;
    }
    return entry;
}

}  // namespace

DialogPublisher::DialogPublisher(sip::EventLoop& loop, CallList const& calls)
    : calls_(calls)
    , timer_(loop)
{}

std::string DialogPublisher::document(Watched& watched) const
{
    sip::DialogInfo info;
    info.version = watched.version++;
    info.entity = watched.line.account.addressOfRecord();
    for (auto const& call : calls_.all()) {
        if (call->line().lineNumber == watched.line.lineNumber) {
            info.dialogs.push_back(entryOf(*call, watched.line));
        }
    }
    return info.format();
}

void DialogPublisher::add(LineAccount const& line, std::unique_ptr<sip::Notifier> notifier)
{
    Watched& watched = watched_[line.lineNumber];
    watched.line = line;
    if (reportIfRefused(kComponent, notifier->accept(sip::kDialogInfoType))) {
        return;
    }
    notifier->onClosed([this, number = line.lineNumber](sip::Notifier& closed) {
        auto& notifiers = watched_[number].notifiers;
        std::erase_if(notifiers, [&closed](auto const& each) { return each.get() == &closed; });
    });
    notifier->onRefreshed([this, number = line.lineNumber] { return document(watched_[number]); });
    watched.notifiers.push_back(std::move(notifier));
    watched.notifiers.back()->notify(document(watched));
}

void DialogPublisher::lineChanged(int lineNumber)
{
    auto const found = watched_.find(lineNumber);
    if (found == watched_.end() || found->second.notifiers.empty()) {
        return;
    }
    changed_.insert(lineNumber);
    timer_.start(std::chrono::milliseconds(0), [this] { publish(); });
}

void DialogPublisher::publish()
{
    for (int const lineNumber : std::exchange(changed_, {})) {
        Watched& watched = watched_[lineNumber];
        std::string const text = document(watched);
        for (auto const& notifier : watched.notifiers) {
            notifier->notify(text);
        }
    }
}

void DialogPublisher::clear()
{
    timer_.cancel();
    changed_.clear();
    watched_.clear();
}

}  // namespace telephone
