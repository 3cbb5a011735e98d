#include "telephone/time/Conductor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace telephone {

namespace {

// Virtual time begins where no deadline in the past is below zero.
constexpr SteadyClock::time_point kBeginning{std::chrono::hours(1)};

bool isOver(Party const& party, SteadyClock::time_point now)
{
    return party.wait.deadline <= now || party.hasReadyFile || party.wait.isReady();
}

// An open prompt waits for a person, not for time.
bool wantsTime(Party const& party)
{
    return party.driving > 0 && (party.wait.files.empty() || party.wait.deadline != kNoDeadline);
}

std::string describe(Party const& party, SteadyClock::time_point now)
{
    std::string text = "  " + party.name + " waits for " + party.wait.what;
    if (party.wait.deadline != kNoDeadline) {
        auto const left = std::chrono::duration<double>(party.wait.deadline - now).count();
        text += ", " + std::to_string(left) + " s at most";
    }
    return text + "\n";
}

}  // namespace

thread_local Party* ownParty = nullptr;

Conductor::Conductor(VirtualTime::Settings settings)
    : settings_(settings)
    , numbers_(settings.seed + 1)
    , order_(settings.seed)
    , now_(kBeginning)
    , arrival_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (arrival_ < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    idler_ = std::thread([this] { idle(); });
}

Conductor::~Conductor()
{
    {
        std::lock_guard const lock(mutex_);
        ends_ = true;
        idleTurn_.notify_one();
        eventfd_write(arrival_, 1);
    }
    idler_.join();
    ::close(arrival_);
}

SteadyClock::time_point Conductor::now() const
{
    return now_;
}

std::chrono::system_clock::time_point Conductor::wallTime() const
{
    return settings_.start + std::chrono::duration_cast<std::chrono::system_clock::duration>(now() - kBeginning);
}

void Conductor::begin(Party& party)
{
    std::lock_guard const lock(mutex_);
    running_ = &party;
}

void Conductor::add(Party& party)
{
    waiting_.push_back(&party);
    party.hasReadyFile = false;
    if (!party.wait.files.empty()) {
        mayHaveReadyFiles_ = true;
    }
    if (idles_) {
        eventfd_write(arrival_, 1);
    }
}

void Conductor::admit(Party& party)
{
    static auto always = [] { return true; };
    std::lock_guard const lock(mutex_);
    party.wait = {.what = "its turn", .isReady = ReadyCheck(always)};
    add(party);
}

void Conductor::awaitTurn(Party& party)
{
    std::unique_lock lock(mutex_);
    party.turn.wait(lock, [&] { return running_ == &party; });
}

void Conductor::enter(Party& party)
{
    admit(party);
    awaitTurn(party);
    std::lock_guard const lock(mutex_);
    absent_ -= party.isAbsent ? 1 : 0;
    party.isAbsent = false;
}

void Conductor::leave()
{
    std::lock_guard const lock(mutex_);
    handOver();
}

void Conductor::leaveForAWhile(Party& party)
{
    std::lock_guard const lock(mutex_);
    party.isAbsent = true;
    ++absent_;
    handOver();
}

void Conductor::wait(Party& party, Wait const& wait)
{
    std::unique_lock lock(mutex_);
    party.wait = wait;
    add(party);
    handOver();
    party.turn.wait(lock, [&] { return running_ == &party; });
}

void Conductor::handOver()
{
    running_ = nullptr;
    if (++steps_ > settings_.mostSteps) {
        giveUp("this instant never ends");
    }
    while (!chooseNext()) {
        if (moveTime()) {
            continue;
        }
        if (!waiting_.empty() && absent_ == 0 && awaitedFiles().empty()) {
            giveUp("nothing can happen any more");
        }
        idles_ = true;
        idleTurn_.notify_one();
        return;
    }
}

bool Conductor::chooseNext()
{
    if (mayHaveReadyFiles_) {
        lookAtFiles();
    }
    auto candidates = able(false);
    if (candidates.empty() && lookAtFiles()) {
        candidates = able(false);
    }
    if (candidates.empty()) {
        candidates = able(true);
    }
    if (candidates.empty()) {
        return false;
    }
    auto const chosen = candidates[candidates.size() == 1 ? 0 : order_() % candidates.size()];
    running_ = *chosen;
    waiting_.erase(chosen);
    running_->turn.notify_one();
    return true;
}

// Without a seed only the first is of interest.
std::vector<Conductor::Parties::iterator> Conductor::able(bool isPatient)
{
    std::vector<Parties::iterator> found;
    for (auto party = waiting_.begin(); party != waiting_.end(); ++party) {
        if ((*party)->wait.isPatient == isPatient && isOver(**party, now_)) {
            found.push_back(party);
            if (settings_.seed == 0) {
                break;
            }
        }
    }
    return found;
}

bool Conductor::moveTime()
{
    SteadyClock::time_point first = kNoDeadline;
    bool isWanted = false;
    for (Party const* const party : waiting_) {
        first = std::min(first, party->wait.deadline);
        isWanted = isWanted || wantsTime(*party);
    }
    if (!isWanted || first == kNoDeadline) {
        return false;
    }
    now_ = first;
    steps_ = 0;
    return true;
}

// As long as one is ready, each choice looks again: whoever is chosen may take what another one waits for.
bool Conductor::lookAtFiles()
{
    std::vector<pollfd> files = awaitedFiles();
    mayHaveReadyFiles_ = !files.empty() && ::poll(files.data(), files.size(), 0) > 0;
    auto next = files.begin();
    for (Party* const party : waiting_) {
        auto const end = next + std::ssize(party->wait.files);
        party->hasReadyFile = std::any_of(next, end, [](pollfd const& file) { return file.revents != 0; });
        next = end;
    }
    return mayHaveReadyFiles_;
}

std::vector<pollfd> Conductor::awaitedFiles() const
{
    std::vector<pollfd> files;
    for (Party const* const party : waiting_) {
        files.insert(files.end(), party->wait.files.begin(), party->wait.files.end());
    }
    return files;
}

void Conductor::giveUp(char const* why) const
{
    std::string text = std::string("telephone: virtual time: ") + why + "\n";
    for (Party const* const party : waiting_) {
        text += describe(*party, now_);
    }
    std::fflush(nullptr);
    std::fputs(text.c_str(), stderr);
    std::_Exit(VirtualTime::kStandstill);
}

void Conductor::idle()
{
    std::unique_lock lock(mutex_);
    while (true) {
        idleTurn_.wait(lock, [this] { return ends_ || idles_; });
        if (ends_) {
            return;
        }
        std::vector<pollfd> files = awaitedFiles();
        files.push_back({arrival_, POLLIN, 0});
        lock.unlock();
        ::poll(files.data(), files.size(), -1);
        lock.lock();
        eventfd_t ignored = 0;
        eventfd_read(arrival_, &ignored);
        idles_ = false;
        steps_ = 0;
        handOver();
    }
}

}  // namespace telephone
