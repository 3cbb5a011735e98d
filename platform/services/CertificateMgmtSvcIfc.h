/// @file
/// The telephone's certificates.
#pragma once

#include <string>

/// Finds certificates. The telephone owns it and registers it with the framework as "CertificateMgmtSvcIfc"; the
/// service only hands it to the team features. Thread: any.
class CertificateMgmtSvcIfc
{
public:
    /// Finds the authorities to trust for an address.
    /// @param address a URL, a SIP address, or a host with or without port
    /// @return Name of a PEM file of their certificates; empty when none is trusted, and a connection must then be
    ///     refused.
    virtual std::string trustedAuthoritiesFor(std::string const& address) = 0;

protected:
    /// Never deleted through this interface.
    ~CertificateMgmtSvcIfc() = default;
};
