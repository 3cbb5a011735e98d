#include "telephone/console/ScriptReport.h"

#include <array>
#include <cstddef>

#include <pugixml.hpp>
#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

namespace telephone {

namespace {

// Indexed by the verdict: the element in a case, and the attribute of the suite that counts it.
struct VerdictNames
{
    char const* element;
    char const* count;
};
constexpr std::array<VerdictNames, 4> kVerdicts{{
    {nullptr, nullptr},
    {"failure", "failures"},
    {"error", "errors"},
    {"skipped", "skipped"},
}};

void add(pugi::xml_node parent, char const* attribute, double more, char const* form)
{
    pugi::xml_attribute const there = parent.attribute(attribute);
    pugi::xml_attribute sum = there ? there : parent.append_attribute(attribute);
    sum = fmt::format(fmt::runtime(form), sum.as_double() + more).c_str();
}

pugi::xml_node suiteOf(pugi::xml_node root, std::string const& name)
{
    pugi::xml_node const last = root.last_child();
    if (last && name == last.attribute("name").value()) {
        return last;
    }
    pugi::xml_node suite = root.append_child("testsuite");
    suite.append_attribute("name") = name.c_str();
    for (char const* const each : {"tests", "failures", "errors", "skipped"}) {
        suite.append_attribute(each) = 0;
    }
    return suite;
}

void addCase(pugi::xml_node suite, ScriptCase const& played)
{
    pugi::xml_node test = suite.append_child("testcase");
    test.append_attribute("name") = played.name.c_str();
    test.append_attribute("classname") = played.suite.c_str();
    test.append_attribute("time") = fmt::format("{:.3f}", played.seconds).c_str();
    add(suite, "tests", 1, "{:.0f}");
    add(suite, "time", played.seconds, "{:.3f}");
    VerdictNames const& verdict = kVerdicts[static_cast<std::size_t>(played.verdict)];
    if (verdict.element != nullptr) {
        add(suite, verdict.count, 1, "{:.0f}");
        pugi::xml_node why = test.append_child(verdict.element);
        why.append_attribute("message") = played.reasons.empty() ? "" : played.reasons.front().c_str();
        why.text() = fmt::format("{}", fmt::join(played.reasons, "\n")).c_str();
    }
}

}  // namespace

Outcome<> writeJUnit(std::vector<ScriptCase> const& cases, std::string const& file)
{
    pugi::xml_document document;
    pugi::xml_node const root = document.append_child("testsuites");
    for (ScriptCase const& each : cases) {
        addCase(suiteOf(root, each.suite), each);
    }
    if (!document.save_file(file.c_str())) {
        return refuse(RefusalKind::kUnavailable, file + ": cannot be written");
    }
    return {};
}

}  // namespace telephone
