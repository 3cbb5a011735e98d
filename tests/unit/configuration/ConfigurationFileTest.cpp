// The contents of a configuration file, and the refusals of a wrong one.
#include "telephone/configuration/ConfigurationFile.h"

#include <gtest/gtest.h>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

Configuration parse(std::string const& text)
{
    return ConfigurationFile("desk.toml").parse(text).value();
}

std::string errorOf(std::string const& text)
{
    auto const outcome = ConfigurationFile("desk.toml").parse(text);
    return outcome ? "accepted" : outcome.error().reason;
}

std::string errorOfFile(std::string const& path)
{
    auto const outcome = ConfigurationFile(path).read();
    return outcome ? "accepted" : outcome.error().reason;
}

TEST(ConfigurationFile, EmptyFile_DescribesTheStandardTelephone)
{
    auto const configuration = parse("");

    ASSERT_EQ(configuration.lines.size(), 2U);
    EXPECT_EQ(configuration.lines[0].id, "4711");
    EXPECT_EQ(configuration.lines[0].number, 1);
    EXPECT_TRUE(configuration.lines[0].primary);
    EXPECT_EQ(configuration.lines[1].id, "4712");
    EXPECT_EQ(configuration.lines[1].number, 2);
    EXPECT_FALSE(configuration.lines[1].primary);
    EXPECT_TRUE(configuration.keyset);
    EXPECT_TRUE(configuration.exchange.enabled);
    EXPECT_EQ(configuration.sip.address, "127.0.0.1");
}

TEST(ConfigurationFile, EmptyFile_HasTheStandardKeys)
{
    std::string keys;
    for (auto const& key : parse("").keys) {
        EXPECT_FALSE(key.monitorOnly) << key.number;
        keys += std::to_string(key.number) + " " + key.function + " " + key.target + " " + key.label + "\n";
    }

    EXPECT_EQ(keys,
              "1 line 4711 4711\n2 line 4712 4712\n3 dss 4712 Desk 4712\n4 blf 102 Watch 102\n5 forwarding  Forward\n"
              "6 dnd  Do not disturb\n7 hold  Hold\n8 mute  Mute\n9 headset  Headset\n10 messages  Messages\n"
              "11 toggle 1 Feature 1\n12 release  Release\n13 preview  Preview\n14 ignore  Ignore\n"
              "15 transfer  Transfer\n");
}

TEST(ConfigurationFile, DnsServers_HaveAddressesWithOrWithoutPorts)
{
    auto const configuration = parse("[dns]\nservers = [\"192.0.2.53\", \"127.0.0.1:5353\", \"[::1]:53\", \"::1\"]\n"
                                     "[server]\nregistrar = \"sip:pbx.example\"\n");

    EXPECT_EQ(configuration.dns.servers, (std::vector<std::string>{"192.0.2.53", "127.0.0.1:5353", "[::1]:53", "::1"}));
    EXPECT_EQ(configuration.server.registrar, "sip:pbx.example");
}

TEST(ConfigurationFile, NumbersOfTheExchange_HaveStepsInOneTextOrSeveral)
{
    auto const configuration =
        parse("[[exchange.number]]\nnumber = \"107\"\nname = \"Ann\"\ndoes = \"ring 2s, answer\"\n"
              "[[exchange.number]]\nnumber = \"108\"\ndoes = [\"ring\", \"answer\"]\nlamp = \"holding\"\n");

    ASSERT_EQ(configuration.exchangeNumbers.size(), 2U);
    EXPECT_EQ(configuration.exchangeNumbers[0].name, "Ann");
    EXPECT_EQ(configuration.exchangeNumbers[0].does.list, (std::vector<std::string>{"ring 2s, answer"}));
    EXPECT_EQ(configuration.exchangeNumbers[1].does.list, (std::vector<std::string>{"ring", "answer"}));
    EXPECT_EQ(configuration.exchangeNumbers[1].lamp, 4);
}

TEST(ConfigurationFile, KeysetOffWithoutLines_KeepsTheFirstStandardLine)
{
    auto const configuration = parse("keyset = false");

    ASSERT_EQ(configuration.lines.size(), 1U);
    EXPECT_EQ(configuration.lines[0].id, "4711");
    ASSERT_EQ(configuration.keys.size(), 1U);
    EXPECT_EQ(configuration.keys[0].target, "4711");
}

