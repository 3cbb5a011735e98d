// Makes refusals known: each is logged once, here, and kept for the submitter of the request that met it.
//
// An operation that refuses returns its Refusal. Where that would become a bare number or nothing at all (the
// platform's operations, keys, timers), the caller reports it. The runner of requests collects what its thread reports
// while a request runs, so they are mere information in the log; refusals on other threads are warnings there.
#pragma once

#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"

namespace telephone {

// Any thread. Never throws.
void reportRefusal(std::string_view component, Refusal const& refusal);

// True when the outcome is a refusal, which is then reported.
template <typename Value>
bool reportIfRefused(std::string_view component, Outcome<Value> const& outcome)
{
    if (!outcome) {
        reportRefusal(component, outcome.error());
    }
    return !outcome;
}

// Collects the refusals that its thread reports, from its construction to its destruction. Collectors nest: the
// innermost one collects.
class RefusalCollector
{
public:
    RefusalCollector();
    ~RefusalCollector();
    RefusalCollector(RefusalCollector const&) = delete;
    RefusalCollector& operator=(RefusalCollector const&) = delete;

    // In the order in which they were reported; the collector is empty afterwards.
    std::vector<Refusal> take();
    // The first one reported, else the one given: the reason of an operation that answered a bare failure.
    [[nodiscard]] tl::unexpected<Refusal> first(Refusal const& otherwise) const;

private:
    std::vector<Refusal> refusals_;
    std::vector<Refusal>* outer_;  // of the collector around this one
};

}  // namespace telephone
