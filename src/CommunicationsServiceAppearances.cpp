// Assigns calls to lines and appearances, and decides whether a new call may be made.
#include "CommunicationsService.h"

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/lines/Utility.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/sfi/SfiMCAMapper.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

constexpr int kFirstBluetoothCall = 10000;
constexpr int kLastBluetoothCall = 10500;
constexpr char const* kBluetoothLine = "bluetoothDeviceID";

constexpr std::int32_t kDefaultPrimary = 1;

std::int32_t primaryOf(Line& line)
{
    LineData* const data = line.getLineData();
    return data == nullptr ? kDefaultPrimary : data->getPrimary();
}

sfiCallInfo makeCallInfo(int lineID, std::int32_t primary, int callID, int appearance)
{
    return {static_cast<std::uint8_t>(lineID), primary, callID, static_cast<std::uint8_t>(appearance)};
}

sfiCallInfo plainLineCallInfo(std::string const& baseURI, int callID)
{
    Line* const line = LineManager::Instance()->getLine(baseURI);
    return line == nullptr ? makeCallInfo(0, kDefaultPrimary, callID, 0)
                           : makeCallInfo(line->getLineID(), primaryOf(*line), callID, 0);
}

// Calls of a Bluetooth device name a marker instead of a line; the call control knows the device's line.
std::string withoutBluetoothMarker(std::string const& lineURI, int callID)
{
    if (callID < kFirstBluetoothCall || callID > kLastBluetoothCall || lineURI != kBluetoothLine) {
        return lineURI;
    }
    std::string replacement;
    std::string deviceName;
    CSfi::GetInstance()->GetBluetoothLineURI(0, replacement, deviceName);
    SERVICE_TRACE("generateCallInfoForLine - replacing lineURI for callID(%d): previous lineURI=%s, new lineURI=%s",
                  callID, lineURI.c_str(), replacement.c_str());
    return replacement;
}

// Finds the appearance of a multi-call-appearance line that a call is on or may take. Each step fills in the record or
// leaves it to the next.
class AppearanceSearch
{
public:
    AppearanceSearch(sfiCallInfo& info, int callID, bool assign)
        : info_(info)
        , callID_(callID)
        , assign_(assign)
        , mapper_(CSfi::GetInstance()->GetMCAMapper())
    {}

    bool isMappedAlready()
    {
        int lineID = 0;
        if (mapper_ == nullptr || !mapper_->findVirtualLineforCallID(callID_, lineID, appearance_)) {
            return false;
        }
        // The caller's `primary` stays.
        info_ = makeCallInfo(lineID, info_.primary, callID_, appearance_);
        SERVICE_TRACE(
            "generateCallInfoForLine - got already assigned MCA line for callID(%d): lineID(%d), appearanceIndex(%d)",
            info_.callID, info_.lineID, info_.appearanceIndex);
        return true;
    }

    // Takes the appearance named by the identifier itself.
    bool takesNamed(std::string const& lineURI, int index)
    {
        Line* const line = index > 0 ? LineManager::Instance()->getLine(lineURI) : nullptr;
        if (line == nullptr) {
            return false;
        }
        take(*line, line->getLineID(), index);
        SERVICE_TRACE("generateCallInfoForLine(%s) - assign callID(%d) to MCA lineID(%d), appearanceIndex(%d)",
                      lineURI.c_str(), info_.callID, info_.lineID, info_.appearanceIndex);
        return true;
    }

    bool takesOneInState(ELineState state, char const* stateName, std::string const& baseURI)
    {
        Line* const line = LineManager::Instance()->getLineInState(state, baseURI);
        if (line == nullptr) {
            return false;
        }
        take(*line, line->getLineID(), appearance_);
        SERVICE_TRACE(
            "generateCallInfoForLine - found MCA line in %s state: callID(%d), lineID(%d), appearanceIndex(%d)",
            stateName, info_.callID, info_.lineID, info_.appearanceIndex);
        return true;
    }

