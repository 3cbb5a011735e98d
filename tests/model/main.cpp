// Drives the service with random operations against the rules.
//
//   model_test [--steps N] [--seed N] [--threads N]
//
// A run consists of episodes, each with a new service and a new platform. Every step has its own seed, so that a
// failing episode can be shrunk to the few steps that matter: it is repeated with steps left out for as long as it
// still fails. With several threads, each has its own platform and all share the service.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Step.h"

namespace {
constexpr int kStepsOfEpisode = 500;

struct Options
{
    std::uint64_t steps = 100000;
    std::uint64_t seed = 1;
    int threads = 1;
};

std::vector<Operation> allOperations()
{
    std::vector<Operation> all;
    for (auto const* list :
         {&callOperations(), &settingOperations(), &keyOperations(), &queryOperations(), &lifeOperations()}) {
        all.insert(all.end(), list->begin(), list->end());
    }
    return all;
}

Operation const& draw(std::vector<Operation> const& operations, Random& random, bool alone)
{
    int sum = 0;
    for (auto const& operation : operations) {
        sum += operation.onlyAlone && !alone ? 0 : operation.weight;
    }
    int left = random.below(sum);
    for (auto const& operation : operations) {
        left -= operation.onlyAlone && !alone ? 0 : operation.weight;
        if (left < 0) {
            return operation;
        }
    }
    return operations.back();
}

// Runs one step on a service; returns the fault, if any.
std::string carryOut(Step::Subject const& subject, World& world, std::uint64_t seed)
{
    static std::vector<Operation> const kOperations = allOperations();
    Random random(seed);
    auto const& operation = draw(kOperations, random, subject.alone);
    world.drawAnswers(random);
    world.service = &subject.service;
    world.effects.clear();
    world.violations.clear();
    Step step(subject, world, random);
    operation.carryOut(step);
    return step.verdict(operation.name);
}

struct Failure
{
    std::size_t step;
    std::string what;
};

// A new service with every interface registered, so that the pointers it keeps are known.
class Episode
{
public:
    Episode()
    {
        world.enter();
        service = std::make_unique<CommunicationsService>();
        service->init(context);
        invoker.initInvoker(&context);
        kept = {context.registered, true, 4200};
    }

    std::optional<Failure> play(std::vector<std::uint64_t> const& seeds)
    {
        Step::Subject const subject{*service, invoker, context, kept, true};
        for (std::size_t i = 0; i < seeds.size(); ++i) {
            auto what = carryOut(subject, world, seeds[i]);
            if (!what.empty()) {
                return Failure{i, std::move(what)};
            }
        }
        return std::nullopt;
    }

    World world;
    FakeContext context;
    std::unique_ptr<CommunicationsService> service;
    CommunicationsServiceInvoker invoker;
    Kept kept;
};

std::optional<Failure> play(std::vector<std::uint64_t> const& seeds)
{
    Episode episode;
    return episode.play(seeds);
}

// Leaves out smaller and smaller parts of the steps for as long as the episode still fails.
std::vector<std::uint64_t> shrunk(std::vector<std::uint64_t> seeds)
{
    for (std::size_t part = seeds.size() / 2; part > 0; part /= 2) {
        for (std::size_t from = 0; from + part <= seeds.size();) {
            auto fewer = seeds;
            auto const start = fewer.begin() + static_cast<std::ptrdiff_t>(from);
            fewer.erase(start, start + static_cast<std::ptrdiff_t>(part));
            auto const failure = play(fewer);
            if (failure) {
                fewer.resize(failure->step + 1);
                seeds = std::move(fewer);
            } else {
                from += part;
            }
        }
    }
    return seeds;
}

std::vector<std::uint64_t> seedsOf(std::uint64_t seed, std::uint64_t episode, std::uint64_t count)
{
    Random random(seed * 1000003U + episode);
    std::vector<std::uint64_t> seeds(count);
    std::generate(seeds.begin(), seeds.end(), [&random] { return random.next(); });
    return seeds;
}

int runAlone(Options const& options)
{
    std::uint64_t done = 0;
    for (std::uint64_t episode = 0; done < options.steps; ++episode) {
        auto seeds = seedsOf(options.seed, episode, std::min<std::uint64_t>(kStepsOfEpisode, options.steps - done));
        if (auto const failure = play(seeds)) {
            std::cout << "seed " << options.seed << ", episode " << episode << ", step " << failure->step << ": "
                      << failure->what;
            seeds.resize(failure->step + 1);
            auto const fewer = shrunk(seeds);
            std::cout << "shrunk to " << fewer.size() << " steps; the last one: " << play(fewer)->what;
            return 1;
        }
        done += seeds.size();
    }
    std::cout << done << " steps, seed " << options.seed << ": no difference from the rules\n";
    return 0;
}

int runTogether(Options const& options)
{
    Episode shared;
    std::atomic<bool> failed{false};
    std::mutex output;
    auto const share = options.steps / static_cast<std::uint64_t>(options.threads);
    auto const body = [&](int thread) {
        World world;
        world.enter();
        Kept kept = shared.kept;
        Step::Subject const subject{*shared.service, shared.invoker, shared.context, kept, false};
        Random random(options.seed * 1000003U + static_cast<std::uint64_t>(thread));
        for (std::uint64_t step = 0; step < share && !failed; ++step) {
            auto const what = carryOut(subject, world, random.next());
            if (!what.empty()) {
                failed = true;
                std::lock_guard const hold(output);
                std::cout << "seed " << options.seed << ", thread " << thread << ", step " << step << ": " << what;
            }
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < options.threads; ++thread) {
        threads.emplace_back(body, thread);
    }
    for (auto& thread : threads) {
        thread.join();
    }
    if (!failed) {
        std::cout << options.threads << " threads, " << share << " steps each, seed " << options.seed
                  << ": no difference from the rules\n";
    }
    return failed ? 1 : 0;
}

std::optional<Options> read(int count, char** arguments)
{
    Options options;
    for (int i = 1; i + 1 < count; i += 2) {
        auto const value = std::strtoull(arguments[i + 1], nullptr, 10);
        if (std::strcmp(arguments[i], "--steps") == 0) {
            options.steps = value;
        } else if (std::strcmp(arguments[i], "--seed") == 0) {
            options.seed = value;
        } else if (std::strcmp(arguments[i], "--threads") == 0 && value > 0) {
            options.threads = static_cast<int>(value);
        } else {
            return std::nullopt;
        }
    }
    return count % 2 == 1 ? std::optional(options) : std::nullopt;
}
}  // namespace

int main(int count, char** arguments)
{
    auto const options = read(count, arguments);
    if (!options) {
        std::cerr << "usage: model_test [--steps N] [--seed N] [--threads N]\n";
        return 2;
    }
    return options->threads > 1 ? runTogether(*options) : runAlone(*options);
}
