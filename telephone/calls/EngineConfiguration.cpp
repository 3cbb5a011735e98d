#include "telephone/calls/EngineConfiguration.h"

#include "telephone/configuration/Configuration.h"

namespace telephone {

namespace {

sip::Permissions permissionsOf(PermissionsConfiguration const& configured)
{
    sip::Permissions permissions;
    auto const set = [&permissions](sip::RequestKind kind, int choice) {
        // 0 is the default.
        permissions.set(kind, choice == 0 ? std::nullopt : std::optional(static_cast<sip::Sender>(choice - 1)));
    };
    set(sip::RequestKind::kCall, configured.calls);
    set(sip::RequestKind::kTakeOver, configured.takeOvers);
    set(sip::RequestKind::kSubscription, configured.subscriptions);
    set(sip::RequestKind::kNotification, configured.notifications);
    set(sip::RequestKind::kControl, configured.control);
    set(sip::RequestKind::kTransfer, configured.transfers);
    return permissions;
}

}  // namespace

EngineConfiguration EngineConfiguration::from(Configuration const& configuration)
{
    EngineConfiguration engine;
    engine.agent.address = configuration.sip.address;
    engine.agent.udpPort = static_cast<std::uint16_t>(configuration.sip.port);
    engine.agent.tcpPort = static_cast<std::uint16_t>(configuration.sip.port);
    engine.agent.tlsPort = static_cast<std::uint16_t>(configuration.sip.port == 0 ? 0 : configuration.sip.port + 1);
    engine.agent.tls = sip::TlsConfig{configuration.sip.certificate, configuration.sip.key, {}};
    engine.agent.tlsFromTheStart =
        configuration.sip.transport == Transport::kTls || !configuration.sip.certificate.empty();
    engine.agent.name = configuration.sip.userAgent;
    auto const& limits = configuration.limits;
    engine.agent.limits = {limits.requests, limits.transactions, limits.subscriptions, limits.connections,
                           limits.sourceConnections};
    engine.permissions = permissionsOf(configuration.permissions);
    engine.agent.sessionExpires = std::chrono::seconds(configuration.calls.sessionExpires);
    engine.agent.reliableResponses = static_cast<sip::ReliableUse>(configuration.calls.reliableResponses);
    engine.agent.audioTimeout = std::chrono::seconds(configuration.calls.audioTimeout);
    engine.agent.dnsServers = configuration.dns.servers;
    auto const& media = configuration.media;
    engine.agent.encryption = static_cast<sip::Encryption>(media.encryption);
    engine.agent.keysWithoutTls = media.keysWithoutTls;
    engine.audio = {media.source, media.microphone, media.loudspeaker};
    engine.heardFile = media.heard;
    engine.maximumCalls = configuration.calls.maximum;
    engine.automaticRinging = configuration.calls.automaticRinging;
    engine.doNotDisturbStatus = configuration.calls.doNotDisturbStatus;
    engine.reinviteTimeout = std::chrono::seconds(configuration.calls.reinviteTimeout);
    engine.callBacks = configuration.calls.callBacks;
    engine.groupPickup = configuration.server.groupPickup;
    engine.directedPickup = configuration.server.directedPickup;
    engine.voiceMail = configuration.server.voiceMail;
    engine.messageWaiting = configuration.server.messageWaiting;
    return engine;
}

}  // namespace telephone
