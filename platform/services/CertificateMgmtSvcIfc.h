// The telephone's certificates. Registered with the framework as "CertificateMgmtSvcIfc"; the service only hands it to
// the team features.
#pragma once

#include <string>

class CertificateMgmtSvcIfc
{
public:
    // A file with the certificates of authorities to trust for an address; empty when there is none.
    virtual std::string trustedAuthoritiesFor(std::string const& address) = 0;

protected:
    ~CertificateMgmtSvcIfc() = default;
};
