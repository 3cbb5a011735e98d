// A connection of a test to the server: sends bytes as they are, and reads answers and streams.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "telephone/framework/FileDescriptor.h"

class HttpConnection
{
public:
    // A small buffer makes the server wait soon for a reader that does not read.
    explicit HttpConnection(int port, int receiveBuffer = 0)
        : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (receiveBuffer > 0) {
            setsockopt(socket_.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof(receiveBuffer));
        }
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            throw std::runtime_error("the server does not listen");
        }
    }

    void send(std::string_view text)
    {
        while (!text.empty()) {
            ssize_t const count = ::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL);
            if (count <= 0) {
                return;
            }
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    // Everything up to the end of the connection.
    std::string readAll()
    {
        while (read()) {
        }
        return input_;
    }

    // The text of a stream after its header, up to the end of the text searched for. Fails the test at the deadline and
    // at the end of the stream.
    std::string readUntil(std::string const& text)
    {
        std::size_t at = 0;
        while ((at = streamed_.find(text)) == std::string::npos) {
            if (!read()) {
                ADD_FAILURE() << "\"" << text << "\" did not come; instead:\n" << input_;
                return {};
            }
            takeChunks();
        }
        std::string const found = streamed_.substr(0, at + text.size());
        streamed_.erase(0, at + text.size());
        return found;
    }

    [[nodiscard]] std::string const& received() const { return input_; }

private:
    static constexpr int kDeadline = 20000;  // milliseconds

    // False at the end of the connection and at the deadline.
    bool read()
    {
        std::array<char, 65536> buffer;
        pollfd query{socket_.get(), POLLIN, 0};
        ssize_t const count =
            poll(&query, 1, kDeadline) == 1 ? recv(socket_.get(), buffer.data(), buffer.size(), 0) : 0;
        input_.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }

    // Takes whole chunks (RFC 9112, section 7.1) out of the input.
    void takeChunks()
    {
        auto const header = input_.find("\r\n\r\n");
        if (header == std::string::npos) {
            return;
        }
        taken_ = taken_ == 0 ? header + 4 : taken_;
        auto lineEnd = input_.find("\r\n", taken_);
        while (lineEnd != std::string::npos) {
            std::size_t const length = std::stoul(input_.substr(taken_, lineEnd - taken_), nullptr, 16);
            if (input_.size() < lineEnd + 2 + length + 2) {
                return;
            }
            streamed_ += input_.substr(lineEnd + 2, length);
            taken_ = lineEnd + 2 + length + 2;
            lineEnd = input_.find("\r\n", taken_);
        }
    }

    telephone::FileDescriptor socket_;
    std::string input_;
    std::size_t taken_ = 0;  // of the input
    std::string streamed_;
};
