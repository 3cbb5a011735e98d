#include "telephone/console/Transcript.h"

#include <utility>

#include "telephone/display/SafeText.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

OutputForm::Time now()
{
    return wallTime();
}

}  // namespace

Transcript::Transcript(Writer output, Writer failures, OutputKind kind, DisplayOptions options)
    : output_(std::move(output))
    , failures_(std::move(failures))
    , options_(std::move(options))
    , kind_(kind)
    , form_(OutputForm::make(kind, options_))
{}

void Transcript::setKind(OutputKind kind)
{
    if (kind != kind_) {
        kind_ = kind;
        form_ = OutputForm::make(kind, options_);
    }
}

void Transcript::fitTo(std::size_t columns)
{
    options_.width = columns;
    form_->fitTo(columns);
}

void Transcript::write(Message const& message)
{
    OutputForm::Time const time = message.time == OutputForm::Time() ? now() : message.time;
    switch (message.kind) {
    case MessageKind::kRequest:
        return put(form_->request(time, message.text));
    case MessageKind::kEvent:
        return put(form_->event(message.number, time, message.text));
    case MessageKind::kError:
        return put(form_->error(time, message.text));
    case MessageKind::kResult:
        return put(form_->result(time, message.text));
    case MessageKind::kGap:
        return put(form_->gap(time, message.text));
    case MessageKind::kState:
        return put(form_->state(time, message.text));
    case MessageKind::kAnswer:
    case MessageKind::kReason:
    case MessageKind::kFinished:
        // Together, as the reply.
        return;
    }
}

void Transcript::reply(OutputForm::Reply const& reply)
{
    put(form_->reply(reply));
}

void Transcript::lamp(KeyState const& key, TelephoneState const& state)
{
    put(form_->lamp(key, state));
}

void Transcript::failure(std::string_view sentence)
{
    failures_("error: " + (options_.ascii ? asciiText(safeText(sentence)) : safeText(sentence)));
}

void Transcript::step(std::string_view text, OutputForm::Duration took)
{
    put(form_->step(now(), text, took));
}

void Transcript::put(OutputForm::Lines const& lines) const
{
    for (std::string const& line : lines) {
        output_(line);
    }
}

}  // namespace telephone
