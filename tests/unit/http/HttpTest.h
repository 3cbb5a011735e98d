// A server for a telephone double, and requests to it.
#pragma once

#include <regex>

#include "HttpConnection.h"
#include "telephone/http/HttpServer.h"
#include "tests/doubles/TemporaryFolder.h"
#include "tests/unit/access/TelephoneDouble.h"

struct HttpAnswer
{
    int status = 0;
    std::string header;
    std::string body;
};

class HttpTest : public testing::Test
{
protected:
    void SetUp() override { open(); }

    void open()
    {
        server_ = telephone::HttpServer::open(settings_, telephone_.services()).value();
        std::string const address = server_->address();
        token_ = address.substr(address.find("token=") + 6);
    }

    // The answer to a request as it stands.
    HttpAnswer answerTo(std::string const& request)
    {
        HttpConnection connection(server_->port());
        connection.send(request);
        std::string const text = connection.readAll();
        auto const end = std::min(text.find("\r\n\r\n"), text.size());
        bool const isAnswer = text.rfind("HTTP/1.1 ", 0) == 0;
        EXPECT_TRUE(isAnswer) << text;
        return {isAnswer ? std::stoi(text.substr(9)) : 0, text.substr(0, end),
                text.substr(std::min(end + 4, text.size()))};
    }

    // The first lines of a request that is admitted.
    std::string head(std::string const& target, std::string const& fields = {}) const
    {
        return target + " HTTP/1.1\r\nHost: " + host() + "\r\nAuthorization: Bearer " + token_ + "\r\n" + fields;
    }
    HttpAnswer get(std::string const& path) { return answerTo(head("GET " + path) + "\r\n"); }
    HttpAnswer post(std::string const& path, std::string const& body)
    {
        return answerTo(head("POST " + path, "Content-Length: " + std::to_string(body.size()) + "\r\n") + "\r\n" +
                        body);
    }

    // A stream that has been opened; its header is not read yet.
    HttpConnection stream(std::string const& query = {}, std::string const& fields = {}, int receiveBuffer = 0)
    {
        HttpConnection connection(server_->port(), receiveBuffer);
        connection.send(head("GET /events" + query, fields) + "\r\n");
        return connection;
    }

    std::string host() const { return "127.0.0.1:" + std::to_string(server_->port()); }

    // With "T" for every time.
    static std::string withoutTimes(std::string const& text)
    {
        return std::regex_replace(text, std::regex("\"time\":\"[^\"]*\""), "\"time\":\"T\"");
    }

    TemporaryFolder const folder_;
    telephone::HttpServer::Settings settings_{{"127.0.0.1:0", "", ""}, folder_.file("token"), folder_.file("browsers")};
    TelephoneDouble telephone_;
    std::unique_ptr<telephone::HttpServer> server_;
    std::string token_;
};
