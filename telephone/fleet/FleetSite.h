// A fleet over HTTP: its page for a browser, the telephones as JSON, and its commands. HttpServer owns it; its handlers
// run on the threads of the connections.
#pragma once

#include "telephone/fleet/Members.h"
#include "telephone/http/HttpSite.h"

namespace telephone {

struct FleetSite : HttpSite
{
    // The members outlive the server.
    explicit FleetSite(Members& served);

    Members& members;
};

}  // namespace telephone
