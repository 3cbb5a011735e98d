#include "telephone/faults/FaultOrder.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr std::ptrdiff_t kWordsInName = 2;
constexpr std::uint64_t kMostRequests = 1'000'000;

Outcome<> wrongOrder(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

// --- when

Outcome<std::chrono::milliseconds> oneDuration(Words const& words)
{
    if (words.size() != 1) {
        return refuse(RefusalKind::kBadInput, "write a number of seconds");
    }
    return durationOf(words[0]);
}

Outcome<> readAt(FaultOrder& order, Words const& words)
{
    return oneDuration(words).map([&order](std::chrono::milliseconds at) { order.at = at; });
}

Outcome<> readFor(FaultOrder& order, Words const& words)
{
    return oneDuration(words).map([&order](std::chrono::milliseconds lasts) { order.lasts = lasts; });
}

Outcome<> readOn(FaultOrder& order, Words const& words)
{
    // A value of several words needs no quotes, which are lost in the rest of a command.
    Words joined;
    for (std::string const& word : words) {
        bool const continues = joined.size() > 1 && word.find('=') == std::string::npos;
        if (continues) {
            joined.back() += " " + word;
        } else {
            joined.push_back(word);
        }
    }
    return EventPattern::parse(joined, 0).map([&order](EventPattern const& pattern) { order.on = pattern; });
}

Outcome<> readAfter(FaultOrder& order, Words const& words)
{
    bool const isCounted = words.size() == 2 && (words[1] == "requests" || words[1] == "request");
    if (!isCounted) {
        return wrongOrder("write a number of requests: after 5 requests");
    }
    return numberOf(words[0], 1, kMostRequests).map([&order](std::uint64_t count) {
        order.afterRequests = static_cast<int>(count);
    });
}

struct Clause
{
    std::string_view word;
    Outcome<> (*read)(FaultOrder& order, Words const& words);
};

constexpr std::array kClauses{
    Clause{"at", readAt},
    Clause{"on", readOn},
    Clause{"after", readAfter},
    Clause{"for", readFor},
};

Clause const* clauseOf(std::string_view word)
{
    auto const found = std::ranges::find(kClauses, word, &Clause::word);
    return found == kClauses.end() ? nullptr : &*found;
}

Outcome<> readClause(FaultOrder& order, Clause const& clause, Words const& words)
{
    return clause.read(order, words).map_error([&clause](Refusal const& refusal) {
        return Refusal{refusal.kind, fmt::format("{}: {}", clause.word, refusal.reason)};
    });
}

Outcome<> checkMoments(FaultOrder const& order)
{
    int const moments = (order.at ? 1 : 0) + (order.on ? 1 : 0) + (order.afterRequests > 0 ? 1 : 0);
    return moments <= 1 ? Outcome<>() : wrongOrder("a fault begins at one moment: at, on or after");
}

// --- what

Outcome<FaultKind const*> kindNamed(Words const& words)
{
    auto const name = joinWords({words.begin(), words.begin() + std::min(std::ssize(words), kWordsInName)});
    FaultKind const* const kind = findFaultKind(name);
    auto const names = namesOf(faultKinds(), &FaultKind::name);
    if (kind == nullptr) {
        return refuse(RefusalKind::kNotFound, fmt::format("no fault \"{}\"{}; there are {}", name,
                                                          suggestion(name, names), fmt::join(names, ", ")));
    }
    if (kind->isVirtualOnly && !isVirtual()) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("{} needs the network of virtual time: start with --time virtual", kind->name));
    }
    return kind;
}

Outcome<> readWhat(FaultOrder& order, Words const& words, FaultTargets const& targets)
{
    return kindNamed(words).and_then([&](FaultKind const* kind) -> Outcome<> {
        order.kind = kind;
        auto const arguments = CommandSyntax(kind->arguments).parse(words, kWordsInName);
        if (!arguments) {
            return wrongOrder(fmt::format("{}; write it as: {}", arguments.error().reason, usageOf(*kind)));
        }
        return kind->prepare(targets, *arguments).map([&order](FaultEffect effect) {
            order.effect = std::move(effect);
        });
    });
}

// The words up to the next clause, from `first` on.
Words wordsUpToClause(Words const& words, std::size_t first)
{
    auto const begin = words.begin() + static_cast<std::ptrdiff_t>(first);
    return {begin, std::find_if(begin, words.end(), [](std::string const& each) { return clauseOf(each) != nullptr; })};
}

Outcome<> readWords(FaultOrder& order, Words const& words, FaultTargets const& targets)
{
    Words const what = wordsUpToClause(words, 0);
    auto outcome = readWhat(order, what, targets);
    std::vector<Clause const*> given;
    for (std::size_t i = what.size(); outcome && i < words.size();) {
        Clause const* const clause = clauseOf(words[i]);
        if (std::ranges::find(given, clause) != given.end()) {
            return wrongOrder(fmt::format("\"{}\" is given twice", clause->word));
        }
        given.push_back(clause);
        Words const values = wordsUpToClause(words, i + 1);
        outcome = readClause(order, *clause, values);
        i += 1 + values.size();
    }
    return outcome.and_then([&] { return checkMoments(order); });
}

}  // namespace

Outcome<FaultOrder> FaultOrder::read(std::string const& text, FaultTargets const& targets)
{
    FaultOrder order;
    order.text = text;
    return splitWords(text)
        .and_then([&](Words const& words) { return readWords(order, words, targets); })
        .map([&order] { return std::move(order); });
}

Outcome<FaultOrder> FaultOrder::of(FaultConfiguration const& configured, FaultTargets const& targets)
{
    FaultOrder order;
    order.text = configured.what;
    auto const named = [](Refusal const& refusal) { return Refusal{refusal.kind, "fault." + refusal.reason}; };
    auto outcome = splitWords(configured.what)
                       .and_then([&](Words const& words) { return readWhat(order, words, targets); })
                       .map_error([](Refusal const& refusal) {
                           return Refusal{refusal.kind, "what: " + refusal.reason};
                       });
    auto const after = configured.after == 0 ? std::string() : fmt::format("{} requests", configured.after);
    std::array<std::string, kClauses.size()> const values{configured.at, configured.on, after, configured.lasts};
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (outcome && !values.at(i).empty()) {
            outcome = splitWords(values.at(i)).and_then([&](Words const& words) {
                return readClause(order, kClauses.at(i), words);
            });
            order.text += fmt::format(" {} {}", kClauses.at(i).word, values.at(i));
        }
    }
    return outcome.map_error(named).and_then([&] { return checkMoments(order); }).map([&order] {
        return std::move(order);
    });
}

}  // namespace telephone
