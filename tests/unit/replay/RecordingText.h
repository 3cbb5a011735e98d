// Recordings for the tests, with times that begin at noon.
#pragma once

#include <sstream>
#include <string>

#include "telephone/replay/Recording.h"

inline constexpr char const* kHeader =
    R"({"recording":1,"time":"2026-03-01T12:00:00.000Z","telephone":"1.0.0","state":{"start":"k3f9x2ab",)"
    R"("domain":"127.0.0.1:5060","ready":true,"lines":[{"id":"4711","number":1}],"calls":[{"id":1,"state":"held"}]}})"
    "\n";

// ",\"time\":...": this many milliseconds after noon, less than a minute.
inline std::string at(int milliseconds)
{
    std::string const digits = std::to_string(100000 + milliseconds);
    return R"(,"time":"2026-03-01T12:00:)" + digits.substr(1, 2) + "." + digits.substr(3) + R"(Z")";
}

inline std::string requestLine(int time, std::string const& text, std::string const& session = "application-1")
{
    return R"({"request":")" + text + R"(","session":")" + session + "\"" + at(time) + "}\n" +
           R"({"answer":"sfiSuccess","session":")" + session + "\"" + at(time) + "}\n" +
           R"({"finished":null,"session":")" + session + "\"" + at(time) + "}\n";
}

inline std::string commandLine(int time, std::string const& text, std::string const& result = {},
                               std::string const& session = "application-1")
{
    return R"({"command":")" + text + R"(","session":")" + session + "\"" + at(time) + "}\n" + R"({"result":")" +
           result + R"(","session":")" + session + "\"" + at(time) + "}\n";
}

inline std::string eventLine(int time, int number, std::string const& raw)
{
    return R"({"event":)" + std::to_string(number) + R"(,"raw":")" + raw + "\"" + at(time) + "}\n";
}

inline std::string held(std::string const& call, std::string const& line = "4711")
{
    return "<Method>CallHeldEvent</Method><LineID>" + line + "</LineID><CallID>" + call + "</CallID>";
}

inline std::string retrieved(std::string const& call, std::string const& party = "sip:100@127.0.0.1:5060")
{
    return "<Method>CallRetrievedEvent</Method><LineID>4711</LineID><CallID>" + call + "</CallID><URI>" + party +
           "</URI><Name></Name><ILCallLevel>0</ILCallLevel><ILLocalLevel>0</ILLocalLevel>"
           "<ConnectedToMediaServer>0</ConnectedToMediaServer>";
}

inline std::string holdCall(std::string const& call)
{
    return "<Method>HoldCall</Method><Line>4711</Line><CallID>" + call + "</CallID>";
}

inline telephone::Outcome<telephone::Recording> readLines(std::string const& lines)
{
    std::istringstream file(lines);
    return telephone::readRecording(file, "test.recording");
}

inline telephone::Recording recordingOf(std::string const& lines)
{
    return readLines(kHeader + lines).value();
}
