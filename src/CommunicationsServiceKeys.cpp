// Presses of line keys, direct-station-select keys and busy-lamp fields, reported by the key applications.
#include "CommunicationsService.h"

#include "CommunicationsServiceGuards.h"
#include "CommunicationsServiceLog.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"
#include "platform/lines/LineManager.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/TeamServiceFeatures.h"

namespace {

// Null for the empty identifier, which names no line.
Line* findLine(std::string const& lineURI)
{
    return lineURI.empty() ? nullptr : LineManager::Instance()->getLine(lineURI);
}

void pressLineKey(Line* line)
{
    if (line == nullptr) {
        return;
    }
    if (LineData* const data = line->getLineData()) {
        data->setHotWarmLineManual(true);
    }
    line->keyPressed();
}

void reportBlindTransferFailed()
{
    Line* const held = findLine(LineManager::Instance()->getLocalHeldLine());
    if (held == nullptr) {
        SERVICE_FAILURE("dssKeyPressedFPK - cannot find local held line; cannot send feature failure notification for "
                        "blind transfer");
        return;
    }
    CSfi::GetInstance()->SendFeatureFailureNotification(held->getLineID(), sfiFeatureBlindTransfer,
                                                        sfiFeatureFailureNotPossible);
}

// Whether the press of a direct-station-select key ends here, because its party is busy: a transfer to it fails, and a
// key that only shows it does nothing.
bool endsAtBusyStation(int keyNumber, EDSSContext context)
{
    Line* const line = LineManager::Instance()->getDSSLineForFPK(keyNumber);
    LineData* const data = line == nullptr ? nullptr : line->getLineData();
    if (data == nullptr || line->getLineState() != eLineStateDSSBusy) {
        return false;
    }
    if (context == eDSSContextBlindTransfer) {
        reportBlindTransferFailed();
        return true;
    }
    return data->getDSSMonitorOnly();
}

}  // namespace

void CommunicationsService::lineKeyPressedFPK(int keyNumber)
{
    SERVICE_TRACE("lineKeyPressedFPK(%d)", keyNumber);
    {
        SemaphoreGuard const hold(teamServiceLock_);
        Line* line = LineManager::Instance()->getLineForFPK(keyNumber);
        if (line == nullptr) {
            line = findLine(LineManager::Instance()->getURIforFPK(keyNumber));
        }
        pressLineKey(line);
    }
    SERVICE_TRACE("lineKeyPressedFPK(%d) END", keyNumber);
}

void CommunicationsService::lineKeyPressed(std::string const& lineURI)
{
    SERVICE_TRACE("lineKeyPressed[%s]", lineURI.c_str());
    {
        SemaphoreGuard const hold(teamServiceLock_);
        pressLineKey(findLine(lineURI));
    }
    SERVICE_TRACE("lineKeyPressed[%s] END", lineURI.c_str());
}

void CommunicationsService::dssKeyPressedFPK(int keyNumber, EDSSContext context, std::string const& digits,
                                             std::string const& ringingLineURI)
{
    SERVICE_TRACE("dssKeyPressedFPK (keyNumber = %d, context = %d, digits = %s, ringingLineURI = %s)", keyNumber,
                  context, digits.c_str(), ringingLineURI.c_str());
    // Checked without the lock on purpose.
    if (endsAtBusyStation(keyNumber, context)) {
        return;
    }
    SemaphoreGuard const hold(teamServiceLock_);
    if (Line* const line = findLine(LineManager::Instance()->getURIforFPK(keyNumber))) {
        line->dssKeyPressed(context, digits, ringingLineURI);
    }
}

void CommunicationsService::dssKeyPressed(std::string const& lineURI, EDSSContext context, std::string const& digits,
                                          std::string const& ringingLineURI)
{
    SemaphoreGuard const hold(teamServiceLock_);
    if (Line* const line = findLine(lineURI)) {
        line->dssKeyPressed(context, digits, ringingLineURI);
    }
}

void CommunicationsService::blfKeyPressedFPK(int keyNumber, bool transfer)
{
    SemaphoreGuard const hold(teamServiceLock_);
    SERVICE_TRACE("blfKeyPressedFPK keyNumber(%d), transfer(%d)", keyNumber, transfer);
    TeamServiceFeatures::Instance()->blfKeyPressedFPK(keyNumber, transfer);
}

void CommunicationsService::setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn)
{
    SemaphoreGuard const hold(teamServiceLock_);
    SERVICE_TRACE("setDNDStatusForBLF BLFLEDcontrolURI(%s), dndOn(%s)", blfLedControlURI.c_str(),
                  dndOn ? "true" : "false");
    TeamServiceFeatures::Instance()->setDNDStatusForBLF(blfLedControlURI, dndOn);
}

void CommunicationsService::requestOverviewData(std::string const& lineURI)
{
    SemaphoreGuard const hold(teamServiceLock_);
    if (!lineURI.empty()) {
        LineManager::Instance()->requestOverviewData(lineURI);
    }
}
