// Common alternatives on the same requests: the text is parsed, the method looked up, every parameter fetched by name,
// every number converted, a virtual operation called and answered.
#include <algorithm>
#include <charconv>
#include <random>
#include <unordered_map>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <simdjson.h>

#include "bench/stubs/RequestSet.h"
#include "bench/stubs/StubService.h"

namespace {

// Receives a parsed request: looks its method up, calls one operation, gives its answer.
class Receiver
{
public:
    Receiver()
    {
        for (auto const& sample : sampleRequests()) {
            operations_.emplace(sample.method, &CommunicationsServiceIfc::activate);
        }
    }
    void handle(std::string_view method)
    {
        auto const found = operations_.find(method);
        bool const done = found != operations_.end() && (service_.*found->second)() == sfiSuccess;
        std::string const answer = done ? "sfiSuccess" : "sfiFailure";
        response_.sendResponse(answer.c_str(), static_cast<int>(answer.size()));
        response_.finish();
    }

private:
    std::unordered_map<std::string_view, sfiResult (CommunicationsServiceIfc::*)()> operations_;
    StubService stub_;
    CommunicationsServiceIfc& service_ = stub_;
    StubResponse response_;
};

// A request in another notation, with the values that a parser has to find in it.
struct Rewritten
{
    std::string text;
    SampleRequest const* sample;
};

void appendElement(std::string& text, std::string_view tag, std::string_view value)
{
    text.append("<").append(tag).append(">").append(value).append("</").append(tag).append(">");
}

// CSTA puts a call and its device into one element (ECMA-323, connection identifiers).
bool isOfConnection(std::string_view tag)
{
    return tag == "Line" || tag == "CallID";
}
constexpr char const* kConnection = "connection";

std::string asXml(SampleRequest const& sample)
{
    std::string connection;
    std::string others;
    for (auto const& value : sample.values) {
        auto const plain = value.tag == "Body" ? std::string("MonitorStart") : value.value;
        appendElement(isOfConnection(value.tag) ? connection : others, value.tag, plain);
    }
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><" + std::string(sample.method) +
                       " xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">";
    if (!connection.empty()) {
        appendElement(text, kConnection, connection);
    }
    return text + others + "</" + std::string(sample.method) + ">";
}

std::string asJson(SampleRequest const& sample)
{
    nlohmann::json request = {{"Method", sample.method}};
    for (auto const& value : sample.values) {
        if (value.isNumber) {
            request[std::string(value.tag)] = std::stoi(value.value);
        } else {
            request[std::string(value.tag)] = value.value;
        }
    }
    return request.dump();
}

template <typename Write>
std::vector<Rewritten> rewriteAll(Write const& write)
{
    std::vector<Rewritten> all;
    std::transform(sampleRequests().begin(), sampleRequests().end(), std::back_inserter(all),
                   [&write](SampleRequest const& sample) {
                       return Rewritten{write(sample), &sample};
                   });
    return all;
}

// `read` parses the request and passes its method to the receiver.
template <typename Read>
void runMix(benchmark::State& state, std::vector<Rewritten> const& requests, Read read)
{
    Receiver receiver;
    std::mt19937 random(1);
    std::vector<std::size_t> order(4096);
    std::uniform_int_distribution<std::size_t> pick(0, requests.size() - 1);
    std::generate(order.begin(), order.end(), [&] { return pick(random); });
    std::size_t next = 0;
    for (auto _ : state) {
        read(requests[order[next++ % order.size()]], receiver);
    }
}

void use(RequestValue const& value, std::string_view text)
{
    if (!value.isNumber) {
        benchmark::DoNotOptimize(text);
        return;
    }
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    benchmark::DoNotOptimize(number);
}

void pugixmlMix(benchmark::State& state)
{
    runMix(state, rewriteAll(asXml), [](Rewritten const& request, Receiver& receiver) {
        pugi::xml_document document;
        document.load_buffer(request.text.data(), request.text.size());
        auto const root = document.document_element();
        for (auto const& value : request.sample->values) {
            auto const parent = isOfConnection(value.tag) ? root.child(kConnection) : root;
            use(value, parent.child_value(value.tag.data()));
        }
        receiver.handle(root.name());
    });
}
BENCHMARK(pugixmlMix);

xmlNode* childOf(xmlNode* parent, std::string_view tag)
{
    auto* node = parent->children;
    while (node != nullptr && tag != reinterpret_cast<char const*>(node->name)) {
        node = node->next;
    }
    return node;
}

std::string_view contentOf(xmlNode* root, std::string_view tag)
{
    auto* const parent = isOfConnection(tag) ? childOf(root, kConnection) : root;
    auto* const node = parent == nullptr ? nullptr : childOf(parent, tag);
    if (node == nullptr || node->children == nullptr) {
        return {};
    }
    return reinterpret_cast<char const*>(node->children->content);
}

void libxml2Mix(benchmark::State& state)
{
    runMix(state, rewriteAll(asXml), [](Rewritten const& request, Receiver& receiver) {
        auto* const document = xmlReadMemory(request.text.data(), static_cast<int>(request.text.size()), nullptr,
                                             nullptr, XML_PARSE_NONET);
        auto* const root = xmlDocGetRootElement(document);
        for (auto const& value : request.sample->values) {
            use(value, contentOf(root, value.tag));
        }
        receiver.handle(reinterpret_cast<char const*>(root->name));
        xmlFreeDoc(document);
    });
}
BENCHMARK(libxml2Mix);

void nlohmannMix(benchmark::State& state)
{
    runMix(state, rewriteAll(asJson), [](Rewritten const& request, Receiver& receiver) {
        auto const document = nlohmann::json::parse(request.text);
        receiver.handle(document.at("Method").get_ref<std::string const&>());
        for (auto const& value : request.sample->values) {
            auto const& found = document.at(std::string(value.tag));
            if (value.isNumber) {
                benchmark::DoNotOptimize(found.get<int>());
            } else {
                benchmark::DoNotOptimize(found.get_ref<std::string const&>());
            }
        }
    });
}
BENCHMARK(nlohmannMix);

void simdjsonMix(benchmark::State& state)
{
    simdjson::ondemand::parser parser;
    auto requests = rewriteAll(asJson);
    for (auto& request : requests) {
        request.text.reserve(request.text.size() + simdjson::SIMDJSON_PADDING);
    }
    runMix(state, requests, [&parser](Rewritten const& request, Receiver& receiver) {
        auto document =
            parser.iterate(request.text.data(), request.text.size(), request.text.size() + simdjson::SIMDJSON_PADDING)
                .value();
        receiver.handle(std::string_view(document["Method"]));
        for (auto const& value : request.sample->values) {
            if (value.isNumber) {
                benchmark::DoNotOptimize(std::int64_t(document[value.tag]));
            } else {
                benchmark::DoNotOptimize(std::string_view(document[value.tag]));
            }
        }
    });
}
BENCHMARK(simdjsonMix);

}  // namespace

BENCHMARK_MAIN();
