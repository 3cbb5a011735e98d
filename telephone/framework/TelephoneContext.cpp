#include "telephone/framework/TelephoneContext.h"

#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/framework/Proxy.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Refusals.h"

namespace telephone {

TelephoneContext::TelephoneContext(EventDispatcher& dispatcher)
    : dispatcher_(dispatcher)
{}

TelephoneContext::~TelephoneContext()
{
    closeAllChannels();
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
    return channels_.emplace(name, OpenChannel{channel, nullptr}).second ? channel : nullptr;
}

void TelephoneContext::closeChannel(std::shared_ptr<Channel> const& channel)
{
    std::unique_lock lock(mutex_);
    auto const closed = channels_.extract(channel->name());
    lock.unlock();
    if (closed) {
        end(closed.mapped().proxy.get());
    }
}

void TelephoneContext::closeAllChannels()
{
    std::unique_lock lock(mutex_);
    auto const closed = std::exchange(channels_, {});
    lock.unlock();
    for (auto const& [name, open] : closed) {
        end(open.proxy.get());
    }
}

void TelephoneContext::end(Proxy* proxy)
{
    if (proxy != nullptr) {
        dispatcher_.unsubscribe(proxy);
        proxy->shutdown();
    }
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
        reportRefusal("framework", {RefusalKind::kNotFound,
                                    fmt::format("channel \"{}\" has no proxy for {}", channelName, interfaceName)});
        return nullptr;
    }
    auto& [channel, proxy] = found->second;
    if (!proxy) {
        proxy = makeProxy_();
        proxy->init(*this);
        proxy->initProxy(*channel);
    }
    return proxy.get();
}

std::string TelephoneContext::findChannel(Executable* executable)
{
    std::lock_guard const lock(mutex_);
    for (auto const& [name, open] : channels_) {
        if (executable != nullptr && open.proxy.get() == executable) {
            return name;
        }
    }
    return {};
}

}  // namespace telephone
