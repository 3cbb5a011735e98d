#include "ApplicationPeer.h"

#include <array>
#include <cstring>
#include <stdexcept>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

ApplicationPeer::ApplicationPeer(std::string const& path)
    : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        ::close(socket_);
        throw std::runtime_error("nobody listens on " + path);
    }
}

ApplicationPeer::~ApplicationPeer()
{
    ::close(socket_);
}

void ApplicationPeer::send(std::string_view request)
{
    std::string const message = std::string(request) + '\0';
    for (std::size_t sent = 0; sent < message.size();) {
        auto const count = ::send(socket_, message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            throw std::runtime_error("the telephone has gone");
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string_view ApplicationPeer::next()
{
    auto end = input_.find('\0', taken_);
    while (end == std::string::npos) {
        input_.erase(0, taken_);
        taken_ = 0;
        std::array<char, 65536> buffer;
        auto const count = ::recv(socket_, buffer.data(), buffer.size(), 0);
        if (count <= 0) {
            throw std::runtime_error("the telephone has gone");
        }
        auto const searched = input_.size();
        input_.append(buffer.data(), static_cast<std::size_t>(count));
        end = input_.find('\0', searched);
    }
    auto const message = std::string_view(input_).substr(taken_, end - taken_);
    taken_ = end + 1;
    return message;
}

std::string_view ApplicationPeer::nextBeginning(std::string_view beginning)
{
    auto message = next();
    while (message.substr(0, beginning.size()) != beginning) {
        message = next();
    }
    return message;
}

std::string ApplicationPeer::request(std::string_view text)
{
    send(text);
    std::string answer;
    for (auto message = next(); message.substr(0, 8) != "finished"; message = next()) {
        if (message.substr(0, 6) == "answer") {
            answer = message;
        }
    }
    return answer;
}

std::string_view elementOf(std::string_view message, std::string_view tag)
{
    auto const opening = "<" + std::string(tag) + ">";
    auto const found = message.find(opening);
    if (found == std::string_view::npos) {
        return {};
    }
    auto const value = message.substr(found + opening.size());
    return value.substr(0, value.find('<'));
}
