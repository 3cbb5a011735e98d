// Who is admitted, and what is refused before anything is done.
#include <httplib.h>
#include <sys/stat.h>

#include "HttpTest.h"

using namespace telephone;

namespace {

class HttpSecurityTest : public HttpTest
{
protected:
    // The status of GET /hello with these header fields.
    int statusWith(std::string const& fields, std::string const& target = "/hello")
    {
        return answerTo("GET " + target + " HTTP/1.1\r\n" + fields + "\r\n").status;
    }
    std::string bearer() const { return "Authorization: Bearer " + token_ + "\r\n"; }
    std::string ownHost() const { return "Host: " + host() + "\r\n"; }

    void TearDown() override { EXPECT_TRUE(telephone_.invoker.requests.empty()); }
};

}  // namespace

TEST_F(HttpSecurityTest, Token_IsRequired)
{
    HttpAnswer const missing = answerTo("GET /hello HTTP/1.1\r\n" + ownHost() + "\r\n");
    EXPECT_EQ(missing.status, 401);
    EXPECT_EQ(missing.body, R"({"error":"the token is missing or wrong: send \"Authorization: Bearer TOKEN\", or add )"
                            R"(?token=TOKEN to the address; the telephone has printed it at its start"})"
                            "\n");
    EXPECT_NE(missing.header.find("WWW-Authenticate: Bearer"), std::string::npos);

    std::string wrong = token_;
    wrong.back() = wrong.back() == '0' ? '1' : '0';
    for (std::string const& each : {wrong, token_.substr(1), token_ + "0", std::string()}) {
        EXPECT_EQ(statusWith(ownHost() + "Authorization: Bearer " + each + "\r\n"), 401) << each;
        EXPECT_EQ(statusWith(ownHost(), "/hello?token=" + each), 401) << each;
    }
    EXPECT_EQ(statusWith(ownHost() + "Authorization: Basic " + token_ + "\r\n"), 401);
    EXPECT_EQ(statusWith(ownHost() + bearer()), 200);
    EXPECT_EQ(statusWith(ownHost(), "/hello?token=" + token_), 200);
}

