// Offers a played telephone over HTTP: passes requests on to its socket, and replies and events back, in the words of
// docs/http.md. Its thread serves the clients of one test. When the telephone ends its connection, it ends all of its
// own.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstring>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

class HttpFront
{
public:
    static constexpr char const* kToken = "f00d";

    // isSlow: each byte is sent by itself.
    HttpFront(std::string path, bool isSlow)
        : path_(std::move(path))
        , isSlow_(isSlow)
        , listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(listener_, plain, size), 0);
        EXPECT_EQ(::listen(listener_, 8), 0);
        EXPECT_EQ(::getsockname(listener_, plain, &size), 0);
        place_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
        thread_ = std::thread([this] { serve(); });
    }
    ~HttpFront()
    {
        ends_ = true;
        ::shutdown(listener_, SHUT_RDWR);
        thread_.join();
        hangUp();
        ::close(listener_);
    }

    std::string address() const { return "http://" + place_; }

private:
    using Json = nlohmann::json;

    struct Client
    {
        int socket;
        std::string input;
        bool waits = false;     // for a reply
        bool isStream = false;  // of events
    };

    void serve()
    {
        while (!ends_) {
            std::vector<pollfd> waited{{listener_, POLLIN, 0}, {telephone_, POLLIN, 0}};
            for (Client const& each : clients_) {
                waited.push_back({each.socket, POLLIN, 0});
            }
            ::poll(waited.data(), waited.size(), -1);
            auto client = clients_.begin();
            for (std::size_t i = 2; i < waited.size(); ++i) {
                auto const current = client++;
                if (waited[i].revents != 0 && !receive(current->socket, current->input)) {
                    ::close(current->socket);
                    clients_.erase(current);
                } else {
                    takeRequest(*current);
                }
            }
            if (waited[1].revents != 0) {
                receive(telephone_, said_) ? takeMessages() : hangUp();
            }
            if (waited[0].revents != 0 && !ends_) {
                clients_.push_back({::accept(listener_, nullptr, nullptr), {}});
            }
        }
    }
    static bool receive(int socket, std::string& input)
    {
        char buffer[65536];
        ssize_t const count = ::recv(socket, buffer, sizeof(buffer), 0);
        input.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0;
    }
    void send(int socket, std::string const& text) const
    {
        int const yes = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
        std::size_t const piece = isSlow_ ? 1 : text.size();
        for (std::size_t i = 0; i < text.size(); i += piece) {
            ::send(socket, text.data() + i, piece, MSG_NOSIGNAL);
        }
    }
    void hangUp()
    {
        for (Client const& each : clients_) {
            ::close(each.socket);
        }
        clients_.clear();
        ::close(std::exchange(telephone_, -1));
        said_.clear();
    }

    void takeRequest(Client& client)
    {
        auto const end = client.input.find("\r\n\r\n");
        std::string const head = client.input.substr(0, end);
        std::string const length = "\r\nContent-Length: ";
        if (client.waits || end == std::string::npos ||
            client.input.size() - end - 4 < std::stoul(head.substr(head.find(length) + length.size()))) {
            return;
        }
        client.waits = true;
        EXPECT_NE(head.find("\r\nHost: " + place_ + "\r\n"), std::string::npos) << head;
        EXPECT_NE(head.find("\r\nAuthorization: Bearer " + std::string(kToken) + "\r\n"), std::string::npos) << head;
        std::string const target = head.substr(0, head.find(" HTTP/1.1\r\n"));
        std::string const text =
            target.rfind("GET ", 0) == 0 ? subscription(target) : client.input.substr(end + 4, std::string::npos);
        EXPECT_EQ(target, target[0] == 'G' ? target : text[0] == '<' ? "POST /requests" : "POST /commands");
        connect();
        ::send(telephone_, text.c_str(), text.size() + 1, MSG_NOSIGNAL);
    }
    // GET /events?after=1&start=%66%69rst as the command that it stands for.
    static std::string subscription(std::string const& target)
    {
        char start[256] = {};
        unsigned long number = 0;
        EXPECT_EQ(std::sscanf(target.c_str(), "GET /events?after=%lu&start=%255s", &number, start), 2) << target;
        std::string name;
        for (char const* at = start; *at != '\0'; ++at) {
            name += *at != '%' ? *at : static_cast<char>(std::stoi(std::string(at + 1, 2), nullptr, 16));
            at += *at == '%' ? 2 : 0;
        }
        return "events after " + std::to_string(number) + " of " + name;
    }
    void connect()
    {
        if (telephone_ >= 0) {
            return;
        }
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.c_str(), path_.size() + 1);
        telephone_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ::connect(telephone_, reinterpret_cast<sockaddr const*>(&address), sizeof(address));
    }

    void takeMessages()
    {
        for (std::size_t end = 0; (end = said_.find('\0')) != std::string::npos; said_.erase(0, end + 1)) {
            std::string const head = said_.substr(0, said_.find('\n'));
            take(head, head.substr(0, head.find(' ')), said_.substr(head.size() + 1, end - head.size() - 1));
        }
    }
    void take(std::string const& head, std::string const& kind, std::string const& text)
    {
        if (kind == "answer") {
            answer_["answer"] = text;
        } else if (kind == "reason") {
            answer_["reasons"].push_back(text);
        } else if (kind == "finished") {
            reply("200 OK", std::exchange(answer_, kNoAnswer));
        } else if (kind == "result") {
            reply("200 OK", {{"result", text[0] == '{' ? Json::parse(text) : Json(text)}});
        } else if (kind == "error") {
            reply("400 Bad Request", {{"error", text}});
        } else if (kind == "event" && std::count(head.begin(), head.end(), ' ') == 2) {
            auto const space = head.rfind(' ');
            std::string const number = head.substr(6, space - 6);
            Json const data{{"event", std::stoi(number)}, {"time", head.substr(space + 1)}, {"raw", text}};
            stream("id: " + number + "\nevent: CallHeldEvent\ndata: " + data.dump() + "\n\n");
        } else if (kind == "state") {
            stream("id: " + Json::parse(text)["event"].dump() + "\nevent: state\ndata: " + text + "\n\n");
        } else if (kind == "gap") {
            stream("event: gap\ndata: " + text + "\n\n");
        } else {
            stream(": a comment\n\nevent: " + kind + "\ndata: " + Json(text).dump() + "\n\n");
        }
    }
    // To the client that waits longest. One that asked for events has its stream from now on.
    void reply(std::string const& status, Json const& body)
    {
        auto const client = std::find_if(clients_.begin(), clients_.end(),
                                         [](Client const& each) { return each.waits && !each.isStream; });
        ASSERT_NE(client, clients_.end());
        if (client->input[0] == 'G' && status == "200 OK") {
            client->isStream = true;
            send(client->socket,
                 "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nTransfer-Encoding: chunked\r\n\r\n");
            return;
        }
        std::string const text = body.dump();
        send(client->socket, "HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Type: application/json\r\n" +
                                 "content-length:  " + std::to_string(text.size()) + "\r\n\r\n" + text);
        ::close(client->socket);
        clients_.erase(client);
    }
    void stream(std::string const& text)
    {
        char size[32];
        std::snprintf(size, sizeof(size), "%zx\r\n", text.size());
        for (Client const& each : clients_) {
            if (each.isStream) {
                send(each.socket, size + text + "\r\n");
            }
        }
    }

    inline static Json const kNoAnswer{{"answer", nullptr}, {"reasons", Json::array()}, {"finished", true}};

    std::string const path_;
    bool const isSlow_;
    std::string place_;
    int listener_;
    int telephone_ = -1;
    std::string said_;  // by the telephone
    Json answer_ = kNoAnswer;
    std::list<Client> clients_;
    std::atomic<bool> ends_{false};
    std::thread thread_;
};
