// Where everything that happens in a conversation is written: requests with their answers and reasons, events, results,
// errors, and the steps of a script. Conversation fills it in; `telephone watch` does without one. One thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "telephone/access/Message.h"
#include "telephone/console/OutputForm.h"

namespace telephone {

class Transcript
{
public:
    using Writer = std::function<void(std::string const& line)>;

    // The writers receive lines without their ends; `failures` those that say what went wrong with a script.
    Transcript(Writer output, Writer failures, OutputKind kind, DisplayOptions options);

    void writeTo(Writer output) { output_ = std::move(output); }
    [[nodiscard]] OutputKind kind() const { return kind_; }
    void setKind(OutputKind kind);
    // The terminal has this many columns now.
    void fitTo(std::size_t columns);

    // A request, event, gap, state, result or error. A message without a time is of this moment.
    void write(Message const& message);
    void reply(OutputForm::Reply const& reply);
    // A lamp has changed.
    void lamp(KeyState const& key, TelephoneState const& state);
    // The input was refused.
    void error(std::string_view sentence) { write({MessageKind::kError, sentence}); }
    // A script failed. Words in every form.
    void failure(std::string_view sentence);
    // A step of a script that succeeded.
    void step(std::string_view text, OutputForm::Duration took);
    // A text of the console itself; it may have several lines.
    void note(std::string_view text) { write({MessageKind::kResult, text}); }

private:
    void put(OutputForm::Lines const& lines) const;

    Writer output_;
    Writer const failures_;
    DisplayOptions options_;
    OutputKind kind_;
    std::unique_ptr<OutputForm> form_;
};

}  // namespace telephone
