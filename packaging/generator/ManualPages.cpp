#include "ManualPages.h"

#include <array>
#include <utility>

#include "CommunicationsServiceEnumerations.h"
#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"
#include "Roff.h"
#include "telephone/access/Commands.h"
#include "telephone/base/Version.h"
#include "telephone/configuration/ConfigurationPage.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/Vocabulary.h"

namespace {

using telephone::kTelephoneVersion;

using Entries = std::pair<char const*, char const*>;

constexpr std::array<Entries, 4> kExitStatuses{{
    {"0",
     "It did what it was asked for. Of play, test and replay: every step held, every script passed, nothing differed."},
    {"1", "It did not; standard error says why. Of request: the answer reports a failure."},
    {"2", "The command line is wrong, or the file of test or replay cannot be used."},
    {"4", "With --check: a message contradicts the description of the protocol."},
}};

constexpr std::array<Entries, 3> kCheckStatuses{{
    {"0", "Nothing is missing."},
    {"1", "Functions are missing."},
    {"2", "A file cannot be read, or the command line is wrong."},
}};

constexpr std::array<Entries, 4> kVariables{{
    {"COMMUNICATIONS_SERVICE_LIBRARY", "The service library, unless --library names it."},
    {"NO_COLOR", "If it is set, output has no colours unless --color asks for them."},
    {"XDG_RUNTIME_DIR", "Folder of the socket for applications; without it /tmp/telephone-UID."},
    {"XDG_STATE_HOME", "The history of the console is in telephone/history below it; default: ~/.local/state."},
}};

constexpr std::array<Entries, 3> kFiles{{
    {"$XDG_RUNTIME_DIR/telephone.socket", "Where applications connect; --socket and the configuration name another."},
    {"~/.config/telephone/NAME.toml",
     "Configuration of the user service telephone@NAME, whose socket is $XDG_RUNTIME_DIR/telephone-NAME.socket."},
    {"share/doc/telephone",
     "All pages, also those that this one names (docs/...), and an example configuration; relative "
     "to where the telephone is installed, such as /usr."},
}};

constexpr std::array<Entries, 5> kExamples{{
    {"telephone tour --time virtual", "Shows calls, keys and lamps, with nothing to set up."},
    {"telephone --config desk.toml", "A telephone with a console, as the file describes it."},
    {"systemctl --user start telephone", "The standard telephone for applications, as a service of the user."},
    {"telephone request HoldCall Line=4711 CallID=1", "Puts a call of the running telephone on hold."},
    {"telephone watch --only CallHeldEvent", "Prints each time that a call is put on hold."},
}};

template <std::size_t kSize>
void addAll(Roff& page, std::array<Entries, kSize> const& entries)
{
    for (auto const& [term, meaning] : entries) {
        page.entry(term, meaning);
    }
}

// A sentence, from a meaning that was written for a table.
std::string sentence(std::string_view meaning)
{
    std::string text(meaning);
    return text.ends_with('.') ? text : text + '.';
}

// Without links and the marks of code, which belong to other kinds of pages: "[audio.md](audio.md)" is docs/audio.md.
std::string plain(std::string_view text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        auto const middle = text.find("](", at);
        auto const end = text.find(')', at);
        if (text[at] == '[' && middle < end && end != std::string_view::npos) {
            result += "docs/" + std::string(text.substr(middle + 2, end - middle - 2));
            at = end;
        } else if (text[at] != '`') {
            result += text[at];
        }
    }
    return result;
}

std::string termOf(OptionDescription const& option)
{
    std::string term;
    for (std::string const& name : option.names) {
        term += (term.empty() ? "" : ", ") + name;
    }
    if (option.value.empty()) {
        return term;
    }
    return term + (option.needsNoValue ? "[=" + option.value + "]" : " " + option.value);
}

std::string meaningOf(OptionDescription const& option)
{
    std::string meaning = sentence(option.meaning);
    if (!option.environment.empty()) {
        meaning += " The variable " + option.environment + " stands for it.";
    }
    return meaning;
}

// "play [OPTION]... FILE".
std::string usageOf(SubcommandDescription const& command)
{
    std::string usage = command.name + (command.options.empty() ? "" : " [OPTION]...");
    for (OptionDescription const& argument : command.arguments) {
        std::string const name = argument.names[0] + (argument.isRepeated ? "..." : "");
        usage += argument.isRequired ? " " + name : " [" + name + "]";
    }
    return usage;
}

