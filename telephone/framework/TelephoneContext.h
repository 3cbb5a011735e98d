// The context that the loaded service is given: it finds the platform's executables by name, the proxy of a channel by
// interface, and the channel of a proxy. Telephone owns the one context; look-ups come from any thread.
//
//     context.registerExecutable("LocalMgmtIfc", &localMgmt);
//     auto channel = context.openChannel("console", 1000, wake);
//     ... the channel's Subscribe request makes findProxy create its proxy ...
//     context.closeChannel(channel);
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/framework/SvcRTEContext.h"

namespace telephone {

class Channel;
class EventDispatcher;

class TelephoneContext : public SvcRTEContext
{
public:
    using ProxyFactory = std::function<std::unique_ptr<Proxy>()>;

    // The one interface that channels can subscribe to.
    static constexpr char const* kEventInterface = "CommunicationsServiceEventIfc";

    explicit TelephoneContext(EventDispatcher& dispatcher);
    ~TelephoneContext() override;

    // Makes an executable known under a name; a later one of the same name takes its place. The context does not own
    // it.
    void registerExecutable(std::string const& name, Executable* executable);
    // What makes event proxies. Set before the first channel subscribes; without one no proxy is found.
    void setProxyFactory(ProxyFactory factory);

    // Opens an application's channel. Names are the caller's to keep apart; null where the name is taken.
    std::shared_ptr<Channel> openChannel(std::string const& name, std::size_t queueLimit, std::function<void()> wake);
    // Ends its subscription and destroys its proxy. Afterwards no event reaches the channel.
    void closeChannel(std::shared_ptr<Channel> const& channel);

    // Every channel that is still open; before the library that the proxies come from is unloaded.
    void closeAllChannels();

    Executable* findExecutable(std::string const& name) override;
    Proxy* findProxy(std::string const& interfaceName, std::string const& channelName) override;
    std::string findChannel(Executable* executable) override;

private:
    EventDispatcher& dispatcher_;
    std::mutex mutex_;
    std::map<std::string, Executable*> executables_;
    std::map<std::string, std::shared_ptr<Channel>> channels_;
    ProxyFactory makeProxy_;
};

}  // namespace telephone
