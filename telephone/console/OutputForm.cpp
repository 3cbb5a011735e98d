#include "telephone/console/OutputForm.h"

#include <algorithm>

#include <nlohmann/json.hpp>
#include <spdlog/fmt/fmt.h>

#include "telephone/display/CallDrawing.h"
#include "telephone/display/LampWords.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"
#include "telephone/protocol/EventJson.h"

namespace telephone {

namespace {

using Lines = OutputForm::Lines;
using Time = OutputForm::Time;

double inSeconds(OutputForm::Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

// Nothing from outside may control the terminal.
std::string safeLine(std::string_view text, DisplayOptions const& options)
{
    std::string const safe = safeText(text);
    return options.ascii ? asciiText(safe) : safe;
}

// Whole, however wide it is, and without an empty line at its end.
Lines textLines(std::string_view text, DisplayOptions const& options)
{
    Lines lines;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        lines.push_back(safeLine(text.substr(0, end), options));
        text.remove_prefix(std::min(text.size(), end + 1));
    }
    return lines;
}

std::string errorLine(std::string_view sentence, DisplayOptions options)
{
    options.width = 0;
    return StyledText().add("error: ", Style::kMagenta).add(safeText(sentence), Style::kMagenta).line(options);
}

class WordForm final : public OutputForm
{
public:
    explicit WordForm(DisplayOptions const& options)
        : lines_(options)
    {}

    void fitTo(std::size_t columns) override { lines_.options().width = columns; }

    Lines request(Time time, std::string_view text) override { return {lines_.request(time, text)}; }
    Lines reply(Reply const& reply) override;
    Lines event(std::uint64_t number, Time time, std::string_view text) override
    {
        return {lines_.event(number, time, text)};
    }
    Lines lamp(KeyState const& key, TelephoneState const& state) override
    {
        return {lines_.lamp(state.time, key, state)};
    }
    Lines gap(Time time, std::string_view json) override;
    Lines state(Time time, std::string_view json) override { return result(time, json); }
    Lines result(Time /*time*/, std::string_view text) override { return textLines(text, lines_.options()); }
    Lines error(Time /*time*/, std::string_view sentence) override { return {errorLine(sentence, lines_.options())}; }
    Lines step(Time time, std::string_view text, Duration took) override { return {lines_.step(time, text, took)}; }

private:
    ReadableLines lines_;
};

Lines WordForm::reply(Reply const& reply)
{
    bool const notAsAsked = reply.answer == "sfiSuccess" && !reply.reasons.empty();
    Lines written{lines_.answer(reply.time, {reply.request, reply.answer, reply.took, notAsAsked})};
    RequestWords const request = requestWords(reply.request);
    for (std::string const& reason : reply.reasons) {
        written.push_back(lines_.reason(reply.time, request.line, request.call, reason));
    }
    return written;
}

Lines WordForm::gap(Time time, std::string_view json)
{
    constexpr bool kThrows = false;
    auto const gap = nlohmann::json::parse(json, nullptr, kThrows);
    auto const numberOf = [&gap](char const* end) {
        bool const isThere = gap.is_object() && gap.contains(end) && gap[end].is_number_unsigned();
        return isThere ? gap[end].get<std::uint64_t>() : 0;
    };
    return {lines_.gap(time, numberOf("first"), numberOf("last"))};
}

// A marked line each.
class TagForm final : public OutputForm
{
public:
    explicit TagForm(DisplayOptions const& options)
        : options_(options)
    {}

    Lines request(Time /*time*/, std::string_view text) override { return {mark("request", text)}; }
    Lines reply(Reply const& reply) override;
    Lines event(std::uint64_t number, Time /*time*/, std::string_view text) override
    {
        return {mark("event " + std::to_string(number), text)};
    }
    Lines lamp(KeyState const& key, TelephoneState const& /*state*/) override
    {
        return {mark("lamp", fmt::format("{} {}", lampName(key), lampWords(key.lamp)))};
    }
    Lines gap(Time /*time*/, std::string_view json) override { return {mark("gap", json)}; }
    Lines state(Time /*time*/, std::string_view json) override { return {mark("state", json)}; }
    Lines result(Time /*time*/, std::string_view text) override { return textLines(text, options_); }
    Lines error(Time /*time*/, std::string_view sentence) override { return {mark("error", sentence)}; }
    Lines step(Time /*time*/, std::string_view text, Duration took) override
    {
        return {mark("passed", fmt::format("{}  {:.3f} s", text, inSeconds(took)))};
    }

private:
    [[nodiscard]] std::string mark(std::string_view mark, std::string_view text) const
    {
        return fmt::format("{:<8} {}", mark, safeLine(text, options_));
    }

