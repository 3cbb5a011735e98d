// Third-party call servers and far ends: Kamailio as registrar and proxy, SIPp as caller and called party.
#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "TelephoneAt.h"

namespace {

class Kamailio
{
public:
    Kamailio() { start(); }
    ~Kamailio() { stop(); }

    void start()
    {
        process_ = std::make_unique<Process>(
            std::vector<std::string>{"env", "SIP_ADDRESS=127.0.0.1:" + std::to_string(port_), "SIP_PASSWORD=secret",
                                     "kamailio", "-f", KAMAILIO_CONFIGURATION, "-DD", "-E", "-m", "32", "-M", "8", "-Y",
                                     folder_.file(""), "-w", folder_.file("")});
    }
    void stop()
    {
        process_->signal(SIGTERM);
        process_->wait();
    }

    std::string registrar() const { return "sip:127.0.0.1:" + std::to_string(port_); }

private:
    TemporaryFolder const folder_;
    int const port_ = freePort();
    std::unique_ptr<Process> process_;
};

std::string lineSection(std::string const& id)
{
    return "[[line]]\nid = \"" + id + "\"\npassword = \"secret\"\n";
}

// Answers every call until it is ended.
class Answering
{
public:
    explicit Answering(TelephoneAt& telephone, int calls)
        : thread_([&telephone, calls] {
            for (int i = 0; i < calls; ++i) {
                std::string const id = callIdOf(telephone.application.event("<Method>IncomingCallEvent</Method>"));
                EXPECT_EQ(telephone.call("AnswerCall", "4711", std::stoi(id)), "sfiSuccess");
                telephone.application.event(state(std::stoi(id), kStateIdle));
            }
        })
    {}
    ~Answering() { thread_.join(); }

private:
    std::thread thread_;
};

std::string peerToPeer(int port)
{
    return "[sip]\nport = " + std::to_string(port) +
           "\n[exchange]\nenabled = false\n[media]\nsource = \"silence\"\n[[line]]\nid = \"4711\"\nregisters = "
           "false\nprimary = true\n";
}

}  // namespace

TEST(Kamailio, TwoTelephones_CallEachOtherThroughIt)
{
    Kamailio kamailio;
    std::string const server = "[server]\nregistrar = \"" + kamailio.registrar() + "\"\n";
    TelephoneAt caller(server + lineSection("5001"));
    TelephoneAt called(server + lineSection("5002"));

    ASSERT_EQ(caller.call("OutgoingCallMakeRequest", "5001", 1, "<Destination>5002</Destination>"), "sfiSuccess");
    std::string const incoming = called.application.event("<Method>IncomingCallEvent</Method><LineID>5002</LineID>");
    int const calledID = std::stoi(callIdOf(incoming));
    EXPECT_NE(incoming.find("<URI>sip:5001@"), std::string::npos) << incoming;
    ASSERT_EQ(called.call("AnswerCall", "5002", calledID), "sfiSuccess");
    caller.application.event(state(1, kStateConnected));
    called.application.event(state(calledID, kStateConnected));

    ASSERT_EQ(called.call("HoldCall", "5002", calledID), "sfiSuccess");
    called.application.event("<Method>CallHeldEvent</Method>");
    ASSERT_EQ(called.call("RetrieveCall", "5002", calledID), "sfiSuccess");
    called.application.event("<Method>CallRetrievedEvent</Method>");

    ASSERT_EQ(called.call("CallClearRequest", "5002", calledID), "sfiSuccess");
    caller.application.event(state(1, kStateIdle));
    called.application.event(state(calledID, kStateIdle));
}

TEST(Kamailio, WrongPassword_LeavesTheLineUnregisteredAndSaysSo)
{
    Kamailio kamailio;
    TelephoneAt telephone("[server]\nregistrar = \"" + kamailio.registrar() +
                          "\"\n[[line]]\nid = \"5001\"\npassword = \"wrong\"\n");

    telephone.application.request(method("Deactivate", "<AllowAutoActivate>1</AllowAutoActivate>"));
    telephone.application.request(method("Activate"));

    telephone.application.event("<Method>RegistrationStateChangeEvent</Method><LineID>5001</LineID><CallID>0</CallID>"
                                "<Registered>0</Registered>");
}

TEST(Kamailio, RegistrarThatGoesAwayAndReturns_FindsTheLineAgain)
{
    Kamailio kamailio;
    TelephoneAt telephone("[server]\nregistrar = \"" + kamailio.registrar() + "\"\nexpires = 10\n" +
                          lineSection("5001"));

    kamailio.stop();
    telephone.application.event("<Registered>0</Registered>");
    kamailio.start();
    telephone.application.event("<Registered>1</Registered>");

    ASSERT_EQ(telephone.call("OutgoingCallMakeRequest", "5001", 1, "<Destination>5001</Destination>"), "sfiSuccess");
    telephone.application.event("<Method>IncomingCallEvent</Method>");
}

TEST(Sipp, HundredCallsIn_AllAnswered)
{
    int const port = freePort();
    TelephoneAt telephone(peerToPeer(port));
    Answering const answering(telephone, 100);

    Ended const sipp = run({"sipp", "-sn", "uac", "-nostdin", "-i", "127.0.0.1", "-s", "4711", "-m", "100", "-l", "1",
                            "-r", "100", "-d", "0", "-timeout", "50", "127.0.0.1:" + std::to_string(port)});

    EXPECT_EQ(sipp.status, 0) << sipp.output;
}

TEST(Sipp, HundredCallsOut_AllAnswered)
{
    int const port = freePort();
    TelephoneAt telephone(peerToPeer(0));
    Process sipp({"sipp", "-sn", "uas", "-nostdin", "-i", "127.0.0.1", "-p", std::to_string(port), "-m", "100",
                  "-timeout", "50"});
    std::string const destination = "<Destination>sip:service@127.0.0.1:" + std::to_string(port) + "</Destination>";

    for (int call = 1; call <= 100; ++call) {
        ASSERT_EQ(telephone.call("OutgoingCallMakeRequest", "4711", call, destination), "sfiSuccess");
        telephone.application.event(state(call, kStateConnected));
        ASSERT_EQ(telephone.call("CallClearRequest", "4711", call), "sfiSuccess");
        telephone.application.event(state(call, kStateIdle));
    }

    EXPECT_EQ(sipp.wait(), 0) << sipp.output();
}
