#include "telephone/traced/TracedPlatform.h"

#include <atomic>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/lines/ELineState.h"
#include "platform/lines/LineManager.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

// The object to which the calls go. It may change while the library holds the one that passes them on.
template <typename Interface>
class TracedInterface
{
public:
    void setActual(Interface* actual) { actual_ = actual; }

protected:
    [[nodiscard]] Interface& actual() const { return *actual_; }

private:
    std::atomic<Interface*> actual_{nullptr};
};

#include "Enumerators.inc"

// --- values as JSON; of an object only whether there is one

std::string jsonOf(std::string const& value)
{
    return jsonText(value);
}

std::string jsonOf(char const* value)
{
    return value == nullptr ? "null" : jsonText(value);
}

std::string jsonOf(bool value)
{
    return value ? "true" : "false";
}

std::string jsonOf(sfiCallInfo const* value)
{
    if (value == nullptr) {
        return "null";
    }
    return "{\"line\":" + std::to_string(value->lineID) + ",\"appearance\":" + std::to_string(value->appearanceIndex) +
           ",\"call\":" + std::to_string(value->callID) + "}";
}

std::string jsonOf(std::vector<std::string> const& values)
{
    std::string list;
    for (std::string const& each : values) {
        list += (list.empty() ? "" : ",") + jsonText(each);
    }
    return "[" + list + "]";
}

template <typename Value>
concept Named = requires(Value value) { enumeratorOf(value); };

template <typename Value>
    requires std::is_enum_v<Value> || std::is_integral_v<Value>
std::string jsonOf(Value value)
{
    if constexpr (Named<Value>) {
        if (char const* const name = enumeratorOf(value)) {
            return jsonText(name);
        }
    }
    return std::to_string(static_cast<long long>(value));
}

template <typename Object>
    requires std::is_class_v<Object>
std::string jsonOf(Object const& /*object*/)
{
    return jsonText("object");
}

template <typename Object>
    requires std::is_class_v<Object>
std::string jsonOf(Object const* object)
{
    return object == nullptr ? "null" : jsonText("object");
}

// --- calls

template <typename Value>
struct Argument
{
    char const* name;
    Value& value;
};
template <typename Value>
Argument(char const*, Value&) -> Argument<Value>;

// What the platform has written to its arguments is in the trace, too: they are read after the call. result: JSON;
// empty: none.
template <typename... Arguments>
void endStep(TraceStep& step, char const* name, std::string const& result, Arguments const&... arguments)
{
    std::string list;
    ((list += (list.empty() ? "\"" : ",\"") + std::string(arguments.name) + "\":" + jsonOf(arguments.value)), ...);
    step.add("name", name).addJson("arguments", "{" + list + "}");
    if (!result.empty()) {
        step.addJson("result", result);
    }
    step.addMicroseconds().write();
}

template <typename Work, typename... Arguments>
auto tracedCall(char const* name, Work const& work, Arguments const&... arguments)
{
    if (!isTracing()) {
        return work();
    }
    TraceStep step("platform");
    TraceScope const scope(step.cause());
    if constexpr (std::is_void_v<decltype(work())>) {
        work();
        endStep(step, name, {}, arguments...);
    } else {
        auto result = work();
        endStep(step, name, jsonOf(result), arguments...);
        return result;
    }
}

// The generated class of an interface.
template <typename Interface>
class Traced;

#include "TracedClasses.inc"

}  // namespace

template <typename Interface>
Interface* traced(Interface* actual)
{
    if (actual == nullptr || !isTracing()) {
        return actual;
    }
    static Traced<Interface> object;
    object.setActual(actual);
    return &object;
}

template CSfi* traced(CSfi* actual);
template DirectedPickupHandler* traced(DirectedPickupHandler* actual);
template FeatureToggle* traced(FeatureToggle* actual);
template LineManager* traced(LineManager* actual);
template TeamServiceFeatures* traced(TeamServiceFeatures* actual);
template TeamServiceKeyset* traced(TeamServiceKeyset* actual);

}  // namespace telephone
