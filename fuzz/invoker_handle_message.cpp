// Any bytes as a text request: it is finished once, answered at most once and never with an empty text, and every lock
// is released.
#include "ServiceUnderFuzz.h"
#include "platform/framework/InvokerResponse.h"

namespace {
class Response final : public InvokerResponse
{
public:
    void finish() override { ++finished; }
    void sendResponse(char const* answer, int length) override
    {
        require(length > 0, "an answer is empty");
        copy.assign(answer, static_cast<std::size_t>(length));
        require(finished == 0, "an answer came after the end");
        ++answered;
    }
    std::string const& channelName() override { return channel; }

    int finished = 0;
    int answered = 0;
    std::string copy;
    std::string channel = "fuzzer";
};
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static ServiceUnderFuzz subject;
    FuzzInput input(data, size);
    subject.begin(input);
    bool const shorter = input.below(8) == 1;
    auto const cut = static_cast<std::size_t>(input.byte());
    auto const message = input.rest();
    auto const length = shorter ? std::min(cut, message.size()) : message.size();

    Response response;
    subject.invoker.handleMessage(&subject.service, message.c_str(), static_cast<int>(length), &response);
    require(response.finished == 1, "a request was not finished once");
    require(response.answered <= 1, "a request was answered more than once");
    subject.check();
    return 0;
}