    DisplayOptions const options_;
};

Lines TagForm::reply(Reply const& reply)
{
    Lines lines{reply.answer ? mark("answer", *reply.answer) : "finished"};
    for (std::string const& reason : reply.reasons) {
        lines.push_back(mark("reason", reason));
    }
    return lines;
}

class JsonForm final : public OutputForm
{
public:
    Lines request(Time time, std::string_view text) override { return {messageJson("request", text, time)}; }
    Lines reply(Reply const& reply) override;
    Lines event(std::uint64_t number, Time time, std::string_view text) override
    {
        return {eventJson(number, time, text)};
    }
    Lines lamp(KeyState const& key, TelephoneState const& state) override
    {
        nlohmann::ordered_json const lamp{{"key", lampName(key)}, {"mode", key.lamp.mode}, {"colour", key.lamp.colour}};
        return {messageJson("lamp", lamp.dump(), state.time)};
    }
    Lines gap(Time time, std::string_view json) override { return {messageJson("gap", json, time)}; }
    Lines state(Time time, std::string_view json) override { return {messageJson("state", json, time)}; }
    Lines result(Time time, std::string_view text) override { return {messageJson("result", text, time)}; }
    Lines error(Time time, std::string_view sentence) override { return {messageJson("error", sentence, time)}; }
    Lines step(Time time, std::string_view text, Duration took) override
    {
        return {messageJson("passed", text, time, inSeconds(took))};
    }
};

Lines JsonForm::reply(Reply const& reply)
{
    Lines lines{messageJson("answer", reply.answer, reply.time, inSeconds(reply.took))};
    for (std::string const& reason : reply.reasons) {
        lines.push_back(messageJson("reason", reason, reply.time));
    }
    return lines;
}

class DrawingForm final : public OutputForm
{
public:
    explicit DrawingForm(DisplayOptions const& options)
        : options_(options)
        , drawing_(options)
    {}

    Lines request(Time time, std::string_view text) override { return withHeading(drawing_.request(time, text)); }
    Lines reply(Reply const& reply) override;
    Lines event(std::uint64_t number, Time time, std::string_view text) override
    {
        return withHeading(drawing_.event(number, time, text));
    }
    // The drawing is of calls.
    Lines lamp(KeyState const& /*key*/, TelephoneState const& /*state*/) override { return {}; }
    Lines gap(Time time, std::string_view json) override { return result(time, json); }
    Lines state(Time time, std::string_view json) override { return result(time, json); }
    Lines result(Time /*time*/, std::string_view text) override { return textLines(text, options_); }
    Lines error(Time /*time*/, std::string_view sentence) override { return {errorLine(sentence, options_)}; }
    // The drawing shows what the step waited for.
    Lines step(Time /*time*/, std::string_view /*text*/, Duration /*took*/) override { return {}; }

private:
    // Above the first row.
    Lines withHeading(Lines rows);

    DisplayOptions const options_;
    CallDrawing drawing_;
    bool hasHeading_ = false;
};

Lines DrawingForm::reply(Reply const& reply)
{
    Lines lines = drawing_.answer(reply.time, reply.request, reply.answer);
    for (std::string const& reason : reply.reasons) {
        Lines const rows = drawing_.reason(reason);
        lines.insert(lines.end(), rows.begin(), rows.end());
    }
    return lines;
}

Lines DrawingForm::withHeading(Lines rows)
{
    if (!hasHeading_) {
        Lines const heading = drawing_.heading();
        rows.insert(rows.begin(), heading.begin(), heading.end());
        hasHeading_ = true;
    }
    return rows;
}

}  // namespace

std::unique_ptr<OutputForm> OutputForm::make(OutputKind kind, DisplayOptions const& options)
{
    switch (kind) {
    case OutputKind::kWords:
        return std::make_unique<WordForm>(options);
    case OutputKind::kTags:
        return std::make_unique<TagForm>(options);
    case OutputKind::kJson:
        return std::make_unique<JsonForm>();
    case OutputKind::kDrawing:
        return std::make_unique<DrawingForm>(options);
    }
    return nullptr;
}

}  // namespace telephone
