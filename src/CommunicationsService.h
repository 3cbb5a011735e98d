// The one object of the SIP communications service. It puts a uniform interface in front of the telephone's call
// control: it maps calls to lines and appearances, applies the rules for keys, forwarding, do-not-disturb and agent
// states, and publishes settings to the configuration store. Lines, calls and settings themselves live in the platform.
//
// The framework creates it by the factory, calls init once, activate and deactivate as often as it likes, shutdown at
// the end, and deletes it through Executable. Operations are called from any thread; the service has none of its own.
// Three locks: teamServiceLock_ serialises the line keys and reservations, publicationLock_ the writes to the store,
// CSfi::Lock brackets the call operations. No operation takes both of the first two.
//
// The order of bases, operations and fields is binary interface and never changes.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "CommunicationsServiceFactories.h"
#include "CommunicationsServiceIfc.h"
#include "MediaRecordingServiceIfc.h"
#include "TeamServiceIfc.h"
#include "platform/framework/Semaphore.h"
#include "platform/framework/Service.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/management/SIPConfigManager.h"
#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"

class AuditoryDeviceIfc;
class CertificateMgmtSvcIfc;
class DigitAnalysisServiceIfc;
class LocalMgmtIfc;
class ManageableData;
class MediaRecordingService;
class PhysicalInterfaceServiceIfc;

