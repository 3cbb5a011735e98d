// Many telephones at once, each a process of this program: starts them, shows them, passes commands to them, starts
// those again that die, and ends all of them. The command fleet owns the one fleet, on the main thread.
//
//     Fleet fleet({...}, stop.descriptor());
//     auto const status = fleet.run();
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/console/LinePrompt.h"
#include "telephone/fleet/Members.h"
#include "telephone/http/HttpServer.h"

namespace telephone {

struct FleetSettings
{
    Members::Plan plan;
    Members::Configure configure;
    HttpServer::Settings http;
    std::string server;  // where they register, for people
};

class Fleet : private LineUser
{
public:
    // `stop` becomes readable when the fleet must end.
    Fleet(FleetSettings settings, int stop);

    // Starts the telephones and runs the lines of the prompt until their end, quit or the stop; then all telephones
    // have ended. The exit status: 1 if the lines came from a pipe and some were refused. Refused if a telephone, or
    // the page, cannot be started.
    [[nodiscard]] Outcome<int> run();

    // Whether a telephone ended by itself, so that its files may be of interest.
    [[nodiscard]] bool hasFailures() const { return hasFailures_; }

private:
    // While the page is served.
    [[nodiscard]] Outcome<int> serve();
    [[nodiscard]] Outcome<std::string> quit();
    [[nodiscard]] Outcome<std::string> waitAsTold(std::string const& time);
    void refused(std::string const& reason);

    bool waitForInput() override;
    bool runLine(std::string const& line) override;
    [[nodiscard]] bool isOver() const override { return isOver_; }
    // Notes what has happened meanwhile.
    void settle() override;
    void writeTo(Writer writer) override { write_ = std::move(writer); }
    std::vector<std::string> completionsOf(std::string_view line) override;

    FleetSettings const settings_;
    int const stop_;
    Writer write_;
    std::unique_ptr<Members> members_;
    bool isOver_ = false;
    bool hasFailures_ = false;
};

}  // namespace telephone
