#include "ParamaterExtractor.h"

#include <algorithm>
#include <string_view>

#include "TaggedText.h"

namespace {
constexpr char kPairSeparator = ':';

// The value of the first pair that contains the key and "=". Empty pairs are skipped.
std::string_view valueOf(std::string_view text, std::string const& key)
{
    if (key.empty()) {
        return {};
    }
    std::string const keyAndSign = key + '=';
    while (!text.empty()) {
        std::string_view const pair = text.substr(0, text.find(kPairSeparator));
        if (pair.find(keyAndSign) != std::string_view::npos) {
            return pair.substr(keyAndSign.size());
        }
        text.remove_prefix(std::min(pair.size() + 1, text.size()));
    }
    return {};
}
}  // namespace

ParamaterExtractor::ParamaterExtractor(std::string const& text)
    : text_(text.c_str())
{}

ParamaterExtractor::~ParamaterExtractor() = default;

std::string ParamaterExtractor::getParamaterAsString(std::string const& key) const
{
    return std::string(valueOf(text_, key));
}

int ParamaterExtractor::getParamaterAsLong(std::string const& key) const
{
    return tagged_text::decimal(valueOf(text_, key));
}
