// The SIP configuration of a telephone that has none: a generic server, no numbers, every rule off.
#include "platform/sfi/SfiConfiguration.h"

#include "platform/kit/Missing.h"
#include "platform/kit/Weak.h"

namespace {

constexpr kit::Missing kMissing{nullptr, "platform/sfi/SfiConfiguration.h"};

void reportRule(char const* reader)
{
    kMissing.report(reader, "return 1 while the forwarding rule is on");
}

void leaveEmpty(char const* reader, std::string& text, char const* task)
{
    text.clear();
    kMissing.report(reader, task);
}

void leaveDestinationEmpty(char const* reader, std::string& uri)
{
    leaveEmpty(reader, uri, "tell the destination of the forwarding rule");
}

}  // namespace

KIT_WEAK bool sfiGetServerBasedFeaturesEnabled()
{
    kMissing.report("sfiGetServerBasedFeaturesEnabled",
                    "tell whether the call server holds forwarding and do-not-disturb");
    return false;
}

KIT_WEAK int sfiGetServerType()
{
    kMissing.report("sfiGetServerType", "tell the kind of call server");
    return sfiServerGeneric;
}

KIT_WEAK int sfiGetCFPrivacyMode()
{
    kMissing.report("sfiGetCFPrivacyMode", "tell whether a rule that is switched off loses its destination");
    return 0;
}

KIT_WEAK void sfiGetCPUAddr(std::string& address)
{
    leaveEmpty("sfiGetCPUAddr", address, "tell the number of group pickup");
}

KIT_WEAK void sfiGetCurrentPhoneNumber(std::string& number)
{
    leaveEmpty("sfiGetCurrentPhoneNumber", number, "tell the identifier of the telephone's own line");
}

KIT_WEAK void sfiGetDirectedPickupUri(std::string& uri)
{
    leaveEmpty("sfiGetDirectedPickupUri", uri, "tell the number of directed pickup");
}

KIT_WEAK void sfiGetVoiceMailDialURI(std::string& uri)
{
    leaveEmpty("sfiGetVoiceMailDialURI", uri, "tell the number of the mailbox");
}

KIT_WEAK void sfiGetRegistrationId(unsigned char /*registration*/, std::string& id)
{
    leaveEmpty("sfiGetRegistrationId", id, "tell the identifier of the registering line of that index");
}

KIT_WEAK bool sfiBuiltInForwardingEnabled()
{
    kMissing.report("sfiBuiltInForwardingEnabled", "tell whether the telephone forwards calls itself");
    return false;
}

KIT_WEAK int sfiGetForwardUnconditionalEnable()
{
    reportRule("sfiGetForwardUnconditionalEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardUnconditionalExtEnable()
{
    reportRule("sfiGetForwardUnconditionalExtEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardUnconditionalIntEnable()
{
    reportRule("sfiGetForwardUnconditionalIntEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardBusyEnable()
{
    reportRule("sfiGetForwardBusyEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardBusyExtEnable()
{
    reportRule("sfiGetForwardBusyExtEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardBusyIntEnable()
{
    reportRule("sfiGetForwardBusyIntEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardNoReplyEnable()
{
    reportRule("sfiGetForwardNoReplyEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardNoReplyExtEnable()
{
    reportRule("sfiGetForwardNoReplyExtEnable");
    return 0;
}

KIT_WEAK int sfiGetForwardNoReplyIntEnable()
{
    reportRule("sfiGetForwardNoReplyIntEnable");
    return 0;
}

KIT_WEAK void sfiGetForwardUnconditionalUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardUnconditionalUri", uri);
}

KIT_WEAK void sfiGetForwardUnconditionalExtUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardUnconditionalExtUri", uri);
}

KIT_WEAK void sfiGetForwardUnconditionalIntUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardUnconditionalIntUri", uri);
}

KIT_WEAK void sfiGetForwardBusyUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardBusyUri", uri);
}

KIT_WEAK void sfiGetForwardBusyExtUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardBusyExtUri", uri);
}

KIT_WEAK void sfiGetForwardBusyIntUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardBusyIntUri", uri);
}

KIT_WEAK void sfiGetForwardNoReplyUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardNoReplyUri", uri);
}

KIT_WEAK void sfiGetForwardNoReplyExtUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardNoReplyExtUri", uri);
}

KIT_WEAK void sfiGetForwardNoReplyIntUri(std::string& uri)
{
    leaveDestinationEmpty("sfiGetForwardNoReplyIntUri", uri);
}

KIT_WEAK int sfiGetForwardNoReplyTime()
{
    kMissing.report("sfiGetForwardNoReplyTime", "tell the delay of forwarding on no reply, in rings");
    return 0;
}