TEST(ConfigurationFile, LinesWithoutNumbersOrKeys_AreCountedAndGetAKeyEach)
{
    auto const configuration = parse("[[line]]\nid = \"10\"\n[[line]]\nid = \"20\"\nprimary = true\n");

    ASSERT_EQ(configuration.lines.size(), 2U);
    EXPECT_EQ(configuration.lines[1].number, 2);
    EXPECT_EQ(configuration.lines[1].overviewPosition, 2);
    EXPECT_FALSE(configuration.lines[0].primary);
    EXPECT_TRUE(configuration.lines[1].primary);
    ASSERT_EQ(configuration.keys.size(), 2U);
    EXPECT_EQ(configuration.keys[1].number, 2);
    EXPECT_EQ(configuration.keys[1].function, "line");
    EXPECT_EQ(configuration.keys[1].target, "20");
}

TEST(ConfigurationFile, NoLineSaysPrimary_TheFirstOneIs)
{
    auto const configuration = parse("[[line]]\nid = \"10\"\n[[line]]\nid = \"20\"\n");

    EXPECT_TRUE(configuration.lines[0].primary);
    EXPECT_FALSE(configuration.lines[1].primary);
}

TEST(ConfigurationFile, EveryKindOfValue_IsRead)
{
    auto const configuration = parse("[sip]\ntransport = \"tcp\"\nport = 5062\n"
                                     "[server]\nmessage-waiting = false\nregistrar = \"sip:10.0.0.1:5060\"\n"
                                     "[calls]\ndo-not-disturb-status = 480\nemergency-numbers = [\"110\", \"112\"]\n"
                                     "[[line]]\nid = \"1\"\nshared-line-type = \"bridged\"\nhot-warm = \"hot\"\n"
                                     "hot-warm-digits = \"9\"\n");

    EXPECT_EQ(configuration.sip.transport, Transport::kTcp);
    EXPECT_EQ(configuration.sip.port, 5062);
    EXPECT_FALSE(configuration.server.messageWaiting);
    EXPECT_EQ(configuration.server.registrar, "sip:10.0.0.1:5060");
    EXPECT_EQ(configuration.calls.doNotDisturbStatus, 480);
    EXPECT_EQ(configuration.calls.emergencyNumbers, (std::vector<std::string>{"110", "112"}));
    EXPECT_EQ(configuration.lines[0].sharedLineType, 2);
    EXPECT_EQ(configuration.lines[0].hotWarmType, 1);
}

struct Wrong
{
    char const* name;
    char const* text;
    char const* error;
};

class WrongConfiguration : public testing::TestWithParam<Wrong>
{};

