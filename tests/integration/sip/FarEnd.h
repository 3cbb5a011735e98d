// A telephone in a call with a far end that is written message by message.
#pragma once

#include <string>

#include "ScriptedEnd.h"
#include "SipFixture.h"

namespace telephone::test {

class FarEnd : public SipTest
{
protected:
    // Makes a far end the server of the line.
    void registerAt(ScriptedEnd& server)
    {
        phone_.registerAt(server.hostPort());
        server.answer(server.receive("REGISTER"), "200 OK", "Expires: 300\r\n");
        ASSERT_TRUE(phone_.waitFor("registered 300")) << phone_.events();
    }
    void registerHere() { registerAt(far_); }
    void call()
    {
        session_ = &phone_.call(far_.uri());
        invite_ = far_.receive("INVITE");
    }

    void connect()
    {
        call();
        far_.accept(invite_);
        ASSERT_TRUE(phone_.waitFor("established")) << phone_.events();
        far_.receive("ACK");
    }

    // What the far end answers to an INFO, and what the telephone makes of it.
    std::string info(std::string const& type, std::string const& body)
    {
        far_.request("INFO", invite_, "Content-Type: " + type + "\r\n", body);
        EXPECT_EQ("SIP/2.0 200 OK", firstLineOf(far_.receive("SIP/2.0")));
        std::string const events = phone_.events();
        phone_.forget();
        return events;
    }

    ScriptedEnd far_{loop};
    SipPeer phone_{loop};
    sip::Session* session_ = nullptr;
    std::string invite_;
};

}  // namespace telephone::test
