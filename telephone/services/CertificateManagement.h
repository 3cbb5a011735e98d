// The certificate authorities that the telephone trusts, as files in the configured folder. Registered with the
// framework as "CertificateMgmtSvcIfc"; the composition root owns it. Any thread.
#pragma once

#include <string>

#include "platform/framework/Executable.h"
#include "platform/services/CertificateMgmtSvcIfc.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

class CertificateManagement : public Executable, public CertificateMgmtSvcIfc
{
public:
    explicit CertificateManagement(CertificateConfiguration configuration);

    // Executable
    void init(Context& /*context*/) override {}
    void shutdown() override {}

    // The file HOST.pem for the host of the address, else authorities.pem; empty when neither exists.
    std::string trustedAuthoritiesFor(std::string const& address) override;

private:
    CertificateConfiguration const configuration_;
};

}  // namespace telephone
