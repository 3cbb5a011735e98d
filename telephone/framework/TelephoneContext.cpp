#include "telephone/framework/TelephoneContext.h"

#include "platform/framework/Proxy.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"

namespace telephone {

TelephoneContext::TelephoneContext(EventDispatcher& dispatcher)
    : dispatcher_(dispatcher)
{}

TelephoneContext::~TelephoneContext()
{
    closeAllChannels();
}

void TelephoneContext::closeAllChannels()
{
    std::map<std::string, std::shared_ptr<Channel>> open;
    {
        std::lock_guard const lock(mutex_);
        open = channels_;
    }
    for (auto const& [name, channel] : open) {
        closeChannel(channel);
    }
}

void TelephoneContext::registerExecutable(std::string const& name, Executable* executable)
{
    std::lock_guard const lock(mutex_);
    executables_[name] = executable;
}

void TelephoneContext::setProxyFactory(ProxyFactory factory)
{
    std::lock_guard const lock(mutex_);
    makeProxy_ = std::move(factory);
}

std::shared_ptr<Channel> TelephoneContext::openChannel(std::string const& name, std::size_t queueLimit,
                                                       std::function<void()> wake)
{
    auto channel = std::make_shared<Channel>(name, *this, queueLimit, std::move(wake));
    std::lock_guard const lock(mutex_);
    return channels_.emplace(name, channel).second ? channel : nullptr;
}

void TelephoneContext::closeChannel(std::shared_ptr<Channel> const& channel)
{
    std::unique_ptr<Proxy> proxy;
    {
        std::lock_guard const lock(mutex_);
        channels_.erase(channel->name());
        proxy = std::move(channel->proxy_);
    }
    if (!proxy) {
        return;
    }
    dispatcher_.unsubscribe(proxy.get());
    proxy->shutdown();
}

Executable* TelephoneContext::findExecutable(std::string const& name)
{
    std::lock_guard const lock(mutex_);
    auto const found = executables_.find(name);
    return found == executables_.end() ? nullptr : found->second;
}

Proxy* TelephoneContext::findProxy(std::string const& interfaceName, std::string const& channelName)
{
    std::lock_guard const lock(mutex_);
    auto const found = channels_.find(channelName);
    if (interfaceName != kEventInterface || found == channels_.end() || !makeProxy_) {
        log(kLogWarning, "framework", "no proxy for {} on channel \"{}\"", interfaceName, channelName);
        return nullptr;
    }
    Channel& channel = *found->second;
    if (!channel.proxy_) {
        channel.proxy_ = makeProxy_();
        channel.proxy_->init(*this);
        channel.proxy_->initProxy(channel);
    }
    return channel.proxy_.get();
}

std::string TelephoneContext::findChannel(Executable* executable)
{
    std::lock_guard const lock(mutex_);
    for (auto const& [name, channel] : channels_) {
        if (executable != nullptr && channel->proxy_.get() == executable) {
            return name;
        }
    }
    return {};
}

}  // namespace telephone
