// The start and the end of the program.
#include <array>
#include <fstream>
#include <regex>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "RunningTelephone.h"
#include "telephone/base/Version.h"

TEST(Life, Signal_EndsTheTelephoneWellAndRemovesItsSocket)
{
    for (int const signal : {SIGTERM, SIGINT, SIGHUP}) {
        RunningTelephone telephone;
        ASSERT_TRUE(std::filesystem::exists(telephone.socket()));

        telephone.process().signal(signal);

        EXPECT_EQ(telephone.process().wait(), 0) << telephone.process().output();
        EXPECT_FALSE(std::filesystem::exists(telephone.socket()));
    }
}

TEST(Life, Signal_InTheMiddleOfCalls_EndsThemAndTheTelephone)
{
    RunningTelephone telephone;
    Application application(telephone.socket());
    application.request(method("Subscribe"));
    for (int call = 1; call <= 5; ++call) {
        application.request(method("OutgoingCallMakeRequest", "<Line>4711</Line><CallID>" + std::to_string(call) +
                                                                  "</CallID><Destination>102</Destination>"));
    }
    application.event("<CallState>3</CallState>");

    telephone.process().signal(SIGTERM);

    EXPECT_EQ(telephone.process().wait(), 0) << telephone.process().output();
}

TEST(Life, SecondTelephoneAtTheSocket_IsRefusedAndTheFirstGoesOn)
{
    RunningTelephone telephone;

    Ended const second = run({TELEPHONE, "--log-level", "0", "--socket", telephone.socket(), "serve"});

    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.output, "telephone: the application socket " + telephone.socket() +
                                 " belongs to a running telephone: end it, or name another path with --socket\n");
    Application application(telephone.socket());
    EXPECT_EQ(application.request(method("GetServiceState")), "sfiSuccess,sfiServiceInService");
}

TEST(Life, KilledTelephone_LeavesItsSocketToTheNext)
{
    TemporaryFolder const folder;
    std::string const socket = folder.file("socket");
    {
        Process killed({TELEPHONE, "--socket", socket, "serve"});
        killed.readUntil("applications can connect at");
        killed.signal(SIGKILL);
        killed.wait();
    }
    ASSERT_TRUE(std::filesystem::exists(socket));

    Process next({TELEPHONE, "--socket", socket, "serve"});
    next.readUntil("applications can connect at " + socket + "\n");

    next.signal(SIGTERM);
    EXPECT_EQ(next.wait(), 0) << next.output();
}

TEST(Life, LibraryThatIsNotThere_IsToldWithItsName)
{
    Ended const result = run({TELEPHONE, "--library", "/no/such/library.so", "console"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "telephone: cannot load the service library: /no/such/library.so: cannot open shared "
                             "object file: No such file or directory\n");
}

TEST(Life, LibraryOfAnotherKind_IsRefusedWithWhatIsMissing)
{
    Ended const result = run({TELEPHONE, "--library", "libm.so.6", "console"});

    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("not a communications service library, it has no createCommunicationsService"),
              std::string::npos)
        << result.output;
}

TEST(Life, LibraryNamedByTheEnvironment_IsLoaded)
{
    Process process({TELEPHONE, "console"}, {"COMMUNICATIONS_SERVICE_LIBRARY=/no/such/library.so"});

    EXPECT_EQ(process.wait(), 1);
    EXPECT_NE(process.output().find("/no/such/library.so"), std::string::npos) << process.output();
}

TEST(Life, WrongOption_IsToldAndEndsWithTwo)
{
    Ended const result = run({TELEPHONE, "--no-such-option"});

    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.output.find("--no-such-option"), std::string::npos) << result.output;
    EXPECT_EQ(run({TELEPHONE, "juggle"}).status, 2);
    EXPECT_EQ(run({TELEPHONE, "--log-level", "7"}).status, 2);
}

TEST(Life, HelpAndVersion_EndWithZero)
{
    EXPECT_EQ(run({TELEPHONE, "--version"}).output, "telephone " + std::string(telephone::kTelephoneVersion) + "\n");
    Ended const help = run({TELEPHONE, "--help"});
    EXPECT_EQ(help.status, 0);
    for (char const* const command : {"console", "tour", "play", "serve", "exchange", "request", "watch", "store",
                                      "describe", "--config", "--no-exchange"}) {
        EXPECT_NE(help.output.find(command), std::string::npos) << command;
    }
}