void addCommand(Roff& page, SubcommandDescription const& command)
{
    page.subsection("telephone " + usageOf(command));
    page.paragraph(sentence(command.meaning));
    for (auto const* const options : {&command.arguments, &command.options}) {
        for (OptionDescription const& option : *options) {
            page.entry(options == &command.arguments ? option.names[0] : termOf(option), meaningOf(option));
        }
    }
}

void addSeeAlso(Roff& page, std::string_view others)
{
    page.section("SEE ALSO");
    page.paragraph(others);
}

constexpr char const* kTelephoneIntroduction = "A SIP telephone around the communications service of a desk "
                                               "telephone's framework. People use it on a console or as "
                                               "a page in a browser, programs through a socket or HTTP. Without a "
                                               "registrar in its configuration it has an exchange of "
                                               "its own, with numbers to call, and needs no network.";

constexpr char const* kCheckIntroduction =
    "Names the functions that LIBRARY, the service's shared library, needs and PROGRAM does not export, each with its "
    "header and its purpose. The shared libraries are those of the program that define parts of the platform. The "
    "program is not run.";

constexpr char const* kConfigurationIntroduction = "telephone --config FILE reads a TOML file. Without one, the "
                                                   "telephone has two lines, 4711 and 4712, at its built-in "
                                                   "exchange. Unknown keys and sections, values of another type and "
                                                   "values out of range are refused with the file and the "
                                                   "line. A section in two pairs of brackets may occur several times. "
                                                   "Relative paths start from the folder in which the "
                                                   "telephone is started.";

constexpr char const* kProtocolIntroduction =
    "Applications on the same machine connect to a UNIX stream socket. Each message ends with one NUL byte. An "
    "application "
    "sends requests, in full or in short, and the telephone's own commands; a request has an answer and ends with "
    "finished. "
    "After Subscribe, events follow. The same is offered over HTTP (docs/http.md). docs/protocol.md has all rules, "
    "docs/requests.md a recorded exchange for each request; telephone describe --json prints everything for programs.";

constexpr char const* kProtocolExample = "> <Method>GetServiceState</Method>\n"
                                         "< answer\n"
                                         "  sfiSuccess,sfiServiceInService\n"
                                         "< finished\n"
                                         "> HoldCall Line=4711 CallID=1\n"
                                         "< answer\n"
                                         "  sfiSuccess\n"
                                         "< finished";

template <typename Value>
std::string enumerationOf(Value const& value)
{
    return value.values == nullptr ? std::string() : std::string(value.values->name);
}

void addRequest(Roff& page, RequestDescription const& request)
{
    page.subsection(request.name);
    page.paragraph(request.meaning);
    for (RequestParameter const& parameter : request.parameters) {
        std::string const kind = plain(telephone::valueForm(parameter, enumerationOf(parameter)));
        page.entry(std::string(parameter.tag),
                   kind + ", " + std::string(telephone::needName(parameter.need)) + ". " + plain(parameter.meaning));
    }
    page.paragraph("Answer: " + plain(telephone::answerText(request)) + ". " + plain(request.promise));
    std::string events;
    for (std::string_view const event : request.events) {
        events += (events.empty() ? "" : ", ") + std::string(event);
    }
    page.paragraph("Events: " + (events.empty() ? "none" : events) + ".");
    page.example(telephone::sampleOf(request));
}

void addEvent(Roff& page, EventDescription const& event)
{
    page.subsection(event.method);
    page.paragraph(plain(event.meaning) + " " + plain(event.when));
    for (EventElement const& element : event.elements) {
        page.entry(std::string(element.tag),
                   plain(telephone::valueForm(element, enumerationOf(element))) + ". " + plain(element.meaning));
    }
}

void addEnumeration(Roff& page, Enumeration const& enumeration)
{
    page.subsection(enumeration.name);
    page.paragraph(enumeration.meaning);
    for (EnumerationValue const& value : enumeration) {
        page.entry(telephone::textOfValue(enumeration, value), std::string(value.name) + ": " + plain(value.meaning));
    }
}

}  // namespace

