#include "telephone/management/SfiReaders.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/sfi/SfiConfiguration.h"

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

void text(std::string_view key, std::string& value)
{
    auto const* readers = current.load();
    value = readers == nullptr ? std::string() : readers->settings().text(key);
}

void serverAddress(std::string ServerConfiguration::*member, std::string& value)
{
    auto const* readers = current.load();
    value = readers == nullptr ? std::string() : readers->configuration().server.*member;
}

}  // namespace

SfiReaders::SfiReaders(Settings const& settings, Configuration configuration)
    : settings_(settings)
    , configuration_(std::move(configuration))
{
    current.store(this);
}

SfiReaders::~SfiReaders()
{
    auto const* self = this;
    current.compare_exchange_strong(self, nullptr);
}

LineConfiguration const* SfiReaders::ownLine() const
{
    auto const& lines = configuration_.lines;
    auto const primary = std::find_if(lines.begin(), lines.end(), [](auto const& line) { return line.primary; });
    if (primary != lines.end()) {
        return &*primary;
    }
    return lines.empty() ? nullptr : &lines.front();
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
    auto const* line = readers == nullptr ? nullptr : readers->ownLine();
    number = line == nullptr ? std::string() : line->id;
}

void sfiGetDirectedPickupUri(std::string& uri)
{
    telephone::serverAddress(&telephone::ServerConfiguration::directedPickup, uri);
}

void sfiGetVoiceMailDialURI(std::string& uri)
{
    telephone::serverAddress(&telephone::ServerConfiguration::voiceMail, uri);
}

// Registrations count from 0, in the order of the lines; a line that does not register has none.
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
    return telephone::enabled("cfu-activated");
}

int sfiGetForwardUnconditionalExtEnable()
{
    return telephone::enabled("cfu-ext-activated");
}

int sfiGetForwardUnconditionalIntEnable()
{
    return telephone::enabled("cfu-int-activated");
}

int sfiGetForwardBusyEnable()
{
    return telephone::enabled("cfb-activated");
}

int sfiGetForwardBusyExtEnable()
{
    return telephone::enabled("cfb-ext-activated");
}

int sfiGetForwardBusyIntEnable()
{
    return telephone::enabled("cfb-int-activated");
}

int sfiGetForwardNoReplyEnable()
{
    return telephone::enabled("cfnr-activated");
}

int sfiGetForwardNoReplyExtEnable()
{
    return telephone::enabled("cfnr-ext-activated");
}

int sfiGetForwardNoReplyIntEnable()
{
    return telephone::enabled("cfnr-int-activated");
}

void sfiGetForwardUnconditionalUri(std::string& uri)
{
    telephone::text("cfu-address", uri);
}

void sfiGetForwardUnconditionalExtUri(std::string& uri)
{
    telephone::text("cfu-ext-address", uri);
}

void sfiGetForwardUnconditionalIntUri(std::string& uri)
{
    telephone::text("cfu-int-address", uri);
}

void sfiGetForwardBusyUri(std::string& uri)
{
    telephone::text("cfb-address", uri);
}

void sfiGetForwardBusyExtUri(std::string& uri)
{
    telephone::text("cfb-ext-address", uri);
}

void sfiGetForwardBusyIntUri(std::string& uri)
{
    telephone::text("cfb-int-address", uri);
}

void sfiGetForwardNoReplyUri(std::string& uri)
{
    telephone::text("cfnr-address", uri);
}

void sfiGetForwardNoReplyExtUri(std::string& uri)
{
    telephone::text("cfnr-ext-address", uri);
}

void sfiGetForwardNoReplyIntUri(std::string& uri)
{
    telephone::text("cfnr-int-address", uri);
}

int sfiGetForwardNoReplyTime()
{
    return telephone::number(SettingNames::kNoReplyDelay);
}
