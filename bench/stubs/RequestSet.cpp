#include "RequestSet.h"

#include <algorithm>

#include "CommunicationsServiceRequests.h"

namespace {

// Realistic values of a line, a call and a destination.
std::string valueFor(RequestParameter const& parameter)
{
    switch (parameter.kind) {
    case RequestParameterKind::text:
        return parameter.tag == "Line" || parameter.tag == "deviceID" ? "4711" : "sip:100@exchange.example";
    case RequestParameterKind::integer:
        return "17";
    case RequestParameterKind::flag:
        return "1";
    case RequestParameterKind::word:
        return "TRUE";
    case RequestParameterKind::serviceState:
        return "sfiServiceInService";
    case RequestParameterKind::body:
        return "<MonitorStart/>";
    }
    return {};
}

std::string element(std::string_view tag, std::string_view value)
{
    std::string text;
    text.append("<").append(tag).append(">").append(value).append("</").append(tag).append(">");
    return text;
}

SampleRequest makeSample(RequestDescription const& description)
{
    SampleRequest sample{description.name, {}, element("Method", description.name)};
    for (auto const& parameter : description.parameters) {
        auto const value = valueFor(parameter);
        auto const isNumber =
            parameter.kind == RequestParameterKind::integer || parameter.kind == RequestParameterKind::flag;
        sample.values.push_back({parameter.tag, value, isNumber});
        sample.text += parameter.kind == RequestParameterKind::body ? value : element(parameter.tag, value);
    }
    return sample;
}

std::vector<SampleRequest> makeSamples()
{
    std::vector<SampleRequest> samples;
    std::transform(std::begin(kRequestDescriptions), std::end(kRequestDescriptions), std::back_inserter(samples),
                   makeSample);
    return samples;
}

}  // namespace

std::vector<SampleRequest> const& sampleRequests()
{
    static auto const samples = makeSamples();
    return samples;
}

SampleRequest const& sampleRequest(std::string_view method)
{
    auto const& all = sampleRequests();
    return *std::find_if(all.begin(), all.end(),
                         [method](SampleRequest const& sample) { return sample.method == method; });
}
