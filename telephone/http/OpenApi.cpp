#include "telephone/http/OpenApi.h"

#include <algorithm>
#include <cctype>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Version.h"
#include "telephone/http/HttpRoutes.h"
#include "telephone/protocol/JsonText.h"

namespace telephone {

namespace {

// The contents of bodies, by the names in the table.
constexpr char const* kSchemas = R"({
  "Text": {"type": "string", "description": "for people"},
  "RequestText": {
    "type": "string",
    "description": "A request in full or in short form. Blanks and line ends around it are dropped.",
    "examples": ["HoldCall Line=4711 CallID=1", "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>"]
  },
  "Request": {
    "oneOf": [
      {
        "type": "object",
        "properties": {
          "request": {"type": "string", "description": "its name"},
          "parameters": {"type": "object", "additionalProperties": {"type": ["string", "integer", "boolean"]}}
        },
        "required": ["request"],
        "additionalProperties": false
      },
      {
        "type": "object",
        "properties": {"text": {"type": "string", "description": "the request, exactly as the service receives it"}},
        "required": ["text"],
        "additionalProperties": false
      }
    ],
    "examples": [{"request": "HoldCall", "parameters": {"Line": "4711", "CallID": 1}}]
  },
  "Answer": {
    "type": "object",
    "properties": {
      "answer": {"type": ["string", "null"], "description": "of the service; null: the request has none"},
      "reasons": {
        "type": "array",
        "items": {"type": "string"},
        "description": "why the request was refused or did nothing"
      },
      "finished": {"type": "boolean", "description": "the request is done"}
    },
    "required": ["answer", "reasons", "finished"],
    "additionalProperties": false,
    "examples": [{"answer": "sfiFailure", "reasons": ["line 4711 has no call 7; it has call 1"], "finished": true}]
  },
  "CommandText": {
    "type": "string",
    "description": "A command; help lists them. The options of a session (events, reasons, strict) have no effect here.",
    "examples": ["press 3", "call 4711 from 555"]
  },
  "Result": {
    "type": "object",
    "properties": {"result": {"description": "text; or what the command answers as JSON, as it is"}},
    "required": ["result"],
    "additionalProperties": false
  },
  "Hello": {
    "type": "object",
    "properties": {
      "telephone": {"type": "string"},
      "version": {"type": "string"},
      "protocol": {"type": "integer"},
      "start": {"type": "string", "description": "id of this start; events are numbered from 1 with each"},
      "ready": {"type": "boolean"},
      "domain": {"type": "string", "description": "of the telephone's own numbers"}
    },
    "required": ["telephone", "version", "protocol", "start", "ready", "domain"]
  },
  "State": {"type": "object", "description": "docs/state.schema.json describes it"},
  "Protocol": {"type": "object", "description": "docs/protocol.schema.json describes it"},
  "Events": {
    "type": "string",
    "description": "Server-sent events. The field \"id\" is the number of the event, \"event\" its name, \"data\" the event as JSON, with its elements by name and its text (\"raw\"). A stream that does not resume begins with \"hello\". If events that it asks for are no longer kept, \"gap\" names the first and last of them, and \"state\" follows."
  },
  "Page": {"type": "object", "description": "OpenAPI 3.1"},
  "Error": {
    "type": "object",
    "properties": {"error": {"type": "string", "description": "one sentence on what is wrong and what to do"}},
    "required": ["error"],
    "additionalProperties": false
  }
})";

Json contentOf(std::span<RouteContent const> contents)
{
    Json content = Json::object();
    for (RouteContent const& each : contents) {
        content[std::string(each.type)] = {{"schema", {{"$ref", fmt::format("#/components/schemas/{}", each.schema)}}}};
    }
    return content;
}

Json parametersOf(Route const& route)
{
    Json parameters = Json::array();
    for (RouteParameter const& each : route.parameters) {
        Json parameter{{"name", each.name}, {"in", each.place}, {"description", each.meaning}};
        if (each.place == "path") {
            parameter["required"] = true;
        }
        if (each.type.empty()) {
            parameter["allowEmptyValue"] = true;
        }
        parameter["schema"] = {{"type", each.type.empty() ? "string" : each.type}};
        parameters.push_back(std::move(parameter));
    }
    return parameters;
}

Json operationOf(Route const& route)
{
    Json operation{{"summary", route.meaning}};
    if (!route.parameters.empty()) {
        operation["parameters"] = parametersOf(route);
    }
    if (!route.takes.empty()) {
        operation["requestBody"] = {{"required", true}, {"content", contentOf(route.takes)}};
    }
    operation["responses"] = {{"200", {{"description", "done"}, {"content", contentOf(route.answers)}}},
                              {"default", {{"$ref", "#/components/responses/Refused"}}}};
    return operation;
}

std::string inSmallLetters(std::string_view text)
{
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(), [](unsigned char c) { return std::tolower(c); });
    return small;
}

Json pathsOf(std::span<Route const> routes)
{
    Json paths = Json::object();
    for (Route const& each : routes) {
        paths[std::string(each.path)][inSmallLetters(each.method)] = operationOf(each);
    }
    return paths;
}

Json components()
{
    constexpr char const* kRefused = "400: the input is wrong; 401: the token is missing or wrong; 403: the header "
                                     "Host or Origin is that of another "
                                     "place; 404, 405: no such address or method; 411, 413, 415: the body has no "
                                     "length, is too long or has the wrong "
                                     "type; 503: too many streams are open";
    constexpr std::array kError{RouteContent{"application/json", "Error"}};
    return {{"securitySchemes",
             {{"header", {{"type", "http"}, {"scheme", "bearer"}}},
              {"query", {{"type", "apiKey"}, {"in", "query"}, {"name", "token"}}}}},
            {"responses", {{"Refused", {{"description", kRefused}, {"content", contentOf(kError)}}}}},
            {"schemas", Json::parse(kSchemas)}};
}

}  // namespace

std::string openApiPage()
{
    constexpr int kIndent = 2;
    Json const page{{"openapi", "3.1.0"},
                    {"info",
                     {{"title", kTelephoneName},
                      {"version", kTelephoneVersion},
                      {"description", "The telephone over HTTP; docs/http.md explains it."}}},
                    {"security", Json::array({Json{{"header", Json::array()}}, Json{{"query", Json::array()}}})},
                    {"paths", pathsOf(telephoneRoutes())},
                    {"components", components()}};
    return page.dump(kIndent) + "\n";
}

}  // namespace telephone
