// What people would use instead, on the same requests: the text is read, the method found by one comparison, every
// parameter fetched by name, every number converted. No service is called: that favours the alternatives.
#include <benchmark/benchmark.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <random>

#include "RequestSet.h"

namespace {

// A request in another notation, with what has to be read out of it.
struct Rewritten
{
    std::string text;
    SampleRequest const* sample;
};

std::string asXml(SampleRequest const& sample)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><" + std::string(sample.method) +
                       " xmlns=\"http://www.ecma-international.org/standards/ecma-323/csta/ed5\">";
    for (auto const& value : sample.values) {
        auto const plain = value.tag == "Body" ? std::string("MonitorStart") : value.value;
        text.append("<").append(value.tag).append(">").append(plain).append("</").append(value.tag).append(">");
    }
    return text + "</" + std::string(sample.method) + ">";
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

template <typename Read>
void runMix(benchmark::State& state, std::vector<Rewritten> const& requests, Read read)
{
    std::mt19937 random(1);
    std::vector<std::size_t> order(4096);
    std::uniform_int_distribution<std::size_t> pick(0, requests.size() - 1);
    std::generate(order.begin(), order.end(), [&] { return pick(random); });
    std::size_t next = 0;
    for (auto _ : state) {
        read(requests[order[next++ % order.size()]]);
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
    runMix(state, rewriteAll(asXml), [](Rewritten const& request) {
        pugi::xml_document document;
        document.load_buffer(request.text.data(), request.text.size());
        auto const root = document.document_element();
        benchmark::DoNotOptimize(request.sample->method == root.name());
        for (auto const& value : request.sample->values) {
            use(value, root.child_value(value.tag.data()));
        }
    });
}
BENCHMARK(pugixmlMix);

std::string_view contentOf(xmlNode* root, std::string_view tag)
{
    for (auto* node = root->children; node != nullptr; node = node->next) {
        if (tag == reinterpret_cast<char const*>(node->name) && node->children != nullptr) {
            return reinterpret_cast<char const*>(node->children->content);
        }
    }
    return {};
}

void libxml2Mix(benchmark::State& state)
{
    runMix(state, rewriteAll(asXml), [](Rewritten const& request) {
        auto* const document = xmlReadMemory(request.text.data(), static_cast<int>(request.text.size()), nullptr,
                                             nullptr, XML_PARSE_NONET);
        auto* const root = xmlDocGetRootElement(document);
        benchmark::DoNotOptimize(request.sample->method == reinterpret_cast<char const*>(root->name));
        for (auto const& value : request.sample->values) {
            use(value, contentOf(root, value.tag));
        }
        xmlFreeDoc(document);
    });
}
BENCHMARK(libxml2Mix);

void nlohmannMix(benchmark::State& state)
{
    runMix(state, rewriteAll(asJson), [](Rewritten const& request) {
        auto const document = nlohmann::json::parse(request.text);
        benchmark::DoNotOptimize(document.at("Method").get_ref<std::string const&>() == request.sample->method);
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
    runMix(state, requests, [&parser](Rewritten const& request) {
        auto document =
            parser.iterate(request.text.data(), request.text.size(), request.text.size() + simdjson::SIMDJSON_PADDING)
                .value();
        benchmark::DoNotOptimize(std::string_view(document["Method"]) == request.sample->method);
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