TEST_F(HttpSecurityTest, TokenInTheBody_DoesNotCount)
{
    std::string const body = "token=" + token_;

    EXPECT_EQ(answerTo("POST /requests HTTP/1.1\r\n" + ownHost() +
                       "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                       std::to_string(body.size()) + "\r\n\r\n" + body)
                  .status,
              401);
}

TEST_F(HttpSecurityTest, Token_IsNewForEachStartAndReadableForItsOwnerOnly)
{
    std::string const first = token_;
    struct stat file
    {};
    ASSERT_EQ(stat(folder_.file("token").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777U, 0600U);
    EXPECT_EQ(contentOf(folder_.file("token")), first + "\n");
    EXPECT_EQ(first.size(), 32U);

    server_.reset();
    EXPECT_FALSE(std::filesystem::exists(folder_.file("token")));
    writeFile(folder_.file("token"), "of a telephone that was killed");
    std::filesystem::permissions(folder_.file("token"), std::filesystem::perms::all);
    open();

    EXPECT_NE(token_, first);
    EXPECT_EQ(contentOf(folder_.file("token")), token_ + "\n");
    ASSERT_EQ(stat(folder_.file("token").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777U, 0600U);
}

TEST_F(HttpSecurityTest, Host_MustBeTheTelephones)
{
    std::string const port = std::to_string(server_->port());

    EXPECT_EQ(statusWith("Host: localhost:" + port + "\r\n" + bearer()), 200);
    EXPECT_EQ(statusWith("Host: LOCALHOST:" + port + "\r\n" + bearer()), 200);
    for (std::string const& each : {"evil.example:" + port, std::string("127.0.0.1"), "127.0.0.1:1" + port,
                                    std::string("localhost"), host() + ".evil.example", std::string()}) {
        EXPECT_EQ(statusWith("Host: " + each + "\r\n" + bearer()), 403) << each;
    }
    EXPECT_EQ(statusWith(bearer()), 403);
    EXPECT_EQ(statusWith(ownHost() + "Host: evil.example\r\n" + bearer()), 403);
    EXPECT_EQ(answerTo("GET /hello HTTP/1.1\r\nHost: evil.example\r\n" + bearer() + "\r\n").body,
              "{\"error\":\"the header Host does not name this telephone: use http://" + host() + "\"}\n");
}

TEST_F(HttpSecurityTest, OtherOrigins_HaveNoAccess)
{
    EXPECT_EQ(statusWith(ownHost() + bearer() + "Origin: http://" + host() + "\r\n"), 200);
    for (std::string const& each : {std::string("http://evil.example"), std::string("null"), "https://" + host(),
                                    std::string("http://127.0.0.1:1")}) {
        EXPECT_EQ(statusWith(ownHost() + bearer() + "Origin: " + each + "\r\n"), 403) << each;
    }
    HttpAnswer const answer = answerTo("OPTIONS /requests HTTP/1.1\r\n" + ownHost() + bearer() +
                                       "Origin: http://evil.example\r\nAccess-Control-Request-Method: POST\r\n\r\n");
    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, "{\"error\":\"pages of other origins have no access\"}\n");
    EXPECT_EQ(answer.header.find("Access-Control"), std::string::npos) << answer.header;
}

TEST_F(HttpSecurityTest, UnknownAddressesAndMethods_AreRefused)
{
    EXPECT_EQ(get("/nowhere").status, 404);
    EXPECT_EQ(get("/nowhere").body, "{\"error\":\"there is no such address; GET / lists them\"}\n");
    EXPECT_EQ(get("/openapi-json").status, 404);

    HttpAnswer const wrongMethod = get("/requests");
    EXPECT_EQ(wrongMethod.status, 405);
    EXPECT_EQ(wrongMethod.body, "{\"error\":\"/requests takes POST only\"}\n");
    EXPECT_NE(wrongMethod.header.find("Allow: POST"), std::string::npos);
    for (char const* const method : {"PUT", "DELETE", "PATCH", "OPTIONS"}) {
        EXPECT_EQ(answerTo(head(std::string(method) + " /state", "Content-Length: 0\r\n") + "\r\n").status, 405)
            << method;
    }
}

TEST_F(HttpSecurityTest, WrongBodies_AreRefused)
{
    EXPECT_EQ(answerTo(head("POST /requests") + "\r\n").status, 411);
    EXPECT_EQ(
        answerTo(head("POST /requests", "Content-Length: 4\r\nContent-Type: multipart/form-data; boundary=x\r\n") +
                 "\r\nabcd")
            .status,
        415);

    std::string const longBody(4 * 1024 * 1024 + 1, 'x');
    HttpAnswer const tooLong = post("/requests", longBody);
    EXPECT_EQ(tooLong.status, 413);
    EXPECT_EQ(tooLong.body, "{\"error\":\"the body is longer than 4194304 bytes\"}\n");
    EXPECT_EQ(answerTo(head("POST /requests", "Transfer-Encoding: chunked\r\n") + "\r\n400001\r\n" + longBody +
                       "\r\n0\r\n\r\n")
                  .status,
              413);
    EXPECT_EQ(post("/requests", longBody.substr(1)).status, 400);  // accepted, and not a request
}

TEST_F(HttpSecurityTest, TooLongHeaders_AreRefused)
{
    EXPECT_EQ(get("/hello?name=" + std::string(9000, 'x')).status, 414);
    EXPECT_EQ(statusWith(ownHost() + bearer() + "X: " + std::string(9000, 'x') + "\r\n"), 400);
    EXPECT_EQ(answerTo("nonsense\r\n\r\n").body, "{\"error\":\"the request is not valid HTTP, or too long\"}\n");
}

TEST_F(HttpSecurityTest, Answers_AreNotKept)
{
    std::string const header = get("/state").header;

    for (char const* const field : {"Cache-Control: no-store", "Referrer-Policy: no-referrer",
                                    "X-Content-Type-Options: nosniff", "Connection: close"}) {
        EXPECT_NE(header.find(field), std::string::npos) << header;
    }
}

TEST_F(HttpSecurityTest, PortInUse_IsRefused)
{
    HttpServer::Settings settings{{host(), "", ""}, folder_.file("second"), folder_.file("other")};

    EXPECT_EQ(HttpServer::open(settings, telephone_.services()).error().reason,
              "cannot listen at " + host() +
                  " for HTTP: another program uses the port, or the address is not one of this machine");
    EXPECT_FALSE(std::filesystem::exists(folder_.file("second")));
}

TEST_F(HttpSecurityTest, TokenFileThatCannotBeWritten_IsRefused)
{
    HttpServer::Settings settings{{"127.0.0.1:0", "", ""}, folder_.file("none/token"), folder_.file("other")};

    EXPECT_EQ(HttpServer::open(settings, telephone_.services()).error().reason,
              "the token for HTTP cannot be written to " + folder_.file("none/token") + ": No such file or directory");
}

TEST_F(HttpSecurityTest, Certificate_MakesItHttps)
{
    std::string const certificate = folder_.file("certificate.pem");
    std::string const key = folder_.file("key.pem");
    std::string const command = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 "
                                "-subj /CN=desk -addext subjectAltName=IP:127.0.0.1 -keyout " +
                                key + " -out " + certificate + " 2>" + folder_.file("log");
    ASSERT_EQ(std::system(command.c_str()), 0) << contentOf(folder_.file("log"));
    settings_.http = {"0.0.0.0:0", certificate, key};
    open();
    httplib::SSLClient client("127.0.0.1", server_->port());
    client.set_ca_cert_path(certificate.c_str());
    client.set_bearer_token_auth(token_.c_str());

    EXPECT_EQ(server_->address(), "https://0.0.0.0:" + std::to_string(server_->port()) + "/?token=" + token_);
    auto const answer = client.Post("/requests", "GetDevices", "text/plain");
    ASSERT_TRUE(answer) << httplib::to_string(answer.error());
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, "{\"answer\":\"sfiSuccess\",\"reasons\":[],\"finished\":true}\n");
    telephone_.invoker.requests.clear();
    std::string stream;
    client.Get("/events", [&](char const* data, std::size_t length) {
        stream.append(data, length);
        return false;
    });
    EXPECT_EQ(stream.substr(0, 20), "id: 0\nevent: hello\nd");
}

TEST_F(HttpSecurityTest, CertificateWithoutItsKey_IsRefused)
{
    writeFile(folder_.file("empty.pem"), "");
    HttpServer::Settings settings{{"127.0.0.1:0", folder_.file("empty.pem"), folder_.file("none.pem")},
                                  folder_.file("second"),
                                  folder_.file("other")};

    EXPECT_EQ(HttpServer::open(settings, telephone_.services()).error().reason,
              "the certificate " + folder_.file("empty.pem") + " and the key " + folder_.file("none.pem") +
                  " cannot be used: both must be PEM files that fit each other");
}
