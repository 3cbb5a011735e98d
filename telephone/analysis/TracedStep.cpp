#include "telephone/analysis/TracedStep.h"

#include <algorithm>

#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

auto memberOf(TracedStep const& step, std::string_view name)
{
    return std::find_if(step.members.begin(), step.members.end(),
                        [name](auto const& member) { return member.first == name; });
}

}  // namespace

std::string const& TracedStep::text(std::string_view name) const
{
    static std::string const kNone;
    auto const found = memberOf(*this, name);
    return found != members.end() ? found->second : kNone;
}

bool TracedStep::has(std::string_view name) const
{
    return memberOf(*this, name) != members.end();
}

std::optional<long long> TracedStep::wholeNumber(std::string_view name) const
{
    return telephone::wholeNumber(text(name));
}

TracedStep const* TraceContents::find(std::uint64_t number) const
{
    auto const found = steps.find(number);
    return found != steps.end() ? &found->second : nullptr;
}

TracedStep const* TraceContents::causeOf(TracedStep const& step) const
{
    return step.because < step.number ? find(step.because) : nullptr;
}

}  // namespace telephone
