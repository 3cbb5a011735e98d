// Readers of the SIP configuration. The telephone defines them; they may be called from any thread, and always give the
// values in force.
#pragma once

#include <string>

// The kind of call server.
enum sfiServerType : int
{
    sfiServerGeneric = 0,
    sfiServerWithPickup = 1,          // directed pickup is a dialog operation, not a number to call
    sfiServerWithNoReplyDelay = 2,    // the delay of forwarding on no reply may be set on the phone
    sfiServerBridgedAppearances = 7,  // appearances of a bridged line are reserved before use
};

bool sfiGetServerBasedFeaturesEnabled();
int sfiGetServerType();
// Not 0: a forwarding rule that is switched off does not keep its destination.
int sfiGetCFPrivacyMode();
void sfiGetCPUAddr(std::string& address);
void sfiGetCurrentPhoneNumber(std::string& number);
void sfiGetDirectedPickupUri(std::string& uri);
void sfiGetVoiceMailDialURI(std::string& uri);
void sfiGetRegistrationId(unsigned char registration, std::string& id);
bool sfiBuiltInForwardingEnabled();

// Forwarding rules. An enable reader answers not 0 when the rule is on.
int sfiGetForwardUnconditionalEnable();
int sfiGetForwardUnconditionalExtEnable();
int sfiGetForwardUnconditionalIntEnable();
int sfiGetForwardBusyEnable();
int sfiGetForwardBusyExtEnable();
int sfiGetForwardBusyIntEnable();
int sfiGetForwardNoReplyEnable();
int sfiGetForwardNoReplyExtEnable();
int sfiGetForwardNoReplyIntEnable();
void sfiGetForwardUnconditionalUri(std::string& uri);
void sfiGetForwardUnconditionalExtUri(std::string& uri);
void sfiGetForwardUnconditionalIntUri(std::string& uri);
void sfiGetForwardBusyUri(std::string& uri);
void sfiGetForwardBusyExtUri(std::string& uri);
void sfiGetForwardBusyIntUri(std::string& uri);
void sfiGetForwardNoReplyUri(std::string& uri);
void sfiGetForwardNoReplyExtUri(std::string& uri);
void sfiGetForwardNoReplyIntUri(std::string& uri);
// Delay of forwarding on no reply, in rings.
int sfiGetForwardNoReplyTime();
