#include "telephone/analysis/TraceFollower.h"

#include <utility>

namespace telephone {

TraceFollower::TraceFollower(std::string name, TraceTree::Filter filter, TraceTree::Form form,
                             std::function<DisplayOptions(std::string const& domain)> options, TraceTree::Writer write)
    : reader_(std::move(name), form == TraceTree::Form::kWords ? TraceReader::Keep::kSteps : TraceReader::Keep::kTexts)
    , filter_(std::move(filter))
    , form_(form)
    , options_(std::move(options))
    , write_(std::move(write))
{}

Outcome<> TraceFollower::look(std::istream& file)
{
    file.clear();
    file.seekg(0, std::ios::end);
    if (file.tellg() < end_) {
        return refuse(RefusalKind::kWrongState, reader_.contents().name + " was begun again: it is another trace now");
    }
    file.seekg(end_);
    auto const taken = reader_.read(file);
    if (!taken) {
        return tl::unexpected(taken.error());
    }
    file.clear();
    end_ = file.tellg();
    std::set<std::uint64_t> const overdue = std::exchange(waiting_, {});
    waiting_.insert(taken->begin(), taken->end());
    std::set<std::uint64_t> ready = overdue;
    std::uint64_t following = overdue.empty() ? next_ : *overdue.rbegin() + 1;
    while (!waiting_.empty() && *waiting_.begin() <= following) {
        following = std::max(following, *waiting_.begin() + 1);
        ready.insert(waiting_.extract(waiting_.begin()));
    }
    show(ready);
    return {};
}

void TraceFollower::show(std::set<std::uint64_t> const& numbers)
{
    if (!numbers.empty() && !tree_) {
        tree_.emplace(reader_.contents(), calls_, filter_, form_, options_(reader_.contents().domain), write_);
    }
    for (std::uint64_t const number : numbers) {
        TracedStep const& step = *reader_.contents().find(number);
        calls_.note(step);
        tree_->write(step);
        next_ = std::max(next_, number + 1);
    }
}

}  // namespace telephone
