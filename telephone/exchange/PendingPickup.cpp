#include "telephone/exchange/PendingPickup.h"

#include <algorithm>
#include <chrono>

namespace telephone::exchange {

namespace {

// A telephone that reports its calls does so at once.
constexpr std::chrono::milliseconds kSearchTime{1500};

}  // namespace

PendingPickup::PendingPickup(sip::EventLoop& loop, std::unique_ptr<sip::Session> session,
                             std::vector<std::string> numbers, std::function<void(PendingPickup&)> over)
    : session_(std::move(session))
    , numbers_(std::move(numbers))
    , over_(std::move(over))
    , deadline_(loop)
{
    session_->setObserver(this);
    deadline_.start(kSearchTime, [this] { finish(); });
}

PendingPickup::~PendingPickup()
{
    if (session_) {
        session_->reject(480, "Nothing to pick up");
    }
}

bool PendingPickup::isFor(std::string const& number) const
{
    return std::find(numbers_.begin(), numbers_.end(), number) != numbers_.end();
}

std::unique_ptr<sip::Session> PendingPickup::takeSession()
{
    session_->setObserver(nullptr);
    return std::move(session_);
}

void PendingPickup::onClosed(sip::Session&, sip::Closing const&)
{
    finish();
}

void PendingPickup::finish()
{
    auto const over = over_;
    over(*this);
}

}  // namespace telephone::exchange
