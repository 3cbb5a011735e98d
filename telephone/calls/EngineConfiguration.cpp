#include "telephone/calls/EngineConfiguration.h"

#include "telephone/configuration/Configuration.h"

namespace telephone {

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
    engine.agent.sessionExpires = std::chrono::seconds(configuration.calls.sessionExpires);
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
