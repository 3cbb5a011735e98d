// A response that records its calls, in order.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/InvokerResponse.h"

class RecordedResponse : public InvokerResponse
{
public:
    void finish() override { told.emplace_back("finish"); }
    void sendResponse(char const* answer, int length) override
    {
        told.push_back("answer " + std::string(answer, static_cast<std::size_t>(length)));
    }
    std::string const& channelName() override { return name; }

    std::string name = "channel-1";
    std::vector<std::string> told;
};