TEST_P(WrongConfiguration, IsRefused_WithFileLineAndWhatWasExpected)
{
    EXPECT_EQ(errorOf(GetParam().text), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    ConfigurationFile, WrongConfiguration,
    testing::Values(
        Wrong{"UnknownSection", "\n[sipp]\nport = 1\n",
              "desk.toml:2: there is no section or key \"sipp\"; the nearest is \"sip\""},
        Wrong{"UnknownTopKey", "keysets = true\n",
              "desk.toml:1: there is no section or key \"keysets\"; the nearest is \"keyset\""},
        Wrong{"UnknownKey", "[sip]\naddress = \"127.0.0.1\"\nprot = 5060\n",
              "desk.toml:3: there is no key \"prot\" in [sip]; the nearest is \"port\""},
        Wrong{"UnknownKeyOfALine", "[[line]]\nid = \"1\"\n[[line]]\nid = \"2\"\npasword = \"x\"\n",
              "desk.toml:5: there is no key \"pasword\" in [line]; the nearest is \"password\""},
        Wrong{"TextForInteger", "[sip]\nport = \"5060\"\n",
              "desk.toml:2: sip.port takes an integer from 0 to 65535, not the text \"5060\""},
        Wrong{"IntegerOutOfRange", "[sip]\nport = 65536\n",
              "desk.toml:2: sip.port takes an integer from 0 to 65535, not the integer 65536"},
        Wrong{"NegativeInteger", "[calls]\ncall-backs = -1\n",
              "desk.toml:2: calls.call-backs takes an integer from 0 to 100, not the integer -1"},
        Wrong{"IntegerForFlag", "keyset = 1\n", "desk.toml:1: keyset takes true or false, not the integer 1"},
        Wrong{"FlagForText", "[store]\npath = true\n", "desk.toml:2: store.path takes a text, not true"},
        Wrong{"FloatForInteger", "[log]\nlevel = 4.0\n",
              "desk.toml:2: log.level takes an integer from 0 to 6, not a value of type floating-point"},
        Wrong{"UnknownWord", "[sip]\ntransport = \"sctp\"\n",
              "desk.toml:2: sip.transport takes one of udp, tcp, tls, not the text \"sctp\""},
        Wrong{"UnknownWordForInteger", "[[line]]\nid = \"1\"\nhot-warm = \"cold\"\n",
              "desk.toml:3: line.hot-warm takes one of none, hot, warm, not the text \"cold\""},
        Wrong{"IntegerForWord", "[[line]]\nid = \"1\"\nhot-warm = 1\n",
              "desk.toml:3: line.hot-warm takes one of none, hot, warm, not the integer 1"},
        Wrong{"NumberThatIsNoChoice", "[calls]\ndo-not-disturb-status = 481\n",
              "desk.toml:2: calls.do-not-disturb-status takes one of 480, 486, not the integer 481"},
        Wrong{"TextForNumberChoice", "[calls]\ndo-not-disturb-status = \"486\"\n",
              "desk.toml:2: calls.do-not-disturb-status takes one of 480, 486, not the text \"486\""},
        Wrong{"TextForArray", "[calls]\nemergency-numbers = \"110\"\n",
              "desk.toml:2: calls.emergency-numbers takes an array of texts, not the text \"110\""},
        Wrong{"IntegerInArray", "[calls]\nemergency-numbers = [110]\n",
              "desk.toml:2: calls.emergency-numbers takes an array of texts, not the array [ 110 ]"},
        Wrong{"EmptyPasswordOfTheExchange", "[exchange]\npassword = \"\"\n",
              "desk.toml:2: exchange.password is empty: the lines need one to register"},
        Wrong{"RecordingFolderThatDoesNotExist", "[recording]\nfolder = \"/nonexistent/calls\"\n",
              "desk.toml:2: recording.folder \"/nonexistent/calls\" is not a folder that can be written"},
        Wrong{"CertificatesFolderThatIsAFile", "\n[certificates]\nfolder = \"/dev/null\"\n",
              "desk.toml:3: certificates.folder \"/dev/null\" is not a folder that can be read"},
        Wrong{"UnknownKeyOfAnExchangeNumber", "[[exchange.number]]\nnumber = \"107\"\ndo = \"busy\"\n",
              "desk.toml:3: there is no key \"do\" in [exchange.number]; the nearest is \"does\""},
        Wrong{"UnknownSectionOfTheExchange", "[[exchange.numbers]]\nnumber = \"107\"\n",
              "desk.toml:1: there is no key \"numbers\" in [exchange]; the nearest is \"number\""},
        Wrong{"SectionForExchangeNumbers", "[exchange.number]\nnumber = \"107\"\n",
              "desk.toml:1: \"exchange.number\" takes sections [[exchange.number]], not a value of type table"},
        Wrong{"IntegerForSteps", "[[exchange.number]]\nnumber = \"107\"\ndoes = 5\n",
              "desk.toml:3: exchange.number.does takes a text or an array of texts, not the integer 5"},
        Wrong{"UnknownLamp", "[[exchange.number]]\nnumber = \"107\"\nlamp = \"red\"\n",
              "desk.toml:3: exchange.number.lamp takes one of from-steps, idle, ringing, busy, holding, not the text "
              "\"red\""},
        Wrong{"ExchangeNumberWithoutNumber", "[[exchange.number]]\ndoes = \"busy\"\n",
              "desk.toml:1: exchange.number needs a number: number = \"110\""},
        Wrong{"DuplicateExchangeNumber",
              "[[exchange.number]]\nnumber = \"107\"\n\n[[exchange.number]]\nnumber = \"107\"\n",
              "desk.toml:4: exchange.number \"107\": number is already used on line 1"},
        Wrong{"ExchangeNumberWithoutExchange", "[exchange]\nenabled = false\n[[exchange.number]]\nnumber = \"107\"\n",
              "desk.toml:3: exchange.number \"107\": number is in vain: exchange.enabled is false"},
        Wrong{"ExchangeNumberAtAnotherServer",
              "[server]\nregistrar = \"sip:10.0.0.1\"\n[[exchange.number]]\nnumber = \"107\"\n",
              "desk.toml:3: exchange.number \"107\": number is in vain: server.registrar names another call server"},
        Wrong{
            "ForwardingOnBusyWithoutSteps", "[[exchange.number]]\nnumber = \"107\"\nforward-on-busy = \"100\"\n",
            "desk.toml:1: exchange.number \"107\": forward-on-busy needs does: without steps the number is never busy"},
        Wrong{"ForwardingOnNoReplyWithoutSteps",
              "[[exchange.number]]\nnumber = \"107\"\nforward-on-no-reply = \"100\"\n",
              "desk.toml:1: exchange.number \"107\": forward-on-no-reply needs does: without steps the number is not "
              "called here"},
        Wrong{"ForwardingToItself", "[[exchange.number]]\nnumber = \"107\"\nforward-always = \"107\"\n",
              "desk.toml:1: exchange.number \"107\": forwarding leads to the number itself"},
        Wrong{"ControlCharacter", "[sip]\nuser-agent = \"a\\r\\nX: y\"\n",
              "desk.toml:2: sip.user-agent takes a text, not the text \"a\r\nX: y\""},
        Wrong{"ValueForSection", "sip = 5060\n", "desk.toml:1: \"sip\" takes a section [sip], not the integer 5060"},
        Wrong{"SectionForSections", "[line]\nid = \"1\"\n",
              "desk.toml:1: \"line\" takes sections [[line]], not a value of type table"},
        Wrong{"DuplicateLineId", "[[line]]\nid = \"1\"\n\n[[line]]\nid = \"1\"\n",
              "desk.toml:4: the line id \"1\" is already used on line 1"},
        Wrong{"DuplicateLineNumber", "[[line]]\nid = \"1\"\nnumber = 2\n[[line]]\nid = \"2\"\n",
              "desk.toml:4: the line number 2 is already used on line 1"},
        Wrong{"TwoPrimaryLines", "[[line]]\nid = \"1\"\nprimary = true\n[[line]]\nid = \"2\"\nprimary = true\n",
              "desk.toml:4: primary = true is already used on line 1"},
        Wrong{"LineWithoutId", "[[line]]\nnumber = 1\n", "desk.toml:1: a line needs an id: id = \"4711\""},
        Wrong{"LineIdWithTag", "[[line]]\nid = \"<1>\"\n",
              "desk.toml:1: a line's id must not contain spaces, quotes, < or >: \"<1>\""},
        Wrong{"HotLineWithoutDigits", "[[line]]\nid = \"1\"\nhot-warm = \"warm\"\n",
              "desk.toml:1: line \"1\" dials by itself but has no hot-warm-digits"},
        Wrong{"SeveralLinesWithoutKeyset", "keyset = false\n[[line]]\nid = \"1\"\n[[line]]\nid = \"2\"\n",
              "desk.toml:4: a telephone with keyset = false has one line, not several"},
        Wrong{"LineNumberTooHigh", "[[line]]\nid = \"1\"\nnumber = 256\n",
              "desk.toml:3: line.number takes an integer from 1 to 255, not the integer 256"},
        Wrong{"DuplicateKeyNumber",
              "[[key]]\nnumber = 1\nfunction = \"dnd\"\n[[key]]\nnumber = 1\nfunction = \"hold\"\n",
              "desk.toml:4: the key number 1 is already used on line 1"},
        Wrong{"KeyWithoutNumber", "[[key]]\nfunction = \"dnd\"\n", "desk.toml:1: a key needs a number: number = 1"},
        Wrong{"KeyWithoutFunction", "[[key]]\nnumber = 3\n",
              "desk.toml:1: key 3 needs a function: function = \"line\""},
        Wrong{"KeyWithoutTarget", "[[key]]\nnumber = 3\nfunction = \"blf\"\n",
              "desk.toml:1: key 3 needs a target: the number or line of its function blf"},
        Wrong{"KeyForUnknownLine", "[[key]]\nnumber = 3\nfunction = \"line\"\ntarget = \"9\"\n",
              "desk.toml:1: key 3 is for line \"9\", which does not exist"},
        Wrong{"ToggleWithoutNumber", "[[key]]\nnumber = 3\nfunction = \"toggle\"\ntarget = \"x\"\n",
              "desk.toml:1: key 3 toggles a feature by its number, not \"x\""},
        Wrong{"UnknownFunction", "[[key]]\nnumber = 3\nfunction = \"coffee\"\n",
              "desk.toml:3: key.function takes one of line, dss, blf, forwarding, dnd, hold, mute, headset, messages, "
              "toggle, release, preview, ignore, transfer, not the text \"coffee\""},
        Wrong{"NoAddress", "[sip]\naddress = \"desk.example\"\n",
              "desk.toml:2: sip.address takes an IP address or a network interface of this machine, not "
              "\"desk.example\""},
        Wrong{"NoDnsServer", "[dns]\nservers = [\"192.0.2.53\", \"dns.example\"]\n",
              "desk.toml:2: dns.servers takes IP addresses with or without a port, not \"dns.example\""},
        Wrong{"DnsServerWithoutAPort", "[dns]\nservers = [\"192.0.2.53:0\"]\n",
              "desk.toml:2: dns.servers takes IP addresses with or without a port, not \"192.0.2.53:0\""},
        Wrong{"NoRegistrar", "[server]\nregistrar = \"10.0.0.1\"\n",
              "desk.toml:2: server.registrar takes sip:host:port or sips:host:port, not \"10.0.0.1\""},
        Wrong{"NoPushAddress", "[push]\naddress = \"ftp://x\"\n",
              "desk.toml:2: push.address takes http://host:port/path, not \"ftp://x\""},
        Wrong{"HttpWithoutPort", "[http]\naddress = \"127.0.0.1\"\n",
              "desk.toml:1: http.address takes host:port, not \"127.0.0.1\""},
        Wrong{"HttpPortTooHigh", "[http]\naddress = \"127.0.0.1:65536\"\n",
              "desk.toml:1: http.address takes host:port, not \"127.0.0.1:65536\""},
        Wrong{"HttpIpv6WithoutBrackets", "[http]\naddress = \"::1:80\"\n",
              "desk.toml:1: http.address takes host:port, not \"::1:80\""},
        Wrong{"TlsCertificateWithoutKey", "[sip]\ncertificate = \"c.pem\"\n",
              "desk.toml:1: sip.key is missing: TLS takes a certificate and its key"},
        Wrong{"TlsKeyWithoutCertificate", "[sip]\nkey = \"k.pem\"\n",
              "desk.toml:1: sip.certificate is missing: TLS takes a certificate and its key"},
        Wrong{"ExchangeCertificateWithoutKey", "[exchange]\ncertificate = \"c.pem\"\n",
              "desk.toml:1: exchange.key is missing: TLS takes a certificate and its key"},
        Wrong{"TlsAtAnExchangeWithout", "[sip]\ntransport = \"tls\"\n",
              "desk.toml:1: sip.transport = \"tls\" needs exchange.certificate and exchange.key, because the lines "
              "register "
              "at the built-in exchange"},
        Wrong{"HttpWithoutKey", "[http]\naddress = \"127.0.0.1:0\"\ncertificate = \"a.pem\"\n",
              "desk.toml:1: http.key is missing: HTTPS needs a certificate and its key"},
        Wrong{"HttpWithoutCertificate", "[http]\nkey = \"a.pem\"\n",
              "desk.toml:1: http.certificate is missing: HTTPS needs a certificate and its key"},
        Wrong{"HttpOpenToTheNetwork", "[http]\naddress = \"0.0.0.0:8080\"\n",
              "desk.toml:1: http.address \"0.0.0.0:8080\" can be reached from other machines, so it needs "
              "http.certificate and http.key; without them use 127.0.0.1"}),
    [](auto const& row) { return row.param.name; });

TEST(ConfigurationFile, Faults_AreRead)
{
    auto const configuration = parse("[[fault]]\nwhat = \"datagrams lost 2\"\nat = \"3s\"\nfor = \"1\"\n"
                                     "[[fault]]\nwhat = \"store full\"\nafter = 5\n"
                                     "[[fault]]\nwhat = \"lamps stuck\"\non = \"CallHeldEvent\"\n");

    ASSERT_EQ(configuration.faults.size(), 3U);
    EXPECT_EQ(configuration.faults[0].what, "datagrams lost 2");
    EXPECT_EQ(configuration.faults[0].at, "3s");
    EXPECT_EQ(configuration.faults[0].lasts, "1");
    EXPECT_EQ(configuration.faults[1].after, 5);
    EXPECT_EQ(configuration.faults[2].on, "CallHeldEvent");
}

TEST(ConfigurationFile, FaultWithoutWhatOrWithTwoMoments_IsRefusedWithItsLine)
{
    EXPECT_EQ(errorOf("[[fault]]\nat = \"3s\"\n"), "desk.toml:1: a fault needs what: what = \"store full\"");
    EXPECT_EQ(errorOf("[[fault]]\nwhat = \"store full\"\n\n[[fault]]\nwhat = \"lamps stuck\"\nat = \"3\"\n"
                      "after = 2\n"),
              "desk.toml:4: a fault begins at one moment: only one of at, on and after can be given");
    EXPECT_EQ(errorOf("[[fault]]\nwhat = \"store full\"\nafter = -1\n"),
              "desk.toml:3: fault.after takes an integer from 0 to 1000000, not the integer -1");
}

TEST(ConfigurationFile, HttpOnThisMachine_NeedsNoCertificate)
{
    for (char const* const address : {"127.0.0.1:8080", "127.1.2.3:0", "localhost:80", "[::1]:8080"}) {
        auto const text = "[http]\naddress = \"" + std::string(address) + "\"\n";
        EXPECT_EQ(ConfigurationFile("desk.toml").parse(text).value().http.address, address);
    }
}

TEST(ConfigurationFile, HttpOpenToTheNetwork_WithACertificateIsAccepted)
{
    auto const http = ConfigurationFile("desk.toml")
                          .parse("[http]\naddress = \"0.0.0.0:443\"\ncertificate = \"c.pem\"\nkey = \"k.pem\"\n")
                          .value()
                          .http;

    EXPECT_EQ(http.address, "0.0.0.0:443");
    EXPECT_EQ(http.certificate, "c.pem");
    EXPECT_EQ(http.key, "k.pem");
}

TEST(ConfigurationFile, SessionTimer_IsOffOrAtLeastNinetySeconds)
{
    EXPECT_EQ(errorOf("[calls]\nsession-expires = 60\n"),
              "desk.toml:2: calls.session-expires takes 0, or 90 or more, not 60");
    EXPECT_EQ(ConfigurationFile("desk.toml").parse("[calls]\nsession-expires = 0\n").value().calls.sessionExpires, 0);
    EXPECT_EQ(ConfigurationFile("desk.toml").parse("[calls]\nsession-expires = 90\n").value().calls.sessionExpires, 90);
}

TEST(ConfigurationFile, BrokenSyntax_IsRefusedWithItsLine)
{
    auto const error = errorOf("[sip]\nport = 1\naddress = \n");

    EXPECT_TRUE(error.starts_with("desk.toml:3: ")) << error;
}

TEST(ConfigurationFile, KeyTwice_IsRefusedWithItsLine)
{
    auto const error = errorOf("[sip]\nport = 1\nport = 2\n");

    EXPECT_TRUE(error.starts_with("desk.toml:3: ")) << error;
}

TEST(ConfigurationFile, BinaryFile_IsRefused)
{
    EXPECT_TRUE(errorOf(std::string("\x00\xff\xfe\x01", 4)).starts_with("desk.toml:1: "));
}

TEST(ConfigurationFile, MissingFile_IsNamedWithTheReason)
{
    EXPECT_EQ(errorOfFile("/nonexistent/desk.toml"),
              "configuration file \"/nonexistent/desk.toml\" cannot be read: No such file or directory");
}

TEST(ConfigurationFile, FolderInsteadOfFile_IsRefused)
{
    TemporaryFolder const folder;

    EXPECT_EQ(errorOfFile(folder.path()),
              "configuration file \"" + folder.path() + "\" cannot be read: it is a folder");
}

TEST(ConfigurationFile, FileOnDisk_IsReadAndNamedInMessages)
{
    TemporaryFolder const folder;
    writeFile(folder.file("a.toml"), "[sip]\nport = 7\n");
    writeFile(folder.file("b.toml"), "[sip]\nport = true\n");

    EXPECT_EQ(ConfigurationFile(folder.file("a.toml")).read().value().sip.port, 7);
    EXPECT_EQ(errorOfFile(folder.file("b.toml")),
              folder.file("b.toml") + ":2: sip.port takes an integer from 0 to 65535, not true");
}

}  // namespace
}  // namespace telephone
