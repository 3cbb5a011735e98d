#include "telephone/framework/Refusals.h"

#include <exception>
#include <utility>

#include "telephone/framework/Log.h"

namespace telephone {

namespace {
thread_local std::vector<Refusal>* innermost = nullptr;
}

void reportRefusal(std::string_view component, Refusal const& refusal)
{
    logLine(innermost == nullptr ? kLogWarning : kLogInfo, component, refusal.reason);
    if (innermost == nullptr) {
        return;
    }
    try {
        innermost->push_back(refusal);
    } catch (std::exception const& error) {
        logLine(kLogFailure, component, error.what());
    }
}

RefusalCollector::RefusalCollector()
    : outer_(std::exchange(innermost, &refusals_))
{}

RefusalCollector::~RefusalCollector()
{
    innermost = outer_;
}

std::vector<Refusal> RefusalCollector::take()
{
    return std::exchange(refusals_, {});
}

tl::unexpected<Refusal> RefusalCollector::first(Refusal const& otherwise) const
{
    return tl::unexpected<Refusal>(refusals_.empty() ? otherwise : refusals_.front());
}

}  // namespace telephone
