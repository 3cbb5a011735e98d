// The framework context of the loaded service: looks up the platform's executables by name, the proxy of a channel by
// interface, and the channel of a proxy. Telephone owns the one context; any thread may look up.
//
//     context.registerExecutable("LocalMgmtIfc", &localMgmt);
//     auto channel = context.openChannel("console", 1000, wake);
//     ... the channel's Subscribe request calls findProxy, which creates its proxy ...
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

    // The only interface that channels can subscribe to.
    static constexpr char const* kEventInterface = "CommunicationsServiceEventIfc";

    explicit TelephoneContext(EventDispatcher& dispatcher);
    ~TelephoneContext() override;

    // Registers an executable, which the context does not own. A later one of the same name replaces it.
    void registerExecutable(std::string const& name, Executable* executable);
    // Sets the factory of event proxies, before the first subscription. Without one, findProxy returns null.
    void setProxyFactory(ProxyFactory factory);

    // Opens an application's channel; null if the name is in use. Its first subscription creates its proxy.
    std::shared_ptr<Channel> openChannel(std::string const& name, std::size_t queueLimit, std::function<void()> wake);
    // Ends the subscription and destroys the proxy. No event reaches the channel afterwards.
    void closeChannel(std::shared_ptr<Channel> const& channel);
    // Closes all open channels. Called before the library that made the proxies is unloaded.
    void closeAllChannels();

    Executable* findExecutable(std::string const& name) override;
    Proxy* findProxy(std::string const& interfaceName, std::string const& channelName) override;
    std::string findChannel(Executable* executable) override;

private:
    struct OpenChannel
    {
        std::shared_ptr<Channel> channel;
        std::unique_ptr<Proxy> proxy;  // null before the first subscription
    };

    void end(Proxy* proxy);

    EventDispatcher& dispatcher_;
    std::mutex mutex_;
    std::map<std::string, Executable*> executables_;
    std::map<std::string, OpenChannel> channels_;
    ProxyFactory makeProxy_;
};

}  // namespace telephone
