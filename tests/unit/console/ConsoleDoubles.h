// A conversation with a telephone double, and its transcript, with the tags.
#pragma once

#include <memory>
#include <string>

#include "telephone/console/Conversation.h"
#include "telephone/console/Transcript.h"
#include "tests/unit/access/TelephoneDouble.h"

class TalkingTelephone : public TelephoneDouble
{
public:
    std::string written;
    std::string failures;
    telephone::Transcript transcript{[this](std::string const& line) { written += line + "\n"; },
                                     [this](std::string const& line) { failures += line + "\n"; },
                                     telephone::OutputKind::kTags,
                                     {}};
    telephone::WakeUp stop;
    std::unique_ptr<telephone::Conversation> conversation =
        std::make_unique<telephone::Conversation>("test", services(), transcript, stop.descriptor());
};
