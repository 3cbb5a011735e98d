// Sends any bytes to the application socket, in pieces of any size. Every request that ends with a NUL is handled once
// and in order, and the answers equal those of a plain splitter.
#include <array>
#include <memory>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

#include "FuzzInput.h"
#include "platform/framework/Executable.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "telephone/applications/ApplicationConnection.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/FileDescriptor.h"
#include "telephone/framework/RequestRunner.h"

namespace {
class NoService final : public Executable
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}
};

// Answers with the size of the request; does not answer a request that begins with "-".
class SizeInvoker final : public Invoker
{
public:
    void handleMessage(Executable* /*service*/, char const* message, int length, InvokerResponse* response) override
    {
        if (message[0] != '-') {
            auto const answer = std::to_string(length);
            response->sendResponse(answer.c_str(), static_cast<int>(answer.size()));
        }
        response->finish();
    }
    void initInvoker(FrameworkContext* /*context*/) override {}
};

std::string expectedOutput(std::string const& input, bool ended)
{
    std::string output;
    std::size_t start = 0;
    for (std::size_t i = 0; i < input.size(); ++i) {
        if (input[i] != '\0') {
            continue;
        }
        if (input[start] != '-') {
            output += "answer\n" + std::to_string(i - start) + std::string(1, '\0');
        }
        output += std::string("finished\n") + std::string(1, '\0');
        start = i + 1;
    }
    if (ended && start < input.size()) {
        output += std::string("error\nthe last request has no end (a NUL byte); not handled") + std::string(1, '\0');
    }
    return output;
}

void readAll(int descriptor, std::string& output)
{
    std::array<char, 65536> buffer;
    for (;;) {
        auto const count = recv(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count <= 0) {
            return;
        }
        output.append(buffer.data(), static_cast<std::size_t>(count));
    }
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::array<int, 2> pair{};
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()) == 0, "no pair of sockets");
    telephone::FileDescriptor const application(pair[0]);
    FrameworkContext context;
    NoService service;
    SizeInvoker invoker;
    telephone::RequestRunner runner(service, invoker);
    telephone::ApplicationConnection connection(
        telephone::FileDescriptor(pair[1]), std::make_shared<telephone::Channel>("fuzzer", context, 10, [] {}), runner);

    FuzzInput input(data, size);
    bool const ends = input.flag();
    std::string sent;
    std::string received;
    while (!input.isEmpty()) {
        auto const piece = input.text();
        sent += piece;
        require(piece.empty() || send(application.get(), piece.data(), piece.size(), MSG_NOSIGNAL) ==
                                     static_cast<ssize_t>(piece.size()),
                "a piece was not taken");
        connection.receive();
        readAll(application.get(), received);
    }
    if (ends) {
        shutdown(application.get(), SHUT_WR);
        connection.receive();
        readAll(application.get(), received);
        require(connection.isOver(), "the connection of an application that has ended stays open");
    }
    requireEqual(received, expectedOutput(sent, ends), "what the application reads");
    return 0;
}
