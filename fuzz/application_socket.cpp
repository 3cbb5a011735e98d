// Sends any bytes to the application socket, in pieces of any size. Every message that ends with a NUL is handled once
// and in order: the application reads what a session says that receives the same messages one by one.
#include <array>
#include <memory>

#include <sys/socket.h>
#include <unistd.h>

#include "FuzzInput.h"
#include "telephone/applications/ApplicationConnection.h"
#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/framework/FileDescriptor.h"
#include "tests/unit/access/TelephoneDouble.h"

namespace {
// Above this the connection stops in between to let the application read.
constexpr std::size_t kMostOutput = std::size_t{512} * 1024;

TelephoneDouble& telephoneDouble()
{
    static TelephoneDouble telephone;
    telephone.invoker.answer = [](std::string const& request) { return std::to_string(request.size()); };
    telephone.invoker.requests.clear();
    telephone.controls.asked.clear();
    return telephone;
}

// A session that is given the messages one by one.
class PlainApplication
{
public:
    void take(std::string const& piece)
    {
        input_ += piece;
        std::size_t end = 0;
        while ((end = input_.find('\0')) != std::string::npos) {
            session_.handle(std::string(input_, 0, end), sink_);
            input_.erase(0, end + 1);
        }
        while (session_.takeEvents(256, sink_)) {
        }
    }
    void end()
    {
        if (!input_.empty()) {
            sink_({telephone::MessageKind::kError, "the last request has no end (a NUL byte); not handled"});
        }
    }
    [[nodiscard]] std::string const& output() const { return output_; }

private:
    std::string input_;
    std::string output_;
    telephone::MessageSink const sink_ = [this](telephone::Message const& message) {
        telephone::appendMessage(output_, message);
    };
    telephone::Session session_{"plain", telephoneDouble().services(), 10, [] {}};
};

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
    PlainApplication plain;
    telephone::ApplicationConnection connection(
        telephone::FileDescriptor(pair[1]),
        std::make_unique<telephone::Session>("fuzzer", telephoneDouble().services(), 10, [] {}));

    FuzzInput input(data, size);
    bool const ends = input.flag();
    std::string received;
    while (!input.isEmpty() && plain.output().size() < kMostOutput) {
        auto const piece = input.text();
        plain.take(piece);
        require(piece.empty() || send(application.get(), piece.data(), piece.size(), MSG_NOSIGNAL) ==
                                     static_cast<ssize_t>(piece.size()),
                "a piece was not taken");
        connection.receive();
        readAll(application.get(), received);
    }
    if (ends) {
        shutdown(application.get(), SHUT_WR);
        plain.end();
        connection.receive();
        readAll(application.get(), received);
        require(connection.isOver(), "the connection of an application that has ended stays open");
    }
    requireEqual(received, plain.output(), "what the application reads");
    return 0;
}
