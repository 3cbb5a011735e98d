/// @file
/// CertificateMgmtSvcIfc, answering "not there".
#pragma once

#include "platform/framework/Executable.h"
#include "platform/kit/Missing.h"
#include "platform/services/CertificateMgmtSvcIfc.h"

namespace kit {

/// Certificates of which none is trusted.
///
/// It is an executable, because the service finds it by the name "CertificateMgmtSvcIfc"; give it to
/// ServiceHost::provide.
class DefaultCertificateMgmtSvcIfc : public Executable, public CertificateMgmtSvcIfc
{
public:
    /// Deleted by whoever made it.
    ~DefaultCertificateMgmtSvcIfc() override = default;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    std::string trustedAuthoritiesFor(std::string const& /*address*/) override
    {
        kMissing.report("trustedAuthoritiesFor", "name the PEM file of the authorities for the address");
        return {};
    }

private:
    static constexpr Missing kMissing{"CertificateMgmtSvcIfc", "platform/services/CertificateMgmtSvcIfc.h"};
};

}  // namespace kit
