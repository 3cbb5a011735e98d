// Status of the telephone as a whole: views, service state, mute, message waiting, devices, lamps, recording, messages
// of computer-telephony applications.
#include "CommunicationsService.h"

#include <array>
#include <string_view>

#include "CommunicationsServiceLog.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/lines/Utility.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

enum class StatusAction
{
    notifyView,
    pass,
    tracePass,
};

struct StatusRow
{
    std::string_view status;
    StatusAction action;
};

constexpr std::array kStatusRows{
    StatusRow{"CallView-Normal", StatusAction::notifyView},
    StatusRow{"MessagesPhonelet-Normal", StatusAction::pass},
    StatusRow{"CallViewMWI-Normal", StatusAction::tracePass},
    StatusRow{"CallViewMWI-Normal-NoMessagesPhonelet", StatusAction::tracePass},
};
static_assert(kStatusRows.size() == 4);

constexpr int kCallView = 6;

StatusRow const* findStatus(char const* status)
{
    for (auto const& row : kStatusRows) {
        if (status != nullptr && row.status == status) {
            return &row;
        }
    }
    return nullptr;
}

struct LampRow
{
    std::string_view lampId;
    char const* feature;
    int lamp;
    int colour;
};

constexpr std::array kLampRows{
    LampRow{"Hold", "Hold", PhysDefs::kLampHold, PhysDefs::lampGreen},
    LampRow{"SecondAlert", "Second Alert", PhysDefs::kLampSecondAlert, PhysDefs::lampAmber},
};
static_assert(kLampRows.size() == 2);

LampRow const* findLamp(std::string const& lampId)
{
    for (auto const& row : kLampRows) {
        if (row.lampId == lampId) {
            return &row;
        }
    }
    return nullptr;
}

// A selected line reports its hot or warm type; a line in any other state is ready to dial.
constexpr int kReadyToDial = 5;

}  // namespace

sfiResult CommunicationsService::setServiceState(sfiServiceState state)
{
    SERVICE_TRACE("setServiceState (state = %d)", state);
    return CSfi::GetInstance()->SetServiceState(state);
}

sfiResult CommunicationsService::getServiceState(sfiServiceState& state)
{
    SERVICE_TRACE("getServiceState");
    return CSfi::GetInstance()->GetServiceState(state);
}

sfiResult CommunicationsService::setMicrophoneMute(bool mute)
{
    SERVICE_TRACE("setMicrophoneMute (%d)", mute);
    return CSfi::GetInstance()->SetMicrophoneMute(mute);
}

sfiResult CommunicationsService::getMicrophoneMute(bool& mute)
{
    SERVICE_TRACE("getMicrophoneMute");
    return CSfi::GetInstance()->GetMicrophoneMute(mute);
}

sfiResult CommunicationsService::getDoNotDisturb(std::string const& lineURI, bool& on)
{
    SERVICE_TRACE("getDoNotDisturb(%s)", lineURI.c_str());
    // The state of the whole phone, whatever the line.
    return CSfi::GetInstance()->GetDoNotDisturb(0, on);
}

sfiResult CommunicationsService::SendCSTARequest(std::string const& lineURI, std::string const& body)
{
    SERVICE_TRACE("SendCSTARequest");
    return CSfi::GetInstance()->SendCSTARequest(lineURI, body);
}

sfiResult CommunicationsService::sendUACSTAServerMessage(std::string& /*lineURI*/, std::string& body)
{
    // Misspelled on purpose: log readers search for it.
    SERVICE_TRACE("sendUACSTServerMesage");
    return CSfi::GetInstance()->SendUACSTAServerMessage(body);
}

sfiResult CommunicationsService::InitializeOrFinalizeServerFeatures(std::string const& lineURI, bool initialize)
{
    SERVICE_TRACE("InitializeOrFinalizeServerFeatures");
    return CSfi::GetInstance()->InitializeOrFinalizeServerFeatures(lineURI, initialize);
}

sfiResult CommunicationsService::setAssociatedCalls(bool associated)
{
    CSfi::GetInstance()->SetAssociatedCalls(associated);
    return sfiSuccess;
}

int CommunicationsService::getLineHeadsetOverride()
{
    return CSfi::GetInstance()->GetLineHeadsetOverride();
}

bool CommunicationsService::isLocallyIdleLine()
{
    SERVICE_TRACE("isLocallyIdleLine ");
    return LineManager::Instance()->isLocallyIdleLine();
}

bool CommunicationsService::bridgeCall(std::string const& lineURI)
{
    SERVICE_TRACE("bridgeCall lineURI=%s", lineURI.c_str());
    return Utility::bridgeCall(LineManager::Instance()->getLine(lineURI));
}

MediaRecordingService* CommunicationsService::mediaRecordingSvc()
{
    if (mediaRecordingService_ == nullptr) {
        static SvcRTEContext emptyContext;
        Context& context = context_ == nullptr ? emptyContext : *context_;
        mediaRecordingService_ = MediaRecordingService::GetInstance();
        mediaRecordingService_->init(context, this, this);
    }
    return mediaRecordingService_;
}

bool CommunicationsService::activateRecording(std::string const& lineURI)
{
    SERVICE_TRACE("activateRecording lineURI: %s", lineURI.c_str());
    return mediaRecordingSvc()->activateRecording(lineURI);
}

