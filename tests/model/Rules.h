// The rules of the service, written a second time in plain form: for each operation its effects on the platform, in
// order, and its answer. The service is compared with them step by step.
//
// A rule reads the world as it is before the step and changes nothing in it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "World.h"

// The results that the service keeps of its look-ups and its timer.
struct Kept
{
    Registered found;
    bool sipConfig = false;
    int subscriptionTimer = 0;
};

class Rules
{
public:
    using Items = std::vector<std::pair<std::string, std::string>>;

    Rules(World& world, Kept const& kept)
        : world_(world)
        , kept_(kept)
    {}

    std::vector<std::string> const& effects() const { return effects_; }
    void expect(std::string what) { effects_.push_back(std::move(what)); }

    bool hasStore() const { return kept_.found.localMgmt; }
    bool hasLamps() const { return kept_.found.physicalInterface && !kept_.found.wrongClass; }
    bool hasDigitAnalysis() const { return kept_.found.digitAnalysis; }
    bool isKeyset() const { return !world_.keysetType.empty(); }
    Kept const& kept() const { return kept_; }

    // Appearances and admission
    sfiCallInfo record(std::string lineURI, int callID, bool assign);
    bool mayTakeAppearance(std::string const& lineURI);
    bool mayDial(char const* number);
    bool numberFlag(std::string const& number);

    // Settings
    void publishForwarding(int type, bool on, std::string const& destination, int ringCount, bool force);
    void publishDoNotDisturb(std::string const& lineURI, bool on);
    void publishAgentState(std::string const& lineURI, std::string const& state);
    void removeForwarding();
    bool isCurrentUser(std::string const& lineURI) const;
    // The items that remain of data from outside; `refused` when none may be applied.
    Items filtered(Items const& items, bool& refused);
    void apply(Items const& items, bool changed);

    void keyPressed(int function, int key, int action);
    void pressLine(FakeLine* line);
    int lineNumber(std::string const& lineURI) const;

private:
    void write(std::string const& key, std::string const& value);
    void writeForwarding(int type, bool on, std::string const& destination, int ringCount, bool force);
    void take(sfiCallInfo& info, FakeLine& line, int virtualLine, int index, bool assign);

    World& world_;
    Kept const& kept_;
    std::vector<std::string> effects_;
};