    bool takesFirstFree(std::string const& baseURI)
    {
        Line* const line = LineManager::Instance()->getLine(baseURI);
        if (line == nullptr) {
            return false;
        }
        int const lineID = line->getLineID();
        take(*line, mapper_ == nullptr ? lineID : mapper_->findFirstFreeVirtualLine(lineID), appearance_);
        SERVICE_TRACE("generateCallInfoForLine - use first free MCA line: callID(%d), lineID(%d), appearanceIndex(%d)",
                      info_.callID, info_.lineID, info_.appearanceIndex);
        return true;
    }

private:
    void take(Line& line, int virtualLine, int appearance)
    {
        if (assign_ && mapper_ != nullptr) {
            mapper_->assignCallToLine(virtualLine, callID_, appearance);
        }
        info_ = makeCallInfo(virtualLine, primaryOf(line), callID_, appearance);
    }

    sfiCallInfo& info_;
    int const callID_;
    bool const assign_;
    SfiMCAMapper* const mapper_;
    // A look-up that finds nothing may still write here; the steps that name no appearance use that value.
    int appearance_ = 0;
};

}  // namespace

void CommunicationsService::generateCallInfoForLine(sfiCallInfo* info, std::string const& lineURI, int callID,
                                                    bool assign)
{
    if (info == nullptr) {
        return;
    }
    std::string const device = withoutBluetoothMarker(lineURI, callID);
    std::string baseURI;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(device, baseURI, index);
    if (!isKeyset()) {
        *info = makeCallInfo(0, kDefaultPrimary, callID, 0);
        return;
    }
    if (!LineManager::Instance()->isMCALine(baseURI)) {
        *info = plainLineCallInfo(baseURI, callID);
        return;
    }
    AppearanceSearch search(*info, callID, assign);
    bool const found = search.isMappedAlready() || search.takesNamed(device, index) ||
                       search.takesOneInState(eLineStateSelected, "selected", baseURI) ||
                       search.takesOneInState(eLineStateHoldConsult, "HoldConsult", baseURI) ||
                       search.takesFirstFree(baseURI);
    if (!found) {
        *info = makeCallInfo(0, kDefaultPrimary, callID, 0);
    }
}

bool CommunicationsService::checkBCAForNextAppearanceReservation(std::string const& lineURI)
{
    if (sfiGetServerType() != sfiServerBridgedAppearances) {
        return true;
    }
    Line* const line = LineManager::Instance()->getLine(lineURI);
    if (line == nullptr) {
        return true;
    }
    ELineState const state = line->getLineState();
    if (Utility::isLineStateBusy(state)) {
        return TeamServiceKeyset::Instance()->reserveNextSCA(lineURI);
    }
    if (state != eLineStateHoldConsult) {
        return true;
    }
    int const reserved = line->getChildBCALineIdReservedForConsultationCall();
    SERVICE_TRACE("checkBCAForNextAppearanceReservation(%s) - eLineStateHoldConsult, reserved appearance: %d",
                  lineURI.c_str(), reserved);
    return reserved != 0 || TeamServiceKeyset::Instance()->reserveNextSCA(lineURI);
}

bool CommunicationsService::reserveLine(std::string const& lineURI)
{
    SERVICE_TRACE("reserveLine(%s)", lineURI.c_str());
    SemaphoreGuard const hold(teamServiceLock_);
    if (TeamServiceKeyset::Instance()->isSpoofedDummyLine(lineURI)) {
        return TeamServiceKeyset::Instance()->dummyLine_reserve();
    }
    TeamServiceKeyset::Instance()->makeCall(lineURI);
    Line* const line = LineManager::Instance()->getLine(lineURI);
    if (line == nullptr) {
        return false;
    }
    ELineState const state = line->getLineState();
    if (state == eLineStateReserved || state == eLineStateSelected) {
        return true;
    }
    SERVICE_FAILURE("reserveLine(%s) failed, line state: %d", lineURI.c_str(), state);
    return false;
}

bool CommunicationsService::isOutgoingCallAllowed(char const* number)
{
    if (number == nullptr || CSfi::GetInstance()->GetDialRestrictionMode() == CSfi::kDialBarred) {
        return false;
    }
    if (!CSfi::GetInstance()->IsPhoneLocked()) {
        return true;
    }
    if (digitAnalysis_ == nullptr) {
        return false;
    }
    // Both questions are asked, whatever the first answer is.
    bool const permitted = digitAnalysis_->isPermittedNumber(number);
    bool const permittedInContext = digitAnalysis_->isPermittedNumberInContext(number, 0);
    if (!permitted && !permittedInContext) {
        return false;
    }
    removeDNDIfSet();
    return true;
}