class CommunicationsService final : public Service,
                                    public CommunicationsServiceIfc,
                                    public MediaRecordingServiceIfc,
                                    public MgmtAgentIfc,
                                    public TeamServiceIfc,
                                    public physicalEventObserver,
                                    public functionalEventObserver
{
public:
    CommunicationsService();
    ~CommunicationsService() override;
    CommunicationsService(CommunicationsService const&) = delete;
    CommunicationsService& operator=(CommunicationsService const&) = delete;

    // Service
    void init(Context& context) override;
    void shutdown() override;
    void timerEvent(int timerId) override;
    void run() override;

    // CommunicationsServiceIfc
    void processSignallingComponentEvent(char const* payload, int count) override;
    sfiResult activate() override;
    sfiResult deactivate(bool allowAutoActivate) override;
    sfiResult callClear(std::string const& lineURI, int callID, CSTAEventCause cause) override;
    sfiResult outgoingCallMake(std::string const& lineURI, int callID, char const* destination, bool dssDirectCall,
                               bool bridgeCall, bool callCompletionCall) override;
    sfiResult acceptCall(std::string const& lineURI, int callID, bool keysetOnly) override;
    sfiResult answerCall(std::string const& lineURI, int callID) override;
    sfiResult deflectCall(std::string const& lineURI, int callID, char const* destination) override;
    sfiResult holdCall(std::string const& lineURI, int callID, sfiFeature feature, bool manual) override;
    sfiResult retrieveCall(std::string const& lineURI, int callID) override;
    sfiResult attendedTransferCall(std::string const& lineURI, int heldCallID, int activeCallID) override;
    sfiResult blindTransferCall(std::string const& lineURI, int callID, char const* destination) override;
    sfiResult SendCSTARequest(std::string const& lineURI, std::string const& body) override;
    sfiResult sendUACSTAServerMessage(std::string& lineURI, std::string& body) override;
    sfiResult InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize) override;
    sfiResult activateCallbackRinging(std::string const& lineURI, int callID) override;
    sfiResult activateCallbackBusy(std::string const& lineURI, int callID) override;
    sfiResult cancelCallbacks(std::string const& lineURI, int callID, std::string const& target,
                              sfiCancelCallBackType type, bool displayOutcome) override;
    sfiResult consultationCall(std::string const& lineURI, int callID, char const* destination) override;
    sfiResult refuseCall(std::string const& lineURI, int callID, sfiRefuseCall reason) override;
    sfiResult subscribe(Executable* subscriber) override;
    sfiResult directedPickupCall(std::string const& lineURI, int callID, std::string const& callToBePickedUp,
                                 bool BLFPickup) override;
    sfiResult groupPickupCall(std::string const& lineURI, int callID) override;
    sfiResult setServiceState(sfiServiceState state) override;
    sfiResult getServiceState(sfiServiceState& state) override;
    sfiResult setDoNotDisturb(std::string const& lineURI, bool on) override;
    sfiResult getDoNotDisturb(std::string const& lineURI, bool& on) override;
    sfiResult setAgentState(std::string const& lineURI, std::string const& state) override;
    sfiResult setMicrophoneMute(bool mute) override;
    sfiResult getMicrophoneMute(bool& mute) override;
    sfiResult systemStatus(char const* status, char const* statusInfo) override;
    sfiResult generateDigits(std::string const& lineURI, int callID, char const* digits) override;
    sfiResult getDevices(std::vector<std::string>& devices) override;
    sfiResult conferenceCall(std::string const& lineURI, int heldCallID, int activeCallID, sfiFeature feature) override;
    bool getManualHoldIndication(std::string const& lineURI, int callID) override;
    sfiResult alternateCalls(std::string const& lineURI) override;
    sfiResult getMessageWaitingIndicator(int& type, unsigned int& newMessages, unsigned int& oldMessages,
                                         unsigned int& newUrgentMessages, unsigned int& oldUrgentMessages,
                                         int& returnType, int& availableInfo, int& messagesWaiting,
                                         std::string& voiceMailURI) override;
    sfiResult setAssociatedCalls(bool associated) override;
    sfiResult setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode) override;
    sfiResult makeSecurityChangeReinvite(std::string const& lineURI, int callID, bool secure) override;
    void setIsInServiceInitiatedState(std::string const& lineURI, bool initiated) override;
    sfiResult setForwardingConfiguration(std::string const& lineURI, sfiForwardingType type, bool on,
                                         std::string const& destination, int cfnrRingCount,
                                         bool forceQORAUpdate) override;
    sfiResult getForwardingConfiguration(sfiForwardingType type, bool& on, std::string& destination,
                                         int& cfnrRingCount) override;
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override;
    std::string csCommunicationsService(char const* unused) override;
    void activateStoredFwd() override;

    // MediaRecordingServiceIfc
    bool activateRecording(std::string const& lineURI) override;
    bool deactivateRecording(std::string const& lineURI) override;

    // MgmtAgentIfc
    int setData(ManageableData& data) override;
    int getData(ManageableData& data) override;
    void manageableDataChanged(ManageableData& data) override;
    void resetUserData() override;

    // TeamServiceIfc
    void lineKeyPressedFPK(int keyNumber) override;
    void lineKeyPressed(std::string const& lineURI) override;
    void dssKeyPressedFPK(int keyNumber, EDSSContext context, std::string const& digits,
                          std::string const& ringingLineURI) override;
    void dssKeyPressed(std::string const& lineURI, EDSSContext context, std::string const& digits,
                       std::string const& ringingLineURI) override;
    void blfKeyPressedFPK(int keyNumber, bool transfer) override;
    void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) override;
    int getLineRingDelay(std::string const& lineURI) override;
    std::string getShortDescription(std::string const& lineURI) override;
    int getPrimary(std::string const& lineURI) override;
    bool getVisibleOnOverview(std::string const& lineURI) override;
    int getOverviewPosition(std::string const& lineURI) override;
    int getState(std::string const& lineURI) override;
    std::string getRemoteURI(std::string const& lineURI) override;
    bool isKeyset() override;
    bool observe(Executable* observer) override;
    bool reserveLine(std::string const& lineURI) override;
    bool unreserveLine(std::string const& lineURI) override;
    bool reserveNextSCA(std::string const& lineURI) override;
    std::string getWarmLine() override;
    int getLineRing(std::string const& lineURI) override;
    void requestOverviewData(std::string const& lineURI) override;
    void ftToggleKeyPressed(int keyNumber) override;
    bool getImmediateRing() override;
    void setImmediateRing(bool on) override;
    std::string getURIforFPK(int keyNumber) override;
    int getFPKforUri(std::string const& lineURI) override;
    void callIgnored(std::string const& lineURI) override;
    void callIsolation(std::string const& lineURI, bool on) override;
    int getLineHeadsetOverride() override;
    bool bridgeCall(std::string const& lineURI) override;
    void pushRequest(std::string& url, std::string& data) override;
    sfiResult retrieveRemotelyHeldCall(std::string const& lineURI) override;
    int getIncomingCallPriority(std::string const& lineURI) override;
    void terminatePreview() override;
    int getHotWarmLineStatus(std::string const& lineURI) override;
    std::string getHotWarmLineDialInfo(std::string const& lineURI) override;
    bool isLocallyIdleLine() override;
    std::string getEACockpitData(std::string item) override;
    bool setEACockpitData(std::string item, std::string value) override;
    bool lineConsideredAsPrivate(std::string const& lineURI) override;
    int getLineAudibleAlert(std::string const& lineURI) override;
    void setMissedCallIndication(std::string const& device, bool indicated) override;
    void changeMultiUser(std::string const& lineURI) override;
    void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) override;
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature, int instanceId,
                               ZEBLocalFeaturesDefs::eActionType action) override;
    void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) override;

    // physicalEventObserver
    void buttonPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action,
                            std::string text) override;
    void hookswitchEvent(PhysDefs::actionType action) override;
    void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override;
    void fpkAvailableEvent() override;
    // Serves both observer interfaces.
    Executable* getSubscribingService() override;

    // functionalEventObserver
    void functionPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action,
                              std::string text) override;

    // Finds the executable registered under a name; null, with a log line, when there is none.
    Executable* findIfc(std::string const& name);

    // Appearances. Fills in the record that names a call to the call control. With `assign` the call takes an
    // appearance of a multi-call-appearance line. For a call that already has one, `primary` is left as it is.
    void generateCallInfoForLine(sfiCallInfo* info, std::string const& lineURI, int callID, bool assign);
    // Whether a new call may be made on a line. Reserves an appearance where the server requires one.
    bool checkBCAForNextAppearanceReservation(std::string const& lineURI);
    // Whether a number may be dialled now. Switches do-not-disturb off for a number that is permitted on a locked
    // phone.
    bool isOutgoingCallAllowed(char const* number);

    // Status: the recording service, bound here if init has not done so yet.
    MediaRecordingService* mediaRecordingSvc();

    // Forwarding. Writes the values that differ from the rule in force to the store; all of them when `force` is set.
    void publishForwardingConfigurationViaQORA(sfiForwardingType type, bool on, std::string const& destination,
                                               int cfnrRingCount, bool force);
    // Writes one value to the store and takes no lock. Returns the store's answer (not 0: accepted), or 0 without store
    // or key.
    int setQORAValue(std::string const& key, std::string const& value);
    // Switches the three base rules off.
    void removeForwardingIfSet();
    void setCFChangesPending(bool pending);

    // Do-not-disturb. The platform is told of the value once the store has accepted it.
    void publishDNDConfigurationViaQORA(std::string const& lineURI, bool on);
    // Ends do-not-disturb of the whole phone without telling the store.
    void removeDNDIfSet();

    // Management data. Removes the items that the server holds, if it holds any; false when no item remains.
    bool setCentralisedFeatureData(ManageableData& data);
    // Whether the server holds forwarding and do-not-disturb once the data is in force.
    bool extractNewValueForServerBasedFeatures(ManageableData& data);
    // Removes the items that the server holds; false when none remains.
    bool extractInvalidDataItems(ManageableData& data);
    bool isValidWhilstServerBasedFeaturesEnabled(std::string const& rootId);

    // Keys
    void subscribePhysicalInterfaceEvents();
    void keyPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action);

