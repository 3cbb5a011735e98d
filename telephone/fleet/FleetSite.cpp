#include "telephone/fleet/FleetSite.h"

#include <array>

#include <httplib.h>

#include "telephone/access/Words.h"
#include "telephone/fleet/FleetCommands.h"
#include "telephone/fleet/FleetTable.h"

namespace telephone {

namespace {

Members& membersOf(HttpExchange& exchange)
{
    return static_cast<FleetSite&>(exchange.site).members;
}

void answerTelephones(HttpExchange& exchange)
{
    Members& members = membersOf(exchange);
    std::vector<FleetRow> rows;
    {
        auto const lock = members.lock();
        rows = rowsOf(*members.select("all"), members.stop());
    }
    answerJson(exchange.response, {{"telephones", fleetJson(rows)}});
}

// Leads to the telephone's own page, and admits the browser there.
void openPanelOf(HttpExchange& exchange)
{
    Members& members = membersOf(exchange);
    auto const lock = members.lock();
    auto const chosen = members.select(lastNameOf(exchange));
    if (!chosen || chosen->size() != 1) {
        return answerError(exchange.response, 404, chosen ? "name one telephone" : chosen.error().reason);
    }
    FleetTelephone const& telephone = *chosen->front();
    if (telephone.panel().empty()) {
        return answerError(exchange.response, 503, "the telephone does not run at the moment");
    }
    exchange.response.set_redirect(telephone.panel(), 303);
}

void runCommand(HttpExchange& exchange)
{
    auto const result = runFleetLine(membersOf(exchange), trimmed(exchange.body));
    if (!result) {
        return answerError(exchange.response, 400, result.error().reason);
    }
    answerJson(exchange.response, {{"result", *result}});
}

constexpr std::array kTelephoneNumber{RouteParameter{"path", "number", "integer", "its number, from 1"}};
constexpr std::array kFleetText{RouteContent{"text/plain", "CommandText"}};
constexpr std::array kFleetJson{RouteContent{kJsonType, "Fleet"}};
constexpr std::array kFleetPage{RouteContent{"text/html", "Text"}};

// clang-format off
constexpr std::array kFleetRoutes{
    Route{"GET",  "/",                    "this list",                                      {}, {}, kFleetText, listAddresses},
    Route{"GET",  "/fleet",               "the fleet, as a page for a browser",             {}, {}, kFleetPage, [](HttpExchange& x) { answerPage(x, "fleet.html"); }},
    Route{"GET",  "/panel/{file}",        "what the page consists of",                      kPageFile, {}, kPageFiles, servePageFile},
    Route{"GET",  "/telephones",          "the telephones at this moment",                  {}, {}, kFleetJson, answerTelephones},
    Route{"GET",  "/telephones/{number}", "leads to the panel of one telephone",            kTelephoneNumber, {}, kFleetPage, openPanelOf},
    Route{"POST", "/commands",            "runs a command of the fleet, as its prompt does", {}, kFleetText, kFleetJson, runCommand},
};
// clang-format on

}  // namespace

FleetSite::FleetSite(Members& served)
    : HttpSite(kFleetRoutes, "/fleet")
    , members(served)
{}

}  // namespace telephone
