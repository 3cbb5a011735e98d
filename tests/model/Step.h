// One step of a run: draws the arguments of an operation, notes the effects that the rules expect, carries it out on
// the service, directly or as a text request, and compares.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FakePlatform.h"
#include "Random.h"
#include "Rules.h"
#include "World.h"
#include "src/CommunicationsService.h"
#include "src/CommunicationsServiceInvoker.h"

class Step
{
public:
    using Parameters = std::vector<std::pair<char const*, std::string>>;

    struct Subject
    {
        CommunicationsService& service;
        CommunicationsServiceInvoker& invoker;
        FakeContext& context;
        Kept& kept;
        bool alone;  // no other thread uses the service
    };

    Step(Subject subjectOfRun, World& worldOfThread, Random& randomOfStep)
        : subject(subjectOfRun)
        , world(worldOfThread)
        , random(randomOfStep)
        , rules(worldOfThread, subjectOfRun.kept)
    {}

    CommunicationsService& service() const { return subject.service; }

    // Arguments
    std::string line();
    int callID();
    std::string destination();
    std::string word();
    int key() { return random.below(7); }
    bool flag() { return random.coin(); }

    void expect(std::string what) { rules.expect(std::move(what)); }

    // Carries out an operation that returns a result, directly or by a request of that name.
    void operation(char const* method, Parameters const& parameters, int expected,
                   std::function<int()> const& directly);
    // Carries out an operation and compares its answer.
    void compare(std::string const& expected, std::function<std::string()> const& carriedOut);
    void compare(int expected, std::function<int()> const& carriedOut);
    // Carries out an operation without answer.
    void act(std::function<void()> const& carriedOut);
    // Sends a request and compares its answer; nothing: only the end of the request is expected.
    void request(char const* method, Parameters const& parameters, std::optional<std::string> const& expected);

    // The difference from the rules; empty when there is none.
    std::string verdict(char const* name) const;

    Subject const subject;
    World& world;
    Random& random;
    Rules rules;

private:
    std::string expected_;
    std::string answered_;
};

// An operation of the service with all its paths. The weight says how often it is drawn.
struct Operation
{
    char const* name;
    int weight;
    void (*carryOut)(Step& step);
    bool onlyAlone = false;
};

std::vector<Operation> const& callOperations();
std::vector<Operation> const& settingOperations();
std::vector<Operation> const& keyOperations();
std::vector<Operation> const& queryOperations();
std::vector<Operation> const& lifeOperations();

// The answer word of a result.
std::string resultWord(int result);
