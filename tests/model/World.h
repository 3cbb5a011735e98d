// The platform as one thread of a run sees it: the answers of its collaborators, and what the service did to them.
//
// Each thread has its own world, so that the effects of its operations follow from that world alone; only the service
// object and its locks are shared. Nothing here waits for another thread.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Random.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/physical/PhysDefs.h"
#include "platform/sfi/SfiTypes.h"

class MgmtAgentIfc;

// One line, its key and its configuration.
class FakeLine final : public Line, public LineData
{
public:
    FakeLine(std::string lineURI, unsigned char lineNumber)
        : uri(std::move(lineURI))
        , number(lineNumber)
    {}

    void keyPressed() override;
    void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) override;
    ELineState getLineState() override { return state; }
    unsigned char getLineID() override { return number; }
    sfiResult retrieve() override;
    LineData* getLineData() override { return hasData ? this : nullptr; }
    std::string getLastNotifyRemoteURI() override { return "remote of " + uri; }
    int getChildBCALineIdReservedForConsultationCall() override { return reservedForConsultation; }
    void getServerFeaturesSettings(serverFeaturesSettings& settings) override { settings = serverSettings; }
    void setDNDConfiguration(bool on) override;
    void setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                    int ringCount) override;
    void setMissedCallIndicated(bool indicated) override;

    std::string getURI() override { return uri; }
    int getPrimary() override { return primary; }
    std::string getShortDescription() override { return "description of " + uri; }
    int getRing() override { return number + 1; }
    int getRingDelay() override { return number + 2; }
    int getOverviewPosition() override { return number + 3; }
    bool getVisibleOnOverview() override { return primary != 0; }
    int getLineAudibleAlert() override { return number + 4; }
    std::string getHotWarmDigits() override { return hotWarmDigits; }
    int getHotWarmType() override { return hotWarmType; }
    int getSharedLineType() override { return sharedLineType; }
    bool getDSSMonitorOnly() override { return monitorOnly; }
    void setHotWarmLineManual(bool manual) override;

    std::string uri;
    unsigned char number;
    ELineState state = eLineStateIdle;
    bool hasData = true;
    int primary = 1;
    int reservedForConsultation = 0;
    int sharedLineType = 0;
    int hotWarmType = 0;
    std::string hotWarmDigits;
    bool monitorOnly = false;
    serverFeaturesSettings serverSettings;
};

// The interfaces that the service finds by name. Changed only by init.
struct Registered
{
    bool auditoryDevice = true;
    bool physicalInterface = true;
    bool localMgmt = true;
    bool certificateMgmt = true;
    bool digitAnalysis = true;
    bool wrongClass = false;  // the registered physical interface is another class
    bool callControl = true;
};

class World
{
public:
    World();

    // The calling thread's world.
    static World& current();
    // Makes this world the calling thread's.
    void enter();

    // Changes one thing of the platform.
    void change(Random& random);
    // Draws the answers of the collaborators until the next draw.
    void drawAnswers(Random& random);

    // Records what the service does, to be compared with the rules.
    void effect(std::string what) { effects.push_back(std::move(what)); }
    // A rule that must hold everywhere was broken.
    void violation(std::string what) { violations.push_back(std::move(what)); }

    FakeLine* line(std::string const& uri);
    FakeLine* lineInState(ELineState state, std::string const& baseURI);
    // The index that the mapper assigns to a call: the given one, or its own choice.
    int chosenAppearance(int lineNumber, int index) const;

    // Locks that the thread holds.
    int callControlDepth = 0;
    bool teamServiceLockHeld = false;
    bool publicationLockHeld = false;

    std::vector<std::string> effects;
    std::vector<std::string> violations;

    // Answers of the current step: every result, truth value, number and text of the platform.
    sfiResult answer = sfiSuccess;
    bool yes = true;
    bool secondYes = true;
    int number = 0;
    int storeAnswer = 1;
    int applyAnswer = 1;
    int freeVirtualLine = 1;
    std::string numberFlag = "false";
    bool storeTellsService = false;  // the store passes values to the service before it answers

    // Settings
    std::string keysetType = "keyset";
    bool keysetActive = true;
    std::string currentMultiUser = "4711";
    std::string cpuAddress = "10.0.0.1";
    std::string registrationId = "4711@example.com";
    std::string phoneNumber = "4711";
    std::string pickupURI = "**";
    std::string voiceMailURI = "voice@example.com";
    std::string bluetoothLine = "4712";
    std::string localHeldLine;
    std::string dummyLine = "dummy";
    std::map<int, std::string> keyLines;  // by key number
    std::set<int> directLineKeys;         // known by number alone
    std::set<int> dssKeys;
    int serverType = 0;
    int dialRestriction = 0;
    bool phoneLocked = false;
    bool serverFeatures = false;
    int privacyMode = 0;
    bool dndEnabled = true;
    bool dndEnabledAnswered = true;
    bool agentEnabled = true;
    bool dndActive = false;
    PhysDefs::plugStatus jack = PhysDefs::plugOut;
    bool callControl = true;  // false: a telephone without it
    bool hasMapper = true;
    bool hasCockpit = true;
    std::vector<std::string> deviceList;
    int forwardingOn[9] = {};
    std::string forwardingURI[9];
    int noReplyTime = 3;
    bool logging = true;

    std::vector<FakeLine> lines;
    std::set<std::string> multiAppearanceLines = {"shared"};
    std::map<int, std::pair<int, int>> mappings;  // call id -> virtual line, appearance

    // Receives the values that the store passes on; null: nobody.
    MgmtAgentIfc* service = nullptr;

private:
    void changeLine(Random& random);
    void changeSetting(Random& random);
    void changeForwarding(Random& random);
};

// "name(a,b,c)": how effects are written.
namespace effect_text {
inline std::string shown(std::string const& value)
{
    return value;
}
inline std::string shown(char const* value)
{
    return value == nullptr ? "(null)" : value;
}
inline std::string shown(bool value)
{
    return value ? "1" : "0";
}
template <class Number>
std::string shown(Number value)
{
    return std::to_string(static_cast<int>(value));
}
std::string shown(sfiCallInfo const& call);

template <class... Values>
std::string of(char const* name, Values const&... values)
{
    std::string text = std::string(name) + "(";
    ((text += shown(values) + ","), ...);
    if (sizeof...(Values) > 0) {
        text.pop_back();
    }
    return text + ")";
}
}  // namespace effect_text
