#include "telephone/framework/Channel.h"

#include "platform/framework/Proxy.h"

namespace telephone {

Channel::Channel(std::string name, FrameworkContext& context, std::size_t queueLimit, std::function<void()> wake)
    : name_(std::move(name))
    , context_(context)
    , events_(queueLimit, std::move(wake))
{}

Channel::~Channel() = default;

}  // namespace telephone
