#include "telephone/Telephone.h"

#include "CommunicationsServiceIfc.h"
#include "telephone/TelephoneParts.h"
#include "telephone/framework/Log.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr auto kRegistrationTime = 5000ms;

}  // namespace

struct Telephone::Parts : TelephoneParts
{
    using TelephoneParts::TelephoneParts;
};

Telephone::Telephone(Configuration configuration, std::string const& library)
    : parts_(std::make_unique<Parts>(std::move(configuration), library))
{
    parts_->begin();
}

Telephone::~Telephone()
{
    stop();
}

void Telephone::activate()
{
    std::set<int> registering;
    for (LineAccount const& each : parts_->lineTable.accounts()) {
        if (each.registers) {
            registering.insert(each.lineNumber);
        }
    }
    parts_->registrations.expect(registering);
    if (parts_->calls().activate() != sfiSuccess) {
        throw std::runtime_error("the service cannot be activated; the log says why");
    }
    if (registering.empty()) {
        parts_->parties.start();  // else once its line is registered
    }
    if (!parts_->registrations.wait(kRegistrationTime)) {
        log(kLogWarning, "telephone", "the registrar does not answer; the lines go on trying");
    }
}

void Telephone::stop()
{
    parts_->end();
}

TelephoneContext& Telephone::context()
{
    return parts_->context;
}

RequestRunner& Telephone::requests()
{
    return parts_->requests;
}

TelephoneControls& Telephone::controls()
{
    return parts_->controls;
}

}  // namespace telephone