bool CommunicationsService::deactivateRecording(std::string const& lineURI)
{
    SERVICE_TRACE("deactivateRecording lineURI: %s", lineURI.c_str());
    return mediaRecordingSvc()->deactivateRecording(lineURI);
}

sfiResult CommunicationsService::systemStatus(char const* status, char const* statusInfo)
{
    SERVICE_TRACE("systemStatus Status=%s,StatusInfo=%s", service_log::shown(status), service_log::shown(statusInfo));
    StatusRow const* const row = findStatus(status);
    if (row == nullptr) {
        return sfiFailure;
    }
    if (row->action == StatusAction::notifyView) {
        CSfi::GetInstance()->NotifyViewState(kCallView);
        return sfiSuccess;
    }
    if (row->action == StatusAction::tracePass) {
        SERVICE_TRACE("systemStatus Status - %s", status);
    }
    CSfi::GetInstance()->SystemStatus(status, statusInfo, 0);
    return sfiSuccess;
}

sfiResult CommunicationsService::setLampMode(std::string const& lineURI, std::string const& lampId, int lampMode)
{
    SERVICE_TRACE("setLampMode() lineURI=%s, lampId=%s, lampMode=%d", lineURI.c_str(), lampId.c_str(), lampMode);
    LampRow const* const row = findLamp(lampId);
    if (row == nullptr) {
        SERVICE_FAILURE("setLampMode() LED setting for lampId %s not implemented", lampId.c_str());
        return sfiSuccess;
    }
    SERVICE_TRACE("setLampMode() setting LED for feature %s to mode %d", row->feature, lampMode);
    if (physicalInterface_ != nullptr) {
        physicalInterface_->setLamp(row->lamp, lampMode, row->colour, 0);
    }
    return sfiSuccess;
}

sfiResult CommunicationsService::getMessageWaitingIndicator(int& type, unsigned int& newMessages,
                                                            unsigned int& oldMessages, unsigned int& newUrgentMessages,
                                                            unsigned int& oldUrgentMessages, int& returnType,
                                                            int& availableInfo, int& messagesWaiting,
                                                            std::string& voiceMailURI)
{
    std::string voiceMail;
    sfiGetVoiceMailDialURI(voiceMail);
    std::string phoneNumber;
    sfiGetCurrentPhoneNumber(phoneNumber);
    sfiMessageWaitingRecord record{};
    CSfi::GetInstance()->GetMessageWaitingIndicator(phoneNumber, record);
    type = record.type;
    newMessages = record.newMessages;
    oldMessages = record.oldMessages;
    newUrgentMessages = record.newUrgentMessages;
    oldUrgentMessages = record.oldUrgentMessages;
    returnType = record.returnType;
    availableInfo = record.availableInfo;
    messagesWaiting = record.messagesWaiting;
    voiceMailURI = voiceMail;
    return sfiSuccess;
}

sfiResult CommunicationsService::getDevices(std::vector<std::string>& devices)
{
    std::string cpuAddress;
    sfiGetCPUAddr(cpuAddress);
    if (isKeyset()) {
        LineManager::Instance()->getDeviceList(devices);
        if (devices.empty()) {
            return sfiFailure;
        }
    } else {
        std::string registration;
        sfiGetRegistrationId(0, registration);
        if (registration.empty()) {
            return sfiFailure;
        }
        devices.push_back("<prime:" + registration + ">");
    }
    if (!cpuAddress.empty()) {
        devices.push_back("<groupPickup:" + cpuAddress + ">");
    }
    return sfiSuccess;
}

int CommunicationsService::getHotWarmLineStatus(std::string const& lineURI)
{
    if (Line* const line = LineManager::Instance()->getLine(lineURI)) {
        if (line->getLineState() != eLineStateSelected) {
            return kReadyToDial;
        }
        LineData* const data = line->getLineData();
        return data == nullptr ? 0 : data->getHotWarmType();
    }
    if (TeamServiceKeyset::Instance()->isKeysetActive()) {
        return 0;
    }
    return CSfi::GetInstance()->GetHotWarmLineStatus(0) > 0 ? kReadyToDial : 0;
}

sfiResult CommunicationsService::retrieveRemotelyHeldCall(std::string const& lineURI)
{
    Line* const line = LineManager::Instance()->getLine(lineURI);
    if (line == nullptr) {
        return sfiFailure;
    }
    ELineState const state = line->getLineState();
    bool const heldElsewhere = state == eLineStateHoldElsewhere || state == eLineStateConferenceHoldElsewhere;
    return heldElsewhere ? line->retrieve() : sfiFailure;
}

void CommunicationsService::setMissedCallIndication(std::string const& device, bool indicated)
{
    std::string lineURI;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(device, lineURI, index);
    if (!isKeyset()) {
        return;
    }
    Line* const line = LineManager::Instance()->getLine(lineURI);
    LineData* const data = line == nullptr ? nullptr : line->getLineData();
    if (data == nullptr || data->getPrimary() != 0) {
        return;
    }
    if (data->getSharedLineType() != LineData::kSharedLine && !LineManager::Instance()->isMCALine(lineURI)) {
        return;
    }
    line->setMissedCallIndicated(indicated);
}
