/// @file
/// Readers of the SIP configuration. The telephone defines them.
///
/// Thread: any, also with a lock held; each reader gives the value in force at that moment. A reader of a text
/// overwrites its argument and leaves it empty when nothing is set.
#pragma once

#include <string>

/// The kind of call server.
enum sfiServerType : int
{
    sfiServerGeneric = 0,             ///< any registrar and proxy
    sfiServerWithPickup = 1,          ///< directed pickup is a dialog operation, not a number to call
    sfiServerWithNoReplyDelay = 2,    ///< the delay of forwarding on no reply may be set on the phone
    sfiServerBridgedAppearances = 7,  ///< appearances of a bridged line are reserved before use
};

/// Whether the call server holds forwarding and do-not-disturb.
/// @return true when it does: its settings are then filtered out of management data.
bool sfiGetServerBasedFeaturesEnabled();
/// The kind of call server.
/// @return An sfiServerType; other values are treated as sfiServerGeneric.
int sfiGetServerType();
/// Whether a forwarding rule that is switched off loses its destination.
/// @return Not 0 when it does.
int sfiGetCFPrivacyMode();
/// Reads the number of group pickup at the call server. Not empty: `getDevices` names it as "<groupPickup:...>".
void sfiGetCPUAddr(std::string& address);
/// Reads the identifier of the telephone's own line: the primary line, else the first.
void sfiGetCurrentPhoneNumber(std::string& number);
/// Reads the number of directed pickup, to which the number of the ringing telephone is appended. Empty: directed
/// pickup by number fails.
void sfiGetDirectedPickupUri(std::string& uri);
/// Reads the number or address of the mailbox.
void sfiGetVoiceMailDialURI(std::string& uri);
/// Reads the line identifier of a registration. `registration` counts the lines that register, from 0; empty when there
/// are not so many.
void sfiGetRegistrationId(unsigned char registration, std::string& id);
/// Whether the telephone forwards calls itself. The service asks before it reads a rule and ignores the answer.
/// @return true when it does.
bool sfiBuiltInForwardingEnabled();

/// @name Whether a forwarding rule is on
/// @{

/// Whether the rule is on: the sfiForwardingType of the reader's name, where Ext stands for External and Int for
/// Internal.
/// @return 1 when it is on, else 0. A removal of forwarding switches off what reads as exactly 1.
int sfiGetForwardUnconditionalEnable();
int sfiGetForwardUnconditionalExtEnable();
int sfiGetForwardUnconditionalIntEnable();
int sfiGetForwardBusyEnable();
int sfiGetForwardBusyExtEnable();
int sfiGetForwardBusyIntEnable();
int sfiGetForwardNoReplyEnable();
int sfiGetForwardNoReplyExtEnable();
int sfiGetForwardNoReplyIntEnable();
/// @}

/// @name The destination of a forwarding rule
/// @{

/// Reads the destination of the rule of the reader's name: a number or an address, also while the rule is off.
void sfiGetForwardUnconditionalUri(std::string& uri);
void sfiGetForwardUnconditionalExtUri(std::string& uri);
void sfiGetForwardUnconditionalIntUri(std::string& uri);
void sfiGetForwardBusyUri(std::string& uri);
void sfiGetForwardBusyExtUri(std::string& uri);
void sfiGetForwardBusyIntUri(std::string& uri);
void sfiGetForwardNoReplyUri(std::string& uri);
void sfiGetForwardNoReplyExtUri(std::string& uri);
void sfiGetForwardNoReplyIntUri(std::string& uri);
/// @}

/// The delay of forwarding on no reply.
/// @return In rings, 0 to 99.
int sfiGetForwardNoReplyTime();
