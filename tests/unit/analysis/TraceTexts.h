// Traces for the tests of what they show.
#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "telephone/analysis/TraceReader.h"
#include "tests/unit/display/DisplayTexts.h"

namespace telephone::test {

inline constexpr std::string_view kHeader = R"({"trace":1,"domain":"127.0.0.1:5060"})"
                                            "\n";

// Writes the lines of a trace. Steps have the next number, and the time that was set last.
class TraceText
{
public:
    // "01.200": in the first minute after noon.
    TraceText& at(std::string_view seconds)
    {
        time_ = seconds;
        return *this;
    }
    // The members are JSON: "step":"timer","name":"...". because: number of the cause; 0: none.
    TraceText& step(int because, std::string_view members)
    {
        ++number_;
        lines_ += "{\"seq\":" + std::to_string(number_) + ",\"time\":\"2026-03-01T12:00:" + time_ +
                  "Z\",\"thread\":\"SIP\",\"id\":1";
        lines_ += because == 0 ? "" : ",\"because\":" + std::to_string(because);
        lines_ += ",";
        lines_ += members;
        lines_ += "}\n";
        return *this;
    }
    TraceText& request(std::string_view text)
    {
        return step(0, R"("step":"request","application":"console","text":")" + std::string(text) + "\"");
    }
    TraceText& answer(int because, std::string_view text = "sfiSuccess")
    {
        return step(because, R"("step":"answer","microseconds":1200,"text":")" + std::string(text) + "\"");
    }
    TraceText& platform(int because, std::string_view name, std::string_view arguments)
    {
        return step(because, R"("step":"platform","name":")" + std::string(name) + R"(","arguments":{)" +
                                 std::string(arguments) + R"(},"result":"sfiSuccess","microseconds":0)");
    }
    // sent or received; status: "" for a request, or "200 OK".
    TraceText& sip(int because, std::string_view direction, std::string_view method, std::string_view status = "",
                   std::string_view dialog = "d1", std::string_view audio = "")
    {
        std::string members = R"("step":"sip","direction":")" + std::string(direction) +
                              R"(","peer":"127.0.0.1:5060","transport":"UDP","method":")" + std::string(method) + "\"";
        if (!status.empty()) {
            members += ",\"status\":" + std::string(status.substr(0, 3)) + R"(,"phrase":")" +
                       std::string(status.substr(4)) + "\"";
        }
        members += R"(,"dialog":")" + std::string(dialog) + "\"";
        members += audio.empty() ? "" : R"(,"audio":")" + std::string(audio) + "\"";
        return step(because, members);
    }
    // before: empty for a new call.
    TraceText& engine(int because, int call, std::string_view before, std::string_view state,
                      std::string_view party = "sip:100@127.0.0.1:5060", std::string_view dialog = "d1")
    {
        std::string members = R"("step":"engine","line":"4711","call":)" + std::to_string(call) + R"(,"state":")" +
                              std::string(state) + "\"";
        members += before.empty() ? "" : R"(,"before":")" + std::string(before) + "\"";
        members += R"(,"party":")" + std::string(party) + R"(","dialog":")" + std::string(dialog) + "\"";
        return step(because, members);
    }
    TraceText& event(int because, int number, std::string_view text)
    {
        return step(because,
                    R"("step":"event","number":)" + std::to_string(number) + R"(,"text":")" + std::string(text) + "\"");
    }
    TraceText& lamp(int because, int lamp, std::string_view label, std::string_view mode, std::string_view colour)
    {
        return step(because, R"("step":"lamp","lamp":)" + std::to_string(lamp) + R"(,"label":")" + std::string(label) +
                                 R"(","mode":")" + std::string(mode) + R"(","colour":")" + std::string(colour) + "\"");
    }

    // The number of the step that was written last.
    [[nodiscard]] int number() const { return number_; }
    // The whole file.
    [[nodiscard]] std::string text() const { return std::string(kHeader) + lines_; }
    [[nodiscard]] TraceContents contents(TraceReader::Keep keep = TraceReader::Keep::kSteps) const
    {
        std::istringstream file(text());
        TraceReader reader("hold.trace", keep);
        auto const taken = reader.read(file);
        EXPECT_TRUE(taken) << taken.error().reason;
        return *reader.finish();
    }

private:
    int number_ = 0;
    std::string time_ = "00.000";
    std::string lines_;
};

inline std::string requestText(std::string_view method, std::string_view call, std::string_view destination = "")
{
    std::string text =
        "<Method>" + std::string(method) + "</Method><Line>4711</Line><CallID>" + std::string(call) + "</CallID>";
    return destination.empty() ? text : text + "<Destination>" + std::string(destination) + "</Destination>";
}

// A call to 100, held and ended.
inline TraceText held()
{
    TraceText trace;
    trace.request(requestText("OutgoingCallMakeRequest", "3", "100"));  // 1
    trace.platform(1, "CSfi::CallMake",
                   R"("call":{"line":1,"appearance":0,"call":3},"destination":"100","dssDirectCall":true)");  // 2
    trace.sip(2, "sent", "INVITE", "", "d1", "sendrecv");                                                     // 3
    trace.answer(1);                                                                                          // 4
    trace.at("00.001").sip(3, "received", "INVITE", "100 Trying");                                            // 5
    trace.sip(3, "received", "INVITE", "200 OK", "d1", "sendrecv").sip(6, "sent", "ACK");                     // 6, 7
    trace.engine(6, 3, "", "connected");                                                                      // 8
    trace.event(6, 8, "<Method>CallHeldEvent</Method>unreadable");                                            // 9
    trace.at("01.201").request(requestText("HoldCall", "3"));                                                 // 10
    trace.platform(10, "CSfi::CallFeature",
                   R"("call":{"line":1,"appearance":0,"call":3},"feature":-1,"destination":"","mode":1)");  // 11
    trace.sip(11, "sent", "INVITE", "", "d1", "sendonly");                                                  // 12
    trace.answer(10);                                                                                       // 13
    trace.sip(12, "received", "INVITE", "200 OK", "d1", "recvonly").sip(14, "sent", "ACK");                 // 14, 15
    trace.engine(14, 3, "connected", "held").lamp(14, 3, "Hold", "flashing", "green");                      // 16, 17
    trace.event(14, 9, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>3</CallID>");            // 18
    trace.at("02.500").sip(0, "received", "BYE").sip(19, "sent", "BYE", "200 OK");                          // 19, 20
    trace.engine(19, 3, "held", "idle");                                                                    // 21
    return trace;
}

}  // namespace telephone::test
