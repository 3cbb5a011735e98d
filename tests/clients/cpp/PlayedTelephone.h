// A telephone that a test plays: it listens at a socket, replies by simple rules and sends what the test wants. Its
// thread serves one application at a time.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

class PlayedTelephone
{
public:
    explicit PlayedTelephone(std::string path, std::string start = "first")
        : path_(std::move(path))
        , start_(std::move(start))
        , listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
        , wake_(::eventfd(0, EFD_CLOEXEC))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.c_str(), path_.size() + 1);
        ::unlink(path_.c_str());
        EXPECT_EQ(::bind(listener_, reinterpret_cast<sockaddr const*>(&address), sizeof(address)), 0);
        EXPECT_EQ(::listen(listener_, 8), 0);
        thread_ = std::thread([this] { serve(); });
    }
    ~PlayedTelephone()
    {
        ends_ = true;
        wake();
        thread_.join();
        ::close(listener_);
        ::close(wake_);
    }

    // What it replies to a message, whole; set before the first connection. Empty: the ordinary reply.
    std::function<std::string(std::string const&)> answer = [](std::string const&) { return std::string(); };

    // Counts an event, and sends it with its number.
    void happen(std::string const& text)
    {
        std::lock_guard const lock(mutex_);
        ++number_;
        pending_ += "event " + std::to_string(number_) + " 2026-11-22T21:09:57.123Z\n" + text + std::string(1, '\0');
        wake();
    }
    // Counts events that are no longer kept: a gap and the state in their place.
    void forget(std::uint64_t count)
    {
        std::lock_guard const lock(mutex_);
        pending_ += gap(number_ + 1, number_ + count);
        number_ += count;
        pending_ += "state\n" + state() + std::string(1, '\0');
        wake();
    }
    void say(std::string const& bytes)
    {
        std::lock_guard const lock(mutex_);
        pending_ += bytes;
        wake();
    }
    void hangUp()
    {
        std::lock_guard const lock(mutex_);
        hangsUp_ = true;
        wake();
    }
    std::vector<std::string> received()
    {
        std::lock_guard const lock(mutex_);
        return received_;
    }

    static std::string message(std::string const& kind, std::string const& text)
    {
        return kind + "\n" + text + std::string(1, '\0');
    }

private:
    void wake() const
    {
        std::uint64_t const one = 1;
        EXPECT_EQ(::write(wake_, &one, sizeof(one)), static_cast<ssize_t>(sizeof(one)));
    }
    static std::string gap(std::uint64_t first, std::uint64_t last)
    {
        return "gap\n{\"first\":" + std::to_string(first) + ",\"last\":" + std::to_string(last) + "}" +
               std::string(1, '\0');
    }
    std::string state() const
    {
        return R"({"start":")" + start_ + R"(","event":)" + std::to_string(number_) +
               R"(,"time":"2026-11-22T21:09:57.500Z","domain":null,"ready":true,"service":"in service","lines":[],)"
               R"("calls":[],"keys":[],"hook_up":false,"plugged":[],"muted":false,"locked":false,)"
               R"("store":{"path":null,"writable":true}})";
    }
    void serve()
    {
        int application = -1;
        std::string input;
        while (!ends_) {
            pollfd waited[3] = {{listener_, POLLIN, 0}, {wake_, POLLIN, 0}, {application, POLLIN, 0}};
            ::poll(waited, 3, -1);
            if ((waited[0].revents & POLLIN) != 0) {
                drop(application);
                application = ::accept(listener_, nullptr, nullptr);
                input.clear();
            }
            if ((waited[1].revents & POLLIN) != 0) {
                std::uint64_t times = 0;
                EXPECT_EQ(::read(wake_, &times, sizeof(times)), static_cast<ssize_t>(sizeof(times)));
            }
            if (application >= 0 && waited[2].revents != 0 && !take(application, input)) {
                drop(application);
            }
            std::lock_guard const lock(mutex_);
            if (application >= 0 && !pending_.empty()) {
                ::send(application, pending_.data(), pending_.size(), MSG_NOSIGNAL);
                pending_.clear();
            }
            if (std::exchange(hangsUp_, false)) {
                drop(application);
            }
        }
        drop(application);
    }
    static void drop(int& application)
    {
        if (application >= 0) {
            ::close(application);
        }
        application = -1;
    }
    bool take(int application, std::string& input)
    {
        char buffer[4096];
        ssize_t const count = ::recv(application, buffer, sizeof(buffer), 0);
        if (count <= 0) {
            return false;
        }
        input.append(buffer, static_cast<std::size_t>(count));
        std::lock_guard const lock(mutex_);
        for (std::size_t end = 0; (end = input.find('\0')) != std::string::npos; input.erase(0, end + 1)) {
            received_.push_back(input.substr(0, end));
            pending_ += replyTo(received_.back());
        }
        return true;
    }
    std::string replyTo(std::string const& text)
    {
        std::string const own = answer(text);
        if (!own.empty()) {
            return own;
        }
        if (text[0] == '<') {
            return message("answer", "sfiSuccess") + message("finished", "");
        }
        bool const isOtherStart = text.rfind("events after", 0) == 0 && text.find(" of " + start_) == std::string::npos;
        return message("result", text == "state" ? state() : "") +
               (isOtherStart ? gap(1, number_) + message("state", state()) : "");
    }

    std::string const path_;
    std::string const start_;
    int listener_;
    int wake_;
    std::atomic<bool> ends_{false};
    std::mutex mutex_;
    std::string pending_;
    std::vector<std::string> received_;
    std::uint64_t number_ = 0;
    bool hangsUp_ = false;
    std::thread thread_;
};
