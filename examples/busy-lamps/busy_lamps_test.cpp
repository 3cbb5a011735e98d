// The display, while the watched party is called and hangs up.
#include <csignal>

#include <gtest/gtest.h>

#include "Process.h"
#include "TelephoneClient.h"
#include "tests/doubles/TemporaryFolder.h"

using namespace telephone_client;

TEST(BusyLamps, WatchedParty_IsShownAsItChanges)
{
    TemporaryFolder const folder;
    std::string const socket = folder.file("socket");
    writeFile(folder.file("desk.toml"), "[[line]]\nid = \"4711\"\n\n"
                                        "[[key]]\nnumber = 1\nfunction = \"blf\"\ntarget = \"102\"\nlabel = \"Ann\"\n\n"
                                        "[[key]]\nnumber = 2\nfunction = \"blf\"\ntarget = \"103\"\n");
    Process telephone({TELEPHONE, "--time", "real", "--config", folder.file("desk.toml"), "--socket", socket, "serve"});
    telephone.readUntil("applications can connect at " + socket + "\n");
    Options options;
    options.address = socket;
    auto desk = Telephone::connect(options).value();

    Process display({BUSY_LAMPS, socket});
    display.readUntil("103: free\nAnn: free\n");
    desk.ask(requests::outgoingCallMakeRequest("4711", 1, "102")).value();
    display.readUntil("Ann: ringing\n");
    desk.ask(requests::callClearRequest(1)).value();
    display.readUntil("Ann: free\n");
    display.signal(SIGTERM);

    EXPECT_EQ(display.wait(), 0);
    EXPECT_EQ(display.output(), "103: free\nAnn: free\nAnn: ringing\nAnn: free\n");
}

TEST(BusyLamps, WithoutATelephone_SaysSo)
{
    TemporaryFolder const folder;

    Ended const ended = run({BUSY_LAMPS, folder.file("nobody")});

    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.output,
              "busy-lamps: no telephone answers at " + folder.file("nobody") + " (No such file or directory)\n");
}