std::string telephonePage(CommandLineDescription const& line)
{
    Roff page("telephone", "1", kTelephoneVersion, "User Commands");
    page.section("NAME");
    page.name("telephone", "a SIP telephone for people, applications and tests");
    page.section("SYNOPSIS");
    page.usage("telephone [OPTION]... [COMMAND]");
    page.section("DESCRIPTION");
    page.paragraph(kTelephoneIntroduction);
    page.paragraph("Without a command it is a telephone with a console, whose command help lists what can be typed.");
    page.section("OPTIONS");
    page.paragraph("These may stand before and behind the command.");
    for (OptionDescription const& option : line.options) {
        page.entry(termOf(option), meaningOf(option));
    }
    page.section("COMMANDS");
    for (SubcommandDescription const& command : line.commands) {
        addCommand(page, command);
    }
    page.section("COMMANDS OF THE CONSOLE");
    page.paragraph("On the console, in scripts, on the socket of applications and with telephone do:");
    for (telephone::CommandDescription const& command : telephone::commandDescriptions()) {
        page.entry(command.name + (command.arguments.empty() ? "" : " ") + command.arguments, sentence(command.help));
    }
    page.section("EXIT STATUS");
    addAll(page, kExitStatuses);
    page.section("ENVIRONMENT");
    addAll(page, kVariables);
    page.section("FILES");
    addAll(page, kFiles);
    page.section("EXAMPLES");
    addAll(page, kExamples);
    addSeeAlso(page, "telephone.toml(5), telephone-protocol(7)");
    return page.text();
}

std::string checkPage()
{
    Roff page("telephone-check", "1", kTelephoneVersion, "User Commands");
    page.section("NAME");
    page.name("telephone-check", "what a program lacks that is to load the communications service");
    page.section("SYNOPSIS");
    page.usage("telephone-check LIBRARY PROGRAM [SHARED_LIBRARY_OF_THE_PROGRAM]...");
    page.section("DESCRIPTION");
    page.paragraph(kCheckIntroduction);
    page.section("EXIT STATUS");
    addAll(page, kCheckStatuses);
    addSeeAlso(page, "telephone(1); docs/porting.md");
    return page.text();
}

std::string configurationManual()
{
    Roff page("telephone.toml", "5", kTelephoneVersion, "File Formats");
    page.section("NAME");
    page.name("telephone.toml", "configuration of telephone(1)");
    page.section("DESCRIPTION");
    page.paragraph(kConfigurationIntroduction);
    page.section("KEYS");
    for (telephone::SectionDescription const& section : telephone::configurationSections()) {
        page.subsection(section.title);
        for (telephone::KeyDescription const& key : section.keys) {
            page.entry(std::string(key.name) + " = " + key.standard, sentence(plain(key.meaning)));
            page.below("Value: " + key.values + ".");
        }
    }
    page.section("EXAMPLE");
    page.paragraph("A line at a call server:");
    page.example("[[line]]\nid = \"201\"\npassword = \"...\"\n\n[sip]\naddress = \"192.0.2.7\"\n\n[server]\n"
                 "registrar = \"sip:pbx.example.org\"");
    page.paragraph("Every key with its default is in share/doc/telephone/docs/example.toml.");
    addSeeAlso(page, "telephone(1), telephone-protocol(7)");
    return page.text();
}

std::string protocolPage()
{
    Roff page("telephone-protocol", "7", kTelephoneVersion, "Miscellaneous");
    page.section("NAME");
    page.name("telephone-protocol", "requests and events of applications of telephone(1)");
    page.section("DESCRIPTION");
    page.paragraph(kProtocolIntroduction);
    page.paragraph("The application's side is marked >, the telephone's <:");
    page.example(kProtocolExample);
    page.section("REQUESTS");
    for (RequestDescription const& request : kRequestDescriptions) {
        addRequest(page, request);
    }
    page.section("EVENTS");
    for (EventDescription const& event : kEventDescriptions) {
        if (!event.method.empty()) {
            addEvent(page, event);
        }
    }
    page.section("ENUMERATIONS");
    for (auto const* const enumeration : kEnumerations) {
        addEnumeration(page, *enumeration);
    }
    addSeeAlso(page, "telephone(1), telephone.toml(5)");
    return page.text();
}
