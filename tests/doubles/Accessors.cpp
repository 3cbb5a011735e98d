// The platform's static and free functions: each leads to the installed double.
#include "CurrentDouble.h"
#include "MockClientUtils.h"
#include "MockSerializer.h"
#include "MockSfiConfiguration.h"
#include "MockUtility.h"
#include "platform/lines/LineManager.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

CSfi* CSfi::GetInstance()
{
    return CurrentDouble<CSfi>::get();
}

LineManager* LineManager::Instance()
{
    return CurrentDouble<LineManager>::get();
}

TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    return CurrentDouble<TeamServiceKeyset>::get();
}

TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return CurrentDouble<TeamServiceFeatures>::get();
}

DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    return CurrentDouble<DirectedPickupHandler>::get();
}

FeatureToggle* FeatureToggle::Instance()
{
    return CurrentDouble<FeatureToggle>::get();
}

MediaRecordingService* MediaRecordingService::GetInstance()
{
    return CurrentDouble<MediaRecordingService>::get();
}

bool Utility::isLineStateBusy(ELineState state)
{
    auto* const utility = CurrentDouble<MockUtility>::get();
    return utility != nullptr && utility->isLineStateBusy(state);
}

bool Utility::bridgeCall(Line* line)
{
    auto* const utility = CurrentDouble<MockUtility>::get();
    return utility != nullptr && utility->bridgeCall(line);
}

void ClientUtils::splitMCADeviceIndex(std::string const& lineURI, std::string& baseURI, int& index)
{
    if (auto* const utils = CurrentDouble<MockClientUtils>::get()) {
        utils->splitMCADeviceIndex(lineURI, baseURI, index);
    } else {
        baseURI = lineURI;
    }
}

std::string Serializer::serialize(std::vector<int> const& values)
{
    if (auto* const serializer = CurrentDouble<MockSerializer>::get()) {
        return serializer->numbers(values);
    }
    std::vector<std::string> texts;
    for (int const value : values) {
        texts.push_back(std::to_string(value));
    }
    return serialize(texts);
}

std::string Serializer::serialize(std::vector<std::string> const& values)
{
    if (auto* const serializer = CurrentDouble<MockSerializer>::get()) {
        return serializer->texts(values);
    }
    std::string text = "[";
    for (auto const& value : values) {
        text += (text.size() > 1 ? "," : "") + value;
    }
    return text + "]";
}

namespace {

template <class Answer>
Answer ask(Answer (MockSfiConfiguration::*reader)())
{
    auto* const configuration = CurrentDouble<MockSfiConfiguration>::get();
    return configuration == nullptr ? Answer{} : (configuration->*reader)();
}

}  // namespace

using Configuration = MockSfiConfiguration;

bool sfiGetServerBasedFeaturesEnabled()
{
    return ask(&Configuration::serverBasedFeaturesEnabled);
}

int sfiGetServerType()
{
    return ask(&Configuration::serverType);
}

int sfiGetCFPrivacyMode()
{
    return ask(&Configuration::cfPrivacyMode);
}

void sfiGetCPUAddr(std::string& address)
{
    address = ask(&Configuration::cpuAddr);
}

void sfiGetCurrentPhoneNumber(std::string& number)
{
    number = ask(&Configuration::currentPhoneNumber);
}

void sfiGetDirectedPickupUri(std::string& uri)
{
    uri = ask(&Configuration::directedPickupUri);
}

void sfiGetVoiceMailDialURI(std::string& uri)
{
    uri = ask(&Configuration::voiceMailDialUri);
}

void sfiGetRegistrationId(unsigned char registration, std::string& id)
{
    auto* const configuration = CurrentDouble<Configuration>::get();
    id = configuration == nullptr ? std::string() : configuration->registrationId(registration);
}

bool sfiBuiltInForwardingEnabled()
{
    return ask(&Configuration::builtInForwardingEnabled);
}

int sfiGetForwardUnconditionalEnable()
{
    return ask(&Configuration::unconditionalEnable);
}

int sfiGetForwardUnconditionalExtEnable()
{
    return ask(&Configuration::unconditionalExtEnable);
}

int sfiGetForwardUnconditionalIntEnable()
{
    return ask(&Configuration::unconditionalIntEnable);
}

int sfiGetForwardBusyEnable()
{
    return ask(&Configuration::busyEnable);
}

int sfiGetForwardBusyExtEnable()
{
    return ask(&Configuration::busyExtEnable);
}

int sfiGetForwardBusyIntEnable()
{
    return ask(&Configuration::busyIntEnable);
}

int sfiGetForwardNoReplyEnable()
{
    return ask(&Configuration::noReplyEnable);
}

int sfiGetForwardNoReplyExtEnable()
{
    return ask(&Configuration::noReplyExtEnable);
}

int sfiGetForwardNoReplyIntEnable()
{
    return ask(&Configuration::noReplyIntEnable);
}

void sfiGetForwardUnconditionalUri(std::string& uri)
{
    uri = ask(&Configuration::unconditionalUri);
}

void sfiGetForwardUnconditionalExtUri(std::string& uri)
{
    uri = ask(&Configuration::unconditionalExtUri);
}

void sfiGetForwardUnconditionalIntUri(std::string& uri)
{
    uri = ask(&Configuration::unconditionalIntUri);
}

void sfiGetForwardBusyUri(std::string& uri)
{
    uri = ask(&Configuration::busyUri);
}

void sfiGetForwardBusyExtUri(std::string& uri)
{
    uri = ask(&Configuration::busyExtUri);
}

void sfiGetForwardBusyIntUri(std::string& uri)
{
    uri = ask(&Configuration::busyIntUri);
}

void sfiGetForwardNoReplyUri(std::string& uri)
{
    uri = ask(&Configuration::noReplyUri);
}

void sfiGetForwardNoReplyExtUri(std::string& uri)
{
    uri = ask(&Configuration::noReplyExtUri);
}

void sfiGetForwardNoReplyIntUri(std::string& uri)
{
    uri = ask(&Configuration::noReplyIntUri);
}

int sfiGetForwardNoReplyTime()
{
    return ask(&Configuration::noReplyTime);
}
