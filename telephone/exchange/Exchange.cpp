#include "telephone/exchange/Exchange.h"

#include <algorithm>
#include <mutex>

#include "telephone/exchange/ExchangeImpl.h"

namespace telephone::exchange {

Exchange::Exchange(sip::EventLoop& loop, ExchangeConfig config)
{
    std::lock_guard guard(loop);
    impl_ = std::make_shared<Impl>(loop, std::move(config));
}

Exchange::~Exchange()
{
    {
        std::lock_guard guard(impl_->loop_);
        impl_->close();
    }
    // Waits for the farewells, so without the lock.
    impl_->agent_.reset();
}

std::string Exchange::hostPort() const
{
    return impl_->agent_->hostPort();
}

std::uint16_t Exchange::port() const
{
    return impl_->agent_->udpPort();
}

std::uint16_t Exchange::tcpPort() const
{
    return impl_->agent_->tcpPort();
}

void Exchange::setBehaviour(std::string const& number, std::optional<NumberBehaviour> const& behaviour)
{
    std::lock_guard guard(impl_->loop_);
    impl_->setBehaviour(number, behaviour);
}

std::optional<NumberBehaviour> Exchange::behaviourOf(std::string const& number) const
{
    std::lock_guard guard(impl_->loop_);
    NumberBehaviour const* behaviour = impl_->behaviourOf(number);
    return behaviour ? std::optional(*behaviour) : std::nullopt;
}

void Exchange::setMessages(std::string const& number, sip::MessageCounts const& counts, bool unsolicited)
{
    std::lock_guard guard(impl_->loop_);
    impl_->setMessages(number, counts, unsolicited);
}

bool Exchange::isRegistered(std::string const& number) const
{
    return !contactsOf(number).empty();
}

std::vector<std::string> Exchange::contactsOf(std::string const& number) const
{
    std::lock_guard guard(impl_->loop_);
    return impl_->registrar_.contactsOf(number);
}

std::size_t Exchange::callCount() const
{
    std::lock_guard guard(impl_->loop_);
    return static_cast<std::size_t>(
        std::count_if(impl_->calls_.begin(), impl_->calls_.end(), [](auto const& call) { return !call->isEnded(); }));
}

std::size_t Exchange::watcherCount(std::string const& number, std::string const& event) const
{
    std::lock_guard guard(impl_->loop_);
    return (event == sip::kDialogEvent ? impl_->dialogWatchers_ : impl_->messageWatchers_).count(number);
}

bool Exchange::callNumber(std::string const& from, std::string const& to)
{
    std::lock_guard guard(impl_->loop_);
    const std::string target = sip::targetUri(to, hostPort());
    return impl_->callOut(from, target, std::nullopt, {}, nullptr);
}

}  // namespace telephone::exchange
