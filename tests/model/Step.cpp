#include "Step.h"

#include <array>
#include <sstream>
#include <stdexcept>

#include "platform/framework/InvokerResponse.h"

namespace {
class Response final : public InvokerResponse
{
public:
    void finish() override { ++finished; }
    void sendResponse(char const* answer, int length) override
    {
        answers.emplace_back(answer, static_cast<std::size_t>(length));
    }
    std::string const& channelName() override { return channel; }

    int finished = 0;
    std::vector<std::string> answers;
    std::string channel = "application";
};

std::string joined(std::vector<std::string> const& texts)
{
    std::string all;
    for (auto const& text : texts) {
        all += "    " + text + "\n";
    }
    return all;
}

constexpr char const* kNoAnswer = "(no answer)";
}  // namespace

std::string resultWord(int result)
{
    switch (result) {
    case 5:
        return "sfiSuccess";
    case 1:
        return "sfiFailureCallBackInvalidState";
    case 2:
        return "sfiFailureCallBackNoCallInfo";
    case 3:
        return "sfiFailureCallBackToMany";
    case 4:
        return "sfiFailureCallBackAllreadyExists";
    default:
        return "sfiFailure";
    }
}

std::string Step::line()
{
    static std::array<std::string, 11> const kLines = {"4711",     "4712",   "bare",  "shared", "shared#1", "shared#2",
                                                       "shared#9", "4711#1", "dummy", "",       "unknown"};
    return random.oneIn(12) ? "bluetoothDeviceID" : random.oneOf(kLines);
}

int Step::callID()
{
    static constexpr std::array kIds = {-1, 0, 9999, 10000, 10250, 10500, 10501};
    return random.oneIn(3) ? random.oneOf(kIds) : random.between(1, 6);
}

std::string Step::destination()
{
    static std::array<std::string, 4> const kDestinations = {"100", "112", "sip:bob@example.com", ""};
    return random.oneOf(kDestinations);
}

std::string Step::word()
{
    static std::array<std::string, 4> const kWords = {"", "one", "two words", "x=1:y=2"};
    return random.oneOf(kWords);
}

void Step::operation(char const* method, Parameters const& parameters, int expected,
                     std::function<int()> const& directly)
{
    if (random.coin()) {
        request(method, parameters, resultWord(expected));
    } else {
        compare(expected, directly);
    }
}

void Step::compare(std::string const& expected, std::function<std::string()> const& carriedOut)
{
    expected_ = expected;
    try {
        answered_ = carriedOut();
    } catch (std::logic_error const&) {
        answered_ = "logic error";
    }
}

void Step::compare(int expected, std::function<int()> const& carriedOut)
{
    compare(std::to_string(expected), [&] { return std::to_string(carriedOut()); });
}

void Step::act(std::function<void()> const& carriedOut)
{
    compare("", [&] {
        carriedOut();
        return std::string();
    });
}

void Step::request(char const* method, Parameters const& parameters, std::optional<std::string> const& expected)
{
    std::string text = std::string("<Method>") + method + "</Method>";
    for (auto const& [tag, value] : parameters) {
        text.append("<").append(tag).append(">").append(value).append("</").append(tag).append(">");
    }
    compare(expected.value_or(kNoAnswer), [&] {
        Response response;
        subject.invoker.handleMessage(&subject.service, text.c_str(), static_cast<int>(text.size()), &response);
        if (response.finished != 1) {
            world.violation("a request was finished " + std::to_string(response.finished) + " times");
        }
        if (response.answers.size() > 1) {
            world.violation("a request was answered more than once");
        }
        return response.answers.empty() ? std::string(kNoAnswer) : response.answers.front();
    });
}

std::string Step::verdict(char const* name) const
{
    std::ostringstream what;
    if (answered_ != expected_) {
        what << "  answered \"" << answered_ << "\", expected \"" << expected_ << "\"\n";
    }
    if (world.effects != rules.effects()) {
        what << "  did\n" << joined(world.effects) << "  expected\n" << joined(rules.effects());
    }
    if (world.teamServiceLockHeld || world.publicationLockHeld || world.callControlDepth != 0) {
        what << "  a lock is still held\n";
    }
    for (auto const& violation : world.violations) {
        what << "  " << violation << "\n";
    }
    auto const all = what.str();
    return all.empty() ? all : std::string(name) + "\n" + all;
}
