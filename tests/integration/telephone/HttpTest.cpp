// The telephone over HTTP, as curl sees it.
#include <sstream>

#include <gtest/gtest.h>

#include "Process.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

// A telephone in a run folder of its own.
class HttpTelephone : public testing::Test
{
protected:
    HttpTelephone()
    {
        writeFile(folder_.file("telephone.toml"), "[http]\naddress = \"127.0.0.1:0\"\n");
        process_.emplace(std::vector<std::string>{TELEPHONE, "--config", folder_.file("telephone.toml"), "serve"},
                         std::vector<std::string>{"XDG_RUNTIME_DIR=" + folder_.path()});
        process_->readUntil("HTTP: ");
        std::string const output = process_->readUntil("\n");
        address_ = output.substr(output.rfind("HTTP: ") + 6);
        address_ = address_.substr(0, address_.find('\n'));
    }

    // Runs lines of a shell.
    Ended shell(std::string const& lines) const { return run(command(lines)); }
    std::vector<std::string> command(std::string const& lines) const
    {
        return {"sh", "-euc", "XDG_RUNTIME_DIR=" + folder_.path() + "\n" + lines};
    }

    TemporaryFolder const folder_;
    std::optional<Process> process_;
    std::string address_;  // as printed, with the token
};

// The blocks of a page that are meant for a shell.
std::vector<std::string> shellBlocks(std::string const& page)
{
    std::vector<std::string> blocks;
    std::istringstream text(page);
    bool inBlock = false;
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("```", 0) == 0) {
            inBlock = line == "```sh";
            blocks.resize(blocks.size() + (inBlock ? 1 : 0));
        } else if (inBlock) {
            blocks.back() += line + "\n";
        }
    }
    return blocks;
}

}  // namespace

TEST_F(HttpTelephone, LinesOfItsPage_Work)
{
    std::vector<std::string> blocks = shellBlocks(contentOf(PROJECT "/docs/http.md"));
    ASSERT_EQ(blocks.size(), 5U);
    // Only the port is another one: 8080 may be in use on this machine.
    std::string variables = blocks[0];
    std::string const written = "http://127.0.0.1:8080";
    ASSERT_NE(variables.find(written), std::string::npos);
    variables.replace(variables.find(written), written.size(), address_.substr(0, address_.find("/?")));

    Process events(command(variables + blocks[1]));
    events.readUntil("event: hello\n");
    Ended const call = shell(variables + blocks[2]);
    EXPECT_EQ(call.status, 0) << call.output;
    EXPECT_NE(call.output.find("{\"answer\":\"sfiSuccess\",\"reasons\":[],\"finished\":true}\n"), std::string::npos)
        << call.output;
    events.readUntil("\"CallState\":{\"value\":6,\"name\":\"connected\"}");

    EXPECT_EQ(
        shell(variables + blocks[3]).output,
        "{\"answer\":\"sfiSuccess\",\"reasons\":[],\"finished\":true}\n"
        "{\"answer\":\"sfiFailure\",\"reasons\":[\"line 4711 has no call 7; it has call 1\"],\"finished\":true}\n");
    events.readUntil("event: CallHeldEvent\n");

    Ended const rest = shell(variables + blocks[4]);
    EXPECT_EQ(rest.status, 0) << rest.output;
    EXPECT_NE(rest.output.find("\"held_here\":true"), std::string::npos) << rest.output;
    EXPECT_NE(rest.output.find("\n{\"result\":\"\"}\n{\"result\":\"4711  "), std::string::npos) << rest.output;
    EXPECT_NE(rest.output.find("Puts a call on hold."), std::string::npos) << rest.output;
}

TEST_F(HttpTelephone, PrintedAddress_IsAdmittedUntilTheTelephoneEnds)
{
    std::string const token = folder_.file("telephone.socket.token");
    EXPECT_EQ(address_.substr(address_.find("token=") + 6) + "\n", contentOf(token));
    Ended const list = run({"curl", "-s", address_});
    EXPECT_NE(list.output.find("POST  /requests"), std::string::npos) << list.output;
    std::string const base = address_.substr(0, address_.find("/?"));
    std::string const query = address_.substr(address_.find("/?") + 1);
    Process events({"curl", "-s", "-N", base + "/events" + query});
    events.readUntil("event: hello\n");

    EXPECT_EQ(run({"curl", "-s", base + "/commands" + query, "-d", "quit"}).output, "{\"result\":\"\"}\n");

    EXPECT_EQ(process_->wait(), 0) << process_->output();
    EXPECT_EQ(events.wait(), 0) << events.output();
    EXPECT_FALSE(std::filesystem::exists(token));
}

TEST(Http, AddressOpenToTheNetworkWithoutACertificate_IsRefusedAtTheStart)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    writeFile(file, "[http]\naddress = \"0.0.0.0:8080\"\n");

    Ended const result = run({TELEPHONE, "--config", file, "serve"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "telephone: " + file +
                                 ":1: http.address \"0.0.0.0:8080\" can be reached from other machines, so it needs "
                                 "http.certificate and http.key; without them use 127.0.0.1\n");
}
