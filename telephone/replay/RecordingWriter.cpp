#include "telephone/replay/RecordingWriter.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/OwnerOnly.h"
#include "telephone/framework/EventHistory.h"
#include "telephone/framework/Log.h"
#include "telephone/protocol/EventJson.h"

namespace telephone {

namespace {

constexpr char const* kRecorderComponent = "replay";
constexpr std::size_t kEventsPerPortion = 256;
constexpr std::size_t kMostWaiting = 100000;  // lines

}  // namespace

Outcome<std::shared_ptr<RecordingWriter>> RecordingWriter::open(std::string const& file, EventHistory const& history,
                                                                std::uint64_t after)
{
    if (auto const closed = makeOwnerOnly(file); !closed) {
        return tl::unexpected(closed.error());
    }
    File opened(std::fopen(file.c_str(), "we"));
    if (opened == nullptr) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("cannot write the recording {}: {}", file, std::strerror(errno)));
    }
    return std::shared_ptr<RecordingWriter>(new RecordingWriter(file, std::move(opened), history, after));
}

RecordingWriter::RecordingWriter(std::string name, File file, EventHistory const& history, std::uint64_t after)
    : name_(std::move(name))
    , file_(std::move(file))
    , history_(history)
    , written_(after)
    , queue_("the recordings", kMostWaiting)
{}

void RecordingWriter::write(std::function<std::string()> line)
{
    post([this, line = std::move(line)] { put(line()); });
}

void RecordingWriter::writeEvents(std::uint64_t latest)
{
    post([this, latest] { putEvents(latest); });
}

std::optional<Refusal> RecordingWriter::finish()
{
    queue_.flush();
    return !failure_ && isBehind_ ? incomplete("the disk was too slow") : failure_;
}

Refusal RecordingWriter::incomplete(std::string_view reason) const
{
    return {RefusalKind::kUnavailable, fmt::format("the recording {} is not complete: {}", name_, reason)};
}

void RecordingWriter::post(WorkQueue::Work work)
{
    if (auto const posted = queue_.post(std::move(work)); !posted && !isBehind_.exchange(true)) {
        log(kLogFailure, kRecorderComponent, "{}", incomplete(posted.error().reason).reason);
    }
}

void RecordingWriter::put(std::string const& line)
{
    if (failure_) {
        return;
    }
    bool const isWritten = std::fputs(line.c_str(), file_.get()) >= 0 && std::fputc('\n', file_.get()) >= 0 &&
                           std::fflush(file_.get()) == 0;
    if (!isWritten) {
        fail(std::strerror(errno));
    }
}

void RecordingWriter::putEvents(std::uint64_t latest)
{
    bool isMore = true;
    while (isMore && !failure_) {
        auto const portion = history_.after(written_, kEventsPerPortion);
        if (portion.missed > 0) {
            return fail(fmt::format("{} events were no longer kept", portion.missed));
        }
        isMore = portion.events.size() == kEventsPerPortion;
        for (auto const& each : portion.events) {
            if (each->number > latest) {
                return;
            }
            written_ = each->number;
            put(eventJson(each->number, each->time, each->text));
        }
    }
}

void RecordingWriter::fail(std::string_view reason)
{
    failure_ = incomplete(reason);
    log(kLogFailure, kRecorderComponent, "{}", failure_->reason);
}

}  // namespace telephone
