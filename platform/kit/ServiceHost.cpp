#include "platform/kit/ServiceHost.h"

#include <stdexcept>
#include <utility>

#include "platform/framework/Logging.h"
#include "platform/kit/Check.h"
#include "platform/kit/CollectedAnswer.h"
#include "platform/sfi/CSfi.h"

namespace {

constexpr char const* kEventInterface = "CommunicationsServiceEventIfc";

}  // namespace

kit::ServiceHost::ServiceHost(std::string const& library)
    : library_(library)
    , service_(library_.createService())
    , invoker_(library_.createInvoker())
{}

kit::ServiceHost::~ServiceHost()
{
    // Without call control, shutdown would crash.
    if (started_ && CSfi::GetInstance() != nullptr) {
        service_->shutdown();
    }
}

void kit::ServiceHost::provide(std::string const& name, Executable& executable)
{
    std::lock_guard const hold(mutex_);
    executables_[name] = &executable;
}

void kit::ServiceHost::receive(std::string const& channel, EventChannel::Receiver receiver)
{
    std::lock_guard const hold(mutex_);
    receivers_[channel] = std::move(receiver);
}

void kit::ServiceHost::start()
{
    std::string fatal;
    for (Finding const& finding : check(*this)) {
        if (finding.collaborator.whenNull == WhenNull::initCrashes) {
            fatal += (fatal.empty() ? "" : "; ") + describe(finding);
        } else {
            logAppUni("Porting kit", finding.collaborator.header, kLogFailure, 0, "%s", describe(finding).c_str());
        }
    }
    if (!fatal.empty()) {
        throw std::runtime_error(fatal);
    }
    started_ = true;
    service_->init(*this);
    invoker_->initInvoker(this);
}

std::string kit::ServiceHost::request(std::string const& channel, std::string const& text)
{
    CollectedAnswer answer(channel);
    invoker_->handleMessage(service_.get(), text.c_str(), static_cast<int>(text.size()), &answer);
    return answer.text();
}

Proxy* kit::ServiceHost::findProxy(std::string const& interfaceName, std::string const& channelName)
{
    std::lock_guard const hold(mutex_);
    auto const receiver = receivers_.find(channelName);
    if (interfaceName != kEventInterface || receiver == receivers_.end()) {
        return nullptr;
    }
    auto& channel = channels_[channelName];
    if (channel == nullptr) {
        channel = std::make_unique<EventChannel>(*this, library_.createEventProxy(), receiver->second);
    }
    return &channel->proxy();
}

Executable* kit::ServiceHost::findExecutable(std::string const& name)
{
    std::lock_guard const hold(mutex_);
    auto const found = executables_.find(name);
    return found == executables_.end() ? nullptr : found->second;
}
