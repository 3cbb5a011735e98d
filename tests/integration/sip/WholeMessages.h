// Messages as the far end receives them, without what chance decides, for tests that compare them as a whole.
#pragma once

#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class WholeMessages : public SipTest
{
protected:
    static sip::UserAgentConfig configuration()
    {
        sip::UserAgentConfig config;
        config.name = "desk";
        config.instance = "urn:uuid:00000000-0000-1000-8000-0004f2000001";
        return config;
    }

    // The message without what chance decides.
    std::string plain(std::string text) const
    {
        std::vector<std::pair<std::string, std::string>> patterns{
            {far.hostPort(), "FAR"},
            {phone.agent->hostPort(), "PHONE"},
            {"branch=z9hG4bK[0-9a-f]{16}", "branch=z9hG4bK*"},
            {"rport=[0-9]+", "rport=*"},
            {"tag=[0-9a-f]{16}", "tag=*"},
            {"line=[0-9a-f]{16}", "line=*"},
            {"Call-ID: [0-9a-f]{16}", "Call-ID: *"},
            {"RAck: 7 [0-9]+ ", "RAck: 7 * "},
            {"RSeq: [0-9]+", "RSeq: *"},
            {"active;expires=[0-9]+", "active;expires=*"},
            {"Content-Length: [0-9]{3}", "Content-Length: *"},
            {"o=- [0-9]+ [0-9]+ ", "o=- * * "},
            {"m=audio [0-9]+ ", "m=audio * "},
            {"Allow: INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, PRACK, UPDATE, REFER, NOTIFY, SUBSCRIBE", "Allow: ALL"},
            {"\r\n", "\n"},
        };
        if (!text.starts_with("SIP/2.0 ")) {
            patterns.emplace_back("CSeq: [0-9]+", "CSeq: *");
        }
        for (auto const& [pattern, replacement] : patterns) {
            text = std::regex_replace(text, std::regex(pattern), replacement);
        }
        return text;
    }
    std::string received(std::string const& beginning) { return plain(far.receive(beginning)); }

    void connect()
    {
        call = &phone.call(far.uri());
        invite = far.receive("INVITE ");
        far.accept(invite, "Allow: UPDATE\r\n");
        ASSERT_TRUE(phone.waitFor("established")) << phone.events();
        far.receive("ACK ");
    }
    void takeCall(std::string const& headers = {})
    {
        far.ask("INVITE", "4711", phone.agent->hostPort(), headers, ScriptedEnd::description());
    }

    SipPeer phone{loop, "4711", configuration()};
    ScriptedEnd far{loop};
    sip::Session* call = nullptr;
    std::string invite;
};

}  // namespace telephone::test
