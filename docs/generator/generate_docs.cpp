// Writes docs/requests.md and docs/events.md from the tables of the requests and the events.
//
// generate_docs FOLDER          writes both pages   generate_docs --check FOLDER  compares both pages with the tables;
// exits with 1 when one differs
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"

namespace {
std::string_view meaningOf(RequestParameterKind kind)
{
    switch (kind) {
    case RequestParameterKind::text:
        return "text; missing: empty";
    case RequestParameterKind::integer:
        return "integer; missing: -1";
    case RequestParameterKind::flag:
        return "flag, 0 is false and every other number true; missing: true";
    case RequestParameterKind::word:
        return "`TRUE` is true, everything else false; missing: false";
    case RequestParameterKind::serviceState:
        return "word of a service state; missing: `sfiServiceOutOfService`";
    case RequestParameterKind::body:
        return "no element: everything after `</Line>`, unchanged";
    }
    return {};
}

std::string answerOf(RequestDescription const& request)
{
    std::string const form = "`" + std::string(request.answerForm) + "`";
    switch (request.answer) {
    case RequestAnswer::resultWord:
        return "a result word";
    case RequestAnswer::wordAndValue:
        return "a result word and a value, " + form;
    case RequestAnswer::texts:
        return "the texts run together; `sfiFailure` when there are none";
    case RequestAnswer::truth:
        return form;
    case RequestAnswer::elements:
        return form;
    case RequestAnswer::fixedText:
        return "always " + form;
    case RequestAnswer::nothing:
        return "none, only the end of the request";
    }
    return {};
}

std::string_view sampleOf(RequestParameter const& parameter)
{
    if (parameter.tag == "Line" || parameter.tag == "deviceID") {
        return "4711";
    }
    switch (parameter.kind) {
    case RequestParameterKind::text:
        return "text";
    case RequestParameterKind::integer:
    case RequestParameterKind::flag:
        return "1";
    case RequestParameterKind::word:
        return "TRUE";
    case RequestParameterKind::serviceState:
        return "sfiServiceInService";
    case RequestParameterKind::body:
        return "<Body>text</Body>";
    }
    return {};
}

void writeRequest(std::ostream& out, RequestDescription const& request)
{
    out << "\n## " << request.name << "\n\n" << request.meaning << "\n\n";
    if (request.parameters.size() > 0) {
        out << "| parameter | value |\n|---|---|\n";
        for (auto const& parameter : request.parameters) {
            out << "| " << parameter.tag << " | " << meaningOf(parameter.kind) << " |\n";
        }
        out << '\n';
    }
    out << "Answer: " << answerOf(request) << ".\n\n```\n<Method>" << request.name << "</Method>";
    for (auto const& parameter : request.parameters) {
        if (parameter.kind == RequestParameterKind::body) {
            out << sampleOf(parameter);
        } else {
            out << '<' << parameter.tag << '>' << sampleOf(parameter) << "</" << parameter.tag << '>';
        }
    }
    out << "\n```\n";
}

std::string requestsPage()
{
    std::ostringstream out;
    out << "# Requests\n\n"
           "<!-- Written by generate_docs from include/CommunicationsServiceRequests.h. -->\n\n"
           "A request is one text: the element `Method` with the name, and an element for each parameter, in any\n"
           "order, with nothing between them. Names are case-sensitive. Values are not escaped, so a value cannot\n"
           "contain its own closing tag. If an element occurs twice, the first one applies. A missing element is not\n"
           "an error: it reads as the default of its kind. A number may begin with blanks and a sign; anything after\n"
           "its digits is ignored, a value without digits is 0, and a number beyond 32 bits reads as the largest or\n"
           "smallest one. platform/sfi/SfiTypes.h lists the numbers of reasons, causes, features and types.\n\n"
           "The answer is one text. The result words are ";
    char const* separator = "";
    for (auto const word : kRequestResultWords) {
        out << separator << '`' << word << '`';
        separator = ", ";
    }
    out << ".\nThe answer to an unknown method is `sfiFailure`, and so is an answer that would be empty.\n\n"
           "The words of a service state are ";
    separator = "";
    for (auto const word : kRequestServiceStates) {
        out << separator << '`' << word << '`';
        separator = ", ";
    }
    out << ".\n\nA text that begins with `SigEvent:` is a notice of the signalling component: it is passed on and not "
           "answered.\n\n"
        << "There are " << kRequestCount
        << " requests. The file tests/golden/requests.json has the exact texts of each.\n";
    for (auto const& request : kRequestDescriptions) {
        writeRequest(out, request);
    }
    return out.str();
}

std::string_view meaningOf(EventElementKind kind)
{
    switch (kind) {
    case EventElementKind::text:
        return "text";
    case EventElementKind::cutText:
        return "text, up to its first NUL";
    case EventElementKind::integer:
        return "integer";
    case EventElementKind::count:
        return "unsigned integer";
    case EventElementKind::flag:
        return "1 or 0";
    case EventElementKind::list:
        return "list, in the framework's form";
    case EventElementKind::body:
        return "no element: the text follows unchanged";
    }
    return {};
}

void writeEvent(std::ostream& out, EventDescription const& event)
{
    out << "\n## " << event.operation << "\n\n" << event.meaning << "\n\n";
    if (event.method.empty()) {
        return;
    }
    if (event.elements.size() > 0) {
        out << "| element | value |\n|---|---|\n";
        for (auto const& element : event.elements) {
            out << "| " << element.tag << " | " << meaningOf(element.kind) << " |\n";
        }
        out << '\n';
    }
    out << "```\n<Method>" << event.method << "</Method>";
    for (auto const& element : event.elements) {
        if (element.kind == EventElementKind::body) {
            out << "...";
        } else {
            out << '<' << element.tag << ">...</" << element.tag << '>';
        }
    }
    out << "\n```\n";
}

std::string eventsPage()
{
    std::ostringstream out;
    out << "# Events\n\n"
           "<!-- Written by generate_docs from include/CommunicationsServiceEvents.h. -->\n\n"
           "An event is one text under the protocol `CommunicationsServiceProtocol`: the element `Method`, then\n"
           "every element of its table, in this order, with nothing between them. No element is ever left out.\n"
           "Values are not escaped. Integers and enumerations are signed decimals; platform/sfi/SfiTypes.h lists the\n"
           "numbers of states, reasons and types. The spelling of the tags differs from event to event and is part of\n"
           "the protocol.\n\n"
        << "There are " << kEventCount
        << " events, named here by the operation that sends them. The file tests/golden/events.json has\n"
           "the exact texts of each.\n";
    for (auto const& event : kEventDescriptions) {
        writeEvent(out, event);
    }
    return out.str();
}

std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool isUpToDate(std::string const& path, std::string const& page)
{
    if (contentOf(path) == page) {
        return true;
    }
    std::cerr << path << " differs from the tables: build the target write_docs\n";
    return false;
}

bool write(std::string const& path, std::string const& page)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << page;
    file.close();
    if (!file) {
        std::cerr << path << " cannot be written\n";
        return false;
    }
    return true;
}
}  // namespace

int main(int argc, char** argv)
{
    bool const check = argc == 3 && std::string_view(argv[1]) == "--check";
    if (argc != 2 && !check) {
        std::cerr << "usage: generate_docs [--check] FOLDER\n";
        return 2;
    }
    std::string const folder = argv[argc - 1];
    auto const handle = check ? isUpToDate : write;
    bool const requests = handle(folder + "/requests.md", requestsPage());
    bool const events = handle(folder + "/events.md", eventsPage());
    return requests && events ? 0 : 1;
}
