// A telephone that serves applications, with its own process and socket.
#pragma once

#include <algorithm>
#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Process.h"
#include "TelephoneClient.h"
#include "tests/doubles/TemporaryFolder.h"

class RunningTelephone
{
public:
    explicit RunningTelephone(std::vector<std::string> const& options = {})
        : process_(command(options))
    {
        process_.readUntil("applications can connect at " + socket() + "\n");
    }

    std::string socket() const { return folder_.file("socket"); }
    Process& process() { return process_; }

private:
    std::vector<std::string> command(std::vector<std::string> const& options) const
    {
        std::vector<std::string> words{TELEPHONE, "serve", "--socket", socket()};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    TemporaryFolder const folder_;
    Process process_;
};

// An application that sends requests and reads answers and events.
class Application
{
    using Kind = telephone_client::Message::Kind;

public:
    explicit Application(std::string const& socket)
        : client_(telephone_client::Connection::open(socket).value())
    {
        EXPECT_TRUE(client_.send("advance 0"));
        timeIsVirtual_ = client_.receive().value().kind == Kind::kResult;
    }

    // The answer; nothing: the request has none. "error: ..." if the telephone does not accept it.
    std::optional<std::string> request(std::string const& text)
    {
        EXPECT_TRUE(client_.send(text));
        std::optional<std::string> answer;
        reasons_.clear();
        while (auto const message = client_.receive()) {
            if (message->kind == Kind::kFinished) {
                return answer;
            }
            if (message->kind == Kind::kAnswer) {
                answer = message->text;
            }
            if (message->kind == Kind::kError) {
                return "error: " + message->text;
            }
            if (message->kind == Kind::kReason) {
                reasons_.push_back(message->text);
            }
            if (message->kind == Kind::kEvent) {
                events_.push_back(message->text);
            }
        }
        ADD_FAILURE() << "the telephone has gone";
        return std::nullopt;
    }

    // Of the latest request, if they were switched on.
    std::vector<std::string> const& reasons() const { return reasons_; }

    // The result of a command of the telephone.
    std::string command(std::string const& text)
    {
        EXPECT_TRUE(client_.send(text));
        while (auto const message = client_.receive()) {
            if (message->kind == Kind::kEvent) {
                events_.push_back(message->text);
                continue;
            }
            EXPECT_EQ(message->kind, Kind::kResult) << message->text;
            return message->text;
        }
        ADD_FAILURE() << "the telephone has gone";
        return {};
    }

    // How many of the events that came so far contain the text.
    [[nodiscard]] long seen(std::string const& text) const
    {
        return std::count_if(events_.begin(), events_.end(),
                             [&text](std::string const& each) { return each.find(text) != std::string::npos; });
    }

    // The next event that contains the text; earlier ones are skipped. Virtual time moves until it comes.
    std::string event(std::string const& text)
    {
        int moves = 0;
        while (moves < kMostMoves) {
            while (taken_ < events_.size()) {
                std::string const& each = events_[taken_++];
                if (each.find(text) != std::string::npos) {
                    return each;
                }
            }
            if (timeIsVirtual_) {
                ++moves;
                command("advance 0.1");
                continue;
            }
            auto const message = client_.receive();
            if (!message) {
                ADD_FAILURE() << "the telephone has gone";
                return {};
            }
            if (message->kind == Kind::kEvent) {
                events_.push_back(message->text);
            }
        }
        ADD_FAILURE() << "there is no event with " << text;
        return {};
    }

private:
    static constexpr int kMostMoves = 600;  // a minute

    telephone_client::Connection client_;
    bool timeIsVirtual_ = false;
    std::vector<std::string> reasons_;
    std::vector<std::string> events_;
    std::size_t taken_ = 0;
};

inline std::string method(std::string const& name, std::string const& elements = {})
{
    return "<Method>" + name + "</Method>" + elements;
}
