/// @file
/// Line, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/lines/Line.h"
#include "platform/lines/LineData.h"

namespace kit {

/// A line in an unknown state, without configuration and without calls.
class DefaultLine : public Line
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultLine() = default;

    void keyPressed() override
    {
        kMissing.report("keyPressed", "seize, answer, hold or retrieve, by the state of the line");
    }
    void dssKeyPressed(EDSSContext /*context*/, std::string const& /*digits*/,
                       std::string const& /*ringingLineURI*/) override
    {
        kMissing.report("dssKeyPressed", "call the party, consult it, or transfer to it");
    }
    ELineState getLineState() override
    {
        kMissing.report("getLineState", "tell the most urgent state of the line's calls");
        return eLineStateUnknown;
    }
    unsigned char getLineID() override
    {
        kMissing.report("getLineID", "return the line number, from 1");
        return 0;
    }
    sfiResult retrieve() override
    {
        kMissing.report("retrieve", "take back the call that another telephone holds");
        return sfiFailure;
    }
    LineData* getLineData() override
    {
        kMissing.report("getLineData", "return the configuration of the line");
        return nullptr;
    }
    std::string getLastNotifyRemoteURI() override
    {
        kMissing.report("getLastNotifyRemoteURI", "tell the party of the last call");
        return {};
    }
    int getChildBCALineIdReservedForConsultationCall() override
    {
        kMissing.report("getChildBCALineIdReservedForConsultationCall", "tell which appearance is reserved");
        return 0;
    }
    void getServerFeaturesSettings(serverFeaturesSettings& /*settings*/) override
    {
        kMissing.report("getServerFeaturesSettings", "fill in what the call server holds for the line");
    }
    void setDNDConfiguration(bool /*on*/) override
    {
        kMissing.report("setDNDConfiguration", "record do-not-disturb of the line");
    }
    void setForwardingConfiguration(sfiForwardingType /*type*/, bool /*on*/, std::string const& /*destination*/,
                                    int /*ringCount*/) override
    {
        kMissing.report("setForwardingConfiguration", "record the forwarding rule of the line");
    }
    void setMissedCallIndicated(bool /*indicated*/) override
    {
        kMissing.report("setMissedCallIndicated", "show or clear the missed-call indication");
    }

private:
    static constexpr Missing kMissing{"Line", "platform/lines/Line.h"};
};

}  // namespace kit