TEST(Life, WrongConfiguration_IsRefusedWithFileAndLine)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    std::ofstream(file) << "[sip]\nport = \"many\"\n";

    Ended const result = run({TELEPHONE, "--config", file, "console"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind("telephone: " + file + ":2", 0), 0U) << result.output;
}

TEST(Life, StepsThatCannotFollow_AreToldWithTheirKey)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    std::ofstream(file) << "[[exchange.number]]\nnumber = \"107\"\ndoes = \"busy, answer\"\n";

    Ended const result = run({TELEPHONE, "--config", file, "console"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output),
              "telephone: exchange.number \"107\": does: \"answer\" is not possible while there is no call; possible "
              "there: call, wait, seize");
}

TEST(Life, PortThatIsTaken_IsToldWithThePort)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    Process exchange({TELEPHONE, "exchange"});
    exchange.readUntil("the exchange is sip:127.0.0.1:");
    exchange.readUntil("\n");
    std::string const head = exchange.output().substr(0, exchange.output().find('\n'));
    std::string const port = head.substr(head.rfind(':') + 1);
    std::ofstream(file) << "[sip]\nport = " << port << "\n";

    Ended const result = run({TELEPHONE, "--time", "real", "--config", file, "--log-level", "0", "console"});

    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find(port), std::string::npos) << result.output;
}

TEST(Life, ExchangeAlone_ServesATelephoneOfAnotherProcess)
{
    TemporaryFolder const folder;
    Process exchange({TELEPHONE, "exchange"});
    exchange.readUntil("the exchange is sip:127.0.0.1:");
    exchange.readUntil("199");
    std::string const head = exchange.output().substr(0, exchange.output().find('\n'));
    std::string const address = head.substr(head.find("sip:"));
    std::string const file = folder.file("telephone.toml");
    std::ofstream(file) << "[server]\nregistrar = \"" << address
                        << "\"\n[[line]]\nid = \"4711\"\npassword = \"secret\"\nprimary = true\n";

    Ended const result = run({TELEPHONE, "--time", "real", "--config", file, "play", "-"},
                             "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                             "wait CallStateChangeEvent CallID=1 CallState=connected\n");

    EXPECT_EQ(result.status, 0) << result.output;
    exchange.signal(SIGTERM);
    EXPECT_EQ(exchange.wait(), 0);
}

TEST(Life, WithoutExchange_TheTelephoneStartsAndRefusesNumbers)
{
    Ended const result = run({TELEPHONE, "--no-exchange", "play", "-"}, "GetServiceState\nexpect answer sfiSuccess\n");

    EXPECT_EQ(result.status, 0) << result.output;
}

TEST(Life, FilesOfARun_BelongToTheirOwnerAloneAndHaveNoDigestResponses)
{
    TemporaryFolder const folder;
    constexpr std::array kFiles{"log", "store", "heard.wav"};
    writeFile(folder.file("a.toml"), "[log]\nlevel = 6\nfile = \"" + folder.file("log") + "\"\n[store]\npath = \"" +
                                         folder.file("store") + "\"\n[media]\nheard = \"" + folder.file("heard.wav") +
                                         "\"\n");
    ::umask(0022);

    for (char const* files : {"new", "there already, for everyone to read"}) {
        Ended const result = run({TELEPHONE, "--time", "virtual", "--config", folder.file("a.toml"), "play", "-"},
                                 "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                 "wait CallStateChangeEvent CallID=1 CallState=connected\n");

        EXPECT_EQ(result.status, 0) << result.output;
        for (char const* name : kFiles) {
            using std::filesystem::perms;
            EXPECT_EQ(std::filesystem::status(folder.file(name)).permissions(), perms(0600)) << name << ", " << files;
            std::filesystem::permissions(folder.file(name), perms(0644));
        }
    }
    std::string const log = contentOf(folder.file("log"));
    EXPECT_NE(log.find("Authorization: Digest username=\"4711\""), std::string::npos);
    EXPECT_NE(log.find("response=\"***\""), std::string::npos);
    EXPECT_FALSE(std::regex_search(log, std::regex("response=\"[0-9a-f]")));
}

TEST(Life, StartAndEnd_TwentyTimes_LeavesNothingBehind)
{
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(run({TELEPHONE, "--log-level", "0", "play", "-"}, "say hello\n").status, 0);
    }
}
