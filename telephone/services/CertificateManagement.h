// The authorities that the telephone trusts, as files in a folder of the configuration. Registered with the framework
// as "CertificateMgmtSvcIfc"; the composition root owns it. Any thread may ask.
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
    void init(Context& context) override;
    void shutdown() override;

    // HOST.pem of the folder for that host's address, else authorities.pem; empty when there is neither.
    std::string trustedAuthoritiesFor(std::string const& address) override;

private:
    CertificateConfiguration const configuration_;
};

}  // namespace telephone
