#include "telephone/access/CommandSyntax.h"

#include <algorithm>
#include <cctype>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"

namespace telephone {

namespace {

constexpr std::string_view kRest = "...";

bool isKind(std::string_view text)
{
    return !text.empty() && std::isupper(static_cast<unsigned char>(text.front())) != 0;
}

std::vector<std::string> alternatives(std::string_view text)
{
    std::vector<std::string> found;
    while (!text.empty()) {
        auto const bar = std::min(text.find('|'), text.size());
        found.emplace_back(text.substr(0, bar));
        text.remove_prefix(std::min(text.size(), bar + 1));
    }
    return found;
}

tl::unexpected<Refusal> wrong(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

}  // namespace

CommandSyntax::CommandSyntax(std::string_view pattern)
{
    while (!(pattern = trimmed(pattern)).empty()) {
        if (pattern.front() == '[') {
            auto const end = pattern.find(']');
            add(pattern.substr(1, end - 1), true);
            pattern.remove_prefix(end + 1);
            continue;
        }
        auto const blank = std::min(pattern.find(' '), pattern.size());
        std::string_view const word = pattern.substr(0, blank);
        bool const isKeyword = !isKind(word) && word.find('|') == std::string_view::npos;
        auto const end = isKeyword ? std::min(pattern.find(' ', blank + 1), pattern.size()) : blank;
        add(pattern.substr(0, end), false);
        pattern.remove_prefix(end);
    }
}

void CommandSyntax::add(std::string_view group, bool isOptional)
{
    auto const blank = group.find(' ');
    bool const isOnlyKeyword =
        blank == std::string_view::npos && !isKind(group) && group.find('|') == std::string_view::npos;
    std::string_view keyword = isOnlyKeyword ? group : std::string_view();
    std::string_view value = isOnlyKeyword ? std::string_view() : group;
    if (blank != std::string_view::npos) {
        keyword = group.substr(0, blank);
        value = group.substr(blank + 1);
    }
    bool const takesRest = value.ends_with(kRest);
    if (takesRest) {
        value.remove_suffix(kRest.size());
    }
    groups_.push_back({std::string(keyword), alternatives(value), isOptional, takesRest});
}

CommandSyntax::Group const* CommandSyntax::groupFor(std::string const& word, Arguments const& taken) const
{
    Group const* plain = nullptr;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        Group const& group = groups_[i];
        if (taken[i]) {
            continue;
        }
        if (!group.keyword.empty() && equalIgnoringCase(group.keyword, word)) {
            return &group;
        }
        if (group.keyword.empty() && plain == nullptr) {
            plain = &group;
        }
        if (!group.isOptional) {
            break;
        }
    }
    return plain;
}

Outcome<> CommandSyntax::take(Words const& words, std::size_t first, Arguments& taken, Group const*& open) const
{
    for (std::size_t i = first; i < words.size(); ++i) {
        Group const* const group = open != nullptr ? open : groupFor(words[i], taken);
        if (group == nullptr) {
            return wrong(fmt::format("\"{}\" is not expected", words[i]));
        }
        bool const isKeyword = open == nullptr && !group->keyword.empty();
        if (isKeyword && !group->choices.empty()) {
            open = group;
            continue;
        }
        open = nullptr;
        auto& value = taken[static_cast<std::size_t>(group - groups_.data())];
        value = isKeyword ? group->keyword : words[i];
        if (group->takesRest) {
            value = joinWords(words, i);
            return {};
        }
        bool const isChoice = !group->choices.empty() && !isKind(group->choices.front());
        if (isChoice) {
            auto const found =
                std::find_if(group->choices.begin(), group->choices.end(),
                             [&value](std::string const& each) { return equalIgnoringCase(each, *value); });
            if (found == group->choices.end()) {
                return wrong(fmt::format("\"{}\" is not {}", *value, fmt::join(group->choices, " or ")));
            }
            value = *found;
        }
    }
    return {};
}

Outcome<Arguments> CommandSyntax::parse(Words const& words, std::size_t first) const
{
    Arguments taken(groups_.size());
    Group const* open = nullptr;
    if (auto const done = take(words, first, taken, open); !done) {
        return tl::unexpected(done.error());
    }
    if (open != nullptr) {
        return wrong(fmt::format("the value of {} is missing", open->keyword));
    }
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        if (!taken[i] && !groups_[i].isOptional) {
            Group const& group = groups_[i];
            return wrong(fmt::format("{} is missing", group.keyword.empty()
                                                          ? fmt::format("{}", fmt::join(group.choices, " or "))
                                                          : group.keyword));
        }
    }
    return taken;
}

std::vector<std::string> CommandSyntax::next(Words const& words, std::size_t first) const
{
    Arguments taken(groups_.size());
    Group const* open = nullptr;
    if (!take(words, first, taken, open)) {
        return {};
    }
    if (open != nullptr) {
        return open->choices;
    }
    std::vector<std::string> found;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        if (taken[i]) {
            continue;
        }
        Group const& group = groups_[i];
        if (group.keyword.empty()) {
            found.insert(found.end(), group.choices.begin(), group.choices.end());
        } else {
            found.push_back(group.keyword);
        }
        if (!group.isOptional) {
            break;
        }
    }
    return found;
}

}  // namespace telephone