private:
    // The steps of init, in its order.
    void startRecording();
    void startCallControl();
    void startKeyset();
    void startTeamFeatures();
    void subscriptionTimerExpired();

    // The record of a call that may take an appearance.
    sfiCallInfo callInfo(std::string const& lineURI, int callID);
    // Directed pickup as a call to the pickup number with the number of the ringing telephone appended.
    sfiResult pickUpByNumber(sfiCallInfo& info, std::string const& callToBePickedUp);
    // Whether the dial plan lists a number as an emergency number.
    bool numberFlag(std::string const& number);
    // Whether a line belongs to the present user of the keyset.
    bool isCurrentMultiUser(std::string const& lineURI);

    Context* context_ = nullptr;
    MediaRecordingService* mediaRecordingService_ = nullptr;
    std::unique_ptr<SIPConfigManager> sipConfigManager_;
    Semaphore publicationLock_;
    AuditoryDeviceIfc* auditoryDevice_ = nullptr;
    LocalMgmtIfc* localMgmt_ = nullptr;
    DigitAnalysisServiceIfc* digitAnalysis_ = nullptr;
    PhysicalInterfaceServiceIfc* physicalInterface_ = nullptr;
    CertificateMgmtSvcIfc* certificateMgmt_ = nullptr;
    std::atomic<bool> publicationInProgress_{false};
    Semaphore teamServiceLock_;
    std::atomic<int> subscriptionTimerId_{0};
};
