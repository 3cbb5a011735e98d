#include "telephone/console/ScriptReport.h"

#include <pugixml.hpp>
#include <spdlog/fmt/fmt.h>

namespace telephone {

Outcome<> writeJUnit(ScriptResult const& result, std::string const& script, std::string const& file)
{
    std::string const time = fmt::format("{:.3f}", result.seconds);
    pugi::xml_document document;
    pugi::xml_node suite = document.append_child("testsuite");
    suite.append_attribute("name") = "telephone";
    suite.append_attribute("tests") = 1;
    suite.append_attribute("failures") = result.passed() ? 0 : 1;
    suite.append_attribute("time") = time.c_str();
    pugi::xml_node test = suite.append_child("testcase");
    test.append_attribute("name") = script.c_str();
    test.append_attribute("time") = time.c_str();
    if (!result.passed()) {
        pugi::xml_node failure = test.append_child("failure");
        failure.append_attribute("message") = result.failures.front().c_str();
        failure.text() = fmt::format("{}", fmt::join(result.failures, "\n")).c_str();
    }
    if (!document.save_file(file.c_str())) {
        return refuse(RefusalKind::kUnavailable, file + ": cannot be written");
    }
    return {};
}

}  // namespace telephone
