#include "telephone/sfi/SfiReaders.h"

#include <atomic>
#include <utility>

#include "platform/sfi/SfiConfiguration.h"
#include "telephone/management/ForwardingKeys.h"

namespace telephone {

namespace {

std::atomic<SfiReaders const*> current{nullptr};

int enabled(std::string_view key)
{
    auto const* readers = current.load();
    return readers != nullptr && readers->settings().flag(key) ? 1 : 0;
}

int number(std::string_view key)
{
    auto const* readers = current.load();
    return readers == nullptr ? 0 : readers->settings().number(key);
}

int forwardingOn(sfiForwardingType type)
{
    return enabled(findForwardingKeys(type)->activated);
}

void forwardingAddress(sfiForwardingType type, std::string& address)
{
    auto const* readers = current.load();
    address = readers == nullptr ? std::string() : readers->settings().text(findForwardingKeys(type)->address);
}

void serverAddress(std::string ServerConfiguration::*member, std::string& value)
{
    auto const* readers = current.load();
    value = readers == nullptr ? std::string() : readers->configuration().server.*member;
}

}  // namespace

SfiReaders::SfiReaders(Settings const& settings, Configuration const& configuration, LineTable const& lines)
    : settings_(settings)
    , configuration_(configuration)
    , lines_(lines)
{
    current.store(this);
}

SfiReaders::~SfiReaders()
{
    auto const* self = this;
    current.compare_exchange_strong(self, nullptr);
}

}  // namespace telephone

using telephone::SettingNames;

bool sfiGetServerBasedFeaturesEnabled()
{
    return telephone::enabled(SettingNames::kServerBasedFeatures) != 0;
}

int sfiGetServerType()
{
    return telephone::number(SettingNames::kServerType);
}

int sfiGetCFPrivacyMode()
{
    return telephone::enabled(SettingNames::kForwardingPrivacy);
}

void sfiGetCPUAddr(std::string& address)
{
    telephone::serverAddress(&telephone::ServerConfiguration::groupPickup, address);
}

void sfiGetCurrentPhoneNumber(std::string& number)
{
    auto const* readers = telephone::current.load();
    auto const* line = readers == nullptr ? nullptr : readers->lines().primary();
    number = line == nullptr ? std::string() : line->address.lineURI;
}

void sfiGetDirectedPickupUri(std::string& uri)
{
    telephone::serverAddress(&telephone::ServerConfiguration::directedPickup, uri);
}

void sfiGetVoiceMailDialURI(std::string& uri)
{
    telephone::serverAddress(&telephone::ServerConfiguration::voiceMail, uri);
}

// Registrations count from 0 in the order of the lines, without those that do not register.
void sfiGetRegistrationId(unsigned char registration, std::string& id)
{
    id.clear();
    auto const* readers = telephone::current.load();
    if (readers == nullptr) {
        return;
    }
    int place = 0;
    for (auto const& line : readers->configuration().lines) {
        if (line.registers && place++ == registration) {
            id = line.id;
        }
    }
}

bool sfiBuiltInForwardingEnabled()
{
    return telephone::enabled(SettingNames::kBuiltInForwarding) != 0;
}

int sfiGetForwardUnconditionalEnable()
{
    return telephone::forwardingOn(sfiForwardUnconditional);
}

int sfiGetForwardUnconditionalExtEnable()
{
    return telephone::forwardingOn(sfiForwardUnconditionalExternal);
}

int sfiGetForwardUnconditionalIntEnable()
{
    return telephone::forwardingOn(sfiForwardUnconditionalInternal);
}

int sfiGetForwardBusyEnable()
{
    return telephone::forwardingOn(sfiForwardBusy);
}

int sfiGetForwardBusyExtEnable()
{
    return telephone::forwardingOn(sfiForwardBusyExternal);
}

int sfiGetForwardBusyIntEnable()
{
    return telephone::forwardingOn(sfiForwardBusyInternal);
}

int sfiGetForwardNoReplyEnable()
{
    return telephone::forwardingOn(sfiForwardNoReply);
}

int sfiGetForwardNoReplyExtEnable()
{
    return telephone::forwardingOn(sfiForwardNoReplyExternal);
}

int sfiGetForwardNoReplyIntEnable()
{
    return telephone::forwardingOn(sfiForwardNoReplyInternal);
}

void sfiGetForwardUnconditionalUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardUnconditional, uri);
}

void sfiGetForwardUnconditionalExtUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardUnconditionalExternal, uri);
}

void sfiGetForwardUnconditionalIntUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardUnconditionalInternal, uri);
}

void sfiGetForwardBusyUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardBusy, uri);
}

void sfiGetForwardBusyExtUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardBusyExternal, uri);
}

void sfiGetForwardBusyIntUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardBusyInternal, uri);
}

void sfiGetForwardNoReplyUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardNoReply, uri);
}

void sfiGetForwardNoReplyExtUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardNoReplyExternal, uri);
}

void sfiGetForwardNoReplyIntUri(std::string& uri)
{
    telephone::forwardingAddress(sfiForwardNoReplyInternal, uri);
}

int sfiGetForwardNoReplyTime()
{
    return telephone::number(SettingNames::kNoReplyDelay);
}
