#include "telephone/http/HttpRoutes.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include <httplib.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/access/Commands.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/base/Names.h"
#include "telephone/http/OpenApi.h"
#include "telephone/protocol/JsonText.h"

namespace telephone {

namespace {

constexpr char const* kTextType = "text/plain; charset=utf-8";
constexpr char const* kEventType = "text/event-stream";  // with a charset it would be compressed, and held back

tl::unexpected<Refusal> wrongInput(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

// What a session replied to one input.
struct Replies
{
    std::optional<std::string> answer;
    std::vector<std::string> reasons;
    bool finished = false;
    std::string result;
    std::optional<std::string> error;
};

template <typename Input>
Replies repliesOf(Session& session, Input const& input)
{
    Replies replies;
    session.handle(input, [&replies](Message const& message) {
        switch (message.kind) {
        case MessageKind::kAnswer:
            replies.answer = message.text;
            return;
        case MessageKind::kReason:
            replies.reasons.emplace_back(message.text);
            return;
        case MessageKind::kFinished:
            replies.finished = true;
            return;
        case MessageKind::kResult:
            replies.result = message.text;
            return;
        case MessageKind::kError:
            replies.error = message.text;
            return;
        case MessageKind::kRequest:
        case MessageKind::kEvent:
        case MessageKind::kGap:
        case MessageKind::kState:
            return;
        }
    });
    return replies;
}

HttpAccess& accessOf(HttpExchange& exchange)
{
    return static_cast<HttpAccess&>(exchange.site);
}

template <typename Input>
Replies repliesOf(HttpExchange& exchange, Input const& input, Session::Options options = {})
{
    HttpAccess& access = accessOf(exchange);
    Session session(access.nextName(), access.services, 1, [] {});
    session.options() = options;
    return repliesOf(session, input);
}

// Whether the parameter takes TRUE where others take 1.
bool takesWord(std::string const& request, std::string const& parameter)
{
    auto const* const description = findRequest(request);
    return description != nullptr && std::any_of(description->parameters.begin(), description->parameters.end(),
                                                 [&parameter](RequestParameter const& each) {
                                                     return equalIgnoringCase(each.tag, parameter) &&
                                                            each.kind == RequestParameterKind::word;
                                                 });
}

// A member of "parameters" as the short form has it.
Outcome<std::string> assignmentOf(std::string const& request, std::string const& name, Json const& value)
{
    if (value.is_string()) {
        return name + "=" + value.get<std::string>();
    }
    if (value.is_boolean()) {
        bool const isTrue = value.get<bool>();
        return name + "=" + (takesWord(request, name) ? (isTrue ? "TRUE" : "FALSE") : (isTrue ? "1" : "0"));
    }
    if (value.is_number_integer()) {
        return name + "=" + value.dump();
    }
    return wrongInput(fmt::format("the value of {} must be a text, an integer, true or false", name));
}

// The request of {"request": "HoldCall", "parameters": {"Line": "4711"}}.
Outcome<std::string> requestOf(Json const& name, Json const& parameters)
{
    if (!name.is_string() || !parameters.is_object()) {
        return wrongInput("\"request\" must be a text, and \"parameters\" an object");
    }
    Words words{name.get<std::string>()};
    for (auto const& [tag, value] : parameters.items()) {
        auto const assignment = assignmentOf(words.front(), tag, value);
        if (!assignment) {
            return tl::unexpected(assignment.error());
        }
        words.push_back(*assignment);
    }
    return requestText(words);
}

Outcome<std::string> requestOf(std::string_view body)
{
    Json const object = Json::parse(body, nullptr, false);
    if (!object.is_object()) {
        return wrongInput("the body begins as JSON and is not a JSON object");
    }
    bool const hasParameters = object.contains("parameters");
    if (object.contains("request") && object.size() == (hasParameters ? 2U : 1U)) {
        return requestOf(object["request"], hasParameters ? object["parameters"] : Json::object());
    }
    if (object.size() == 1 && object.contains("text") && object["text"].is_string()) {
        return object["text"].get<std::string>();
    }
    return wrongInput(R"(the object must have "request" and "parameters", or only "text")");
}

enum class InputKind
{
    kRequest,
    kCommand,
    kUnknown,  // the session says so
};

InputKind kindOf(std::string const& text)
{
    if (isRequestText(text)) {
        return InputKind::kRequest;
    }
    auto const words = splitWords(text);
    if (!words || words->empty()) {
        return InputKind::kUnknown;
    }
    if (findCommand(*words) != nullptr) {
        return InputKind::kCommand;
    }
    return findRequest(words->front()) != nullptr ? InputKind::kRequest : InputKind::kUnknown;
}

// Text that a session may handle.
Outcome<std::string> checkInput(std::string text, InputKind wrongKind, char const* elsewhere)
{
    if (text.find('\0') != std::string::npos) {
        return wrongInput("the text must not contain a NUL byte");
    }
    if (kindOf(text) == wrongKind) {
        return wrongInput(elsewhere);
    }
    return text;
}

void handleRequest(HttpExchange& exchange)
{
    std::string const body(trimmed(exchange.body));
    auto const text =
        (body.starts_with('{') ? requestOf(body) : Outcome<std::string>(body)).and_then([](std::string const& request) {
            return checkInput(request, InputKind::kCommand, "this is a command: send it to /commands");
        });
    if (!text) {
        return answerError(exchange.response, 400, text.error().reason);
    }
    Session::Options options;
    options.strict = !exchange.request.has_param("lenient");
    options.reasons = true;
    Replies const replies = repliesOf(exchange, std::string_view(*text), options);
    if (replies.error) {
        return answerError(exchange.response, 400, *replies.error);
    }
    answerJson(exchange.response, {{"answer", replies.answer ? Json(*replies.answer) : Json()},
                                   {"reasons", replies.reasons},
                                   {"finished", replies.finished}});
}

// A result that is JSON as JSON, any other as text.
Json jsonOfResult(std::string const& result)
{
    bool const mayBeJson = result.starts_with('{') || result.starts_with('[');
    Json value = mayBeJson ? Json::parse(result, nullptr, false) : Json(result);
    return value.is_discarded() ? Json(result) : value;
}

void handleCommand(HttpExchange& exchange)
{
    auto const text =
        checkInput(std::string(trimmed(exchange.body)), InputKind::kRequest, "this is a request: send it to /requests");
    if (!text) {
        return answerError(exchange.response, 400, text.error().reason);
    }
    Replies const replies = repliesOf(exchange, std::string_view(*text));
    if (replies.error) {
        return answerError(exchange.response, 400, *replies.error);
    }
    answerJson(exchange.response, {{"result", jsonOfResult(replies.result)}});
}

// Answers with the result of a command.
void answerResult(HttpExchange& exchange, Words const& command, char const* type)
{
    Replies const replies = repliesOf(exchange, command);
    if (replies.error) {
        return answerError(exchange.response, 400, *replies.error);
    }
    exchange.response.set_content(replies.result + "\n", type);
}

void describe(HttpExchange& exchange)
{
    if (exchange.request.has_param("name")) {
        return answerResult(exchange, {"describe", exchange.request.get_param_value("name")}, kTextType);
    }
    answerResult(exchange, {"describe", "json"}, kJsonType);
}

// The command `events` that a request for a stream stands for.
Words selectionOf(httplib::Request const& request)
{
    Words words{"events"};
    auto const append = [&words](char const* keyword, std::string const& value) {
        words.insert(words.end(), {keyword, value});
    };
    // A browser that reconnects asks for the address with its old query, and sends the header.
    if (request.has_header("Last-Event-ID")) {
        append("after", request.get_header_value("Last-Event-ID"));
    } else if (request.has_param("after")) {
        append("after", request.get_param_value("after"));
    }
    for (auto const& [keyword, parameter] : {std::pair{"of", "start"}, {"only", "only"}, {"line", "line"}}) {
        if (request.has_param(parameter)) {
            append(keyword, request.get_param_value(parameter));
        }
    }
    return words;
}

void streamEvents(HttpExchange& exchange)
{
    HttpAccess& access = accessOf(exchange);
    auto const stream = EventStream::open(access.nextName(), access.services, access.streams);
    if (!stream) {
        return answerError(exchange.response, 503, stream.error().reason);
    }
    Words const selection = selectionOf(exchange.request);
    bool const resumes = selection.size() > 1 && selection[1] == "after";
    (*stream)->addWords(exchange.request.has_param("words"));
    (*stream)->addSteps(exchange.request.has_param("steps"));
    if (auto const selected = (*stream)->select(selection, resumes); !selected) {
        return answerError(exchange.response, 400, selected.error().reason);
    }
    exchange.response.set_chunked_content_provider(
        kEventType, [stream = *stream](std::size_t, httplib::DataSink& sink) { return stream->write(sink); });
}

constexpr std::array kLenient{
    RouteParameter{"query", "lenient", "", "passes on unknown names and wrong values, which the service guesses at"},
};
constexpr std::array kName{
    RouteParameter{"query", "name", "string",
                   "only this request, event, command, enumeration or value, as text for people"},
};
constexpr std::array kSelection{
    RouteParameter{"header", "Last-Event-ID", "integer",
                   "the events after this number; browsers send it when they reconnect"},
    RouteParameter{"query", "after", "integer",
                   "the events after this number; without it, and without the header, from now on"},
    RouteParameter{"query", "start", "string",
                   "the start of the telephone that the number is of, as hello names it; if it is an "
                   "earlier one, the stream begins with a gap"},
    RouteParameter{"query", "only", "string", "names of events, separated by commas"},
    RouteParameter{"query", "line", "string", "lines, separated by commas; a line includes its appearances"},
    RouteParameter{"query", "words", "", "each event has \"words\", too: what the console writes about it"},
    RouteParameter{"query", "steps", "", "the steps of the trace that belong to calls come, too, as messages \"step\""},
};
constexpr std::array kRequestBodies{RouteContent{"text/plain", "RequestText"}, RouteContent{kJsonType, "Request"}};
constexpr std::array kCommandBodies{RouteContent{"text/plain", "CommandText"}};
constexpr std::array kText{RouteContent{"text/plain", "Text"}};
constexpr std::array kAnswer{RouteContent{kJsonType, "Answer"}};
constexpr std::array kResult{RouteContent{kJsonType, "Result"}};
constexpr std::array kHello{RouteContent{kJsonType, "Hello"}};
constexpr std::array kState{RouteContent{kJsonType, "State"}};
constexpr std::array kProtocol{RouteContent{kJsonType, "Protocol"}, RouteContent{"text/plain", "Text"}};
constexpr std::array kEvents{RouteContent{kEventType, "Events"}};
constexpr std::array kPanel{RouteContent{"text/html", "Text"}};
constexpr std::array kPage{RouteContent{kJsonType, "Page"}};

// clang-format off
constexpr std::array kRoutes{
    Route{"GET",  "/",             "this list",                                              {}, {}, kText, listAddresses},
    Route{"POST", "/requests",     "sends a request to the service and answers with its answer and the reasons", kLenient, kRequestBodies, kAnswer, handleRequest},
    Route{"POST", "/commands",     "runs a command of the telephone itself, as the console does", {}, kCommandBodies, kResult, handleCommand},
    Route{"GET",  "/state",        "the telephone at this moment",                           {}, {}, kState, [](HttpExchange& x) { answerResult(x, {"state"}, kJsonType); }},
    Route{"GET",  "/events",       "the events as they happen, as server-sent events",       kSelection, {}, kEvents, streamEvents},
    Route{"GET",  "/describe",     "the protocol",                                           kName, {}, kProtocol, describe},
    Route{"GET",  "/hello",        "which telephone this is, and whether it is ready",          {}, {}, kHello, [](HttpExchange& x) { answerResult(x, {"hello"}, kJsonType); }},
    Route{"GET",  "/panel",        "the telephone itself, as a page for a browser",         {}, {}, kPanel, [](HttpExchange& x) { answerPage(x, "index.html"); }},
    Route{"GET",  "/panel/{file}", "what the page consists of",                             kPageFile, {}, kPageFiles, servePageFile},
    Route{"GET",  "/openapi.json", "this interface as an OpenAPI page",                      {}, {}, kPage, [](HttpExchange& x) { x.response.set_content(openApiPage(), kJsonType); }},
};
// clang-format on

}  // namespace

std::span<Route const> telephoneRoutes()
{
    return kRoutes;
}

}  // namespace telephone
