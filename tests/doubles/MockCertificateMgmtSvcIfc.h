#pragma once

#include <type_traits>

#include <gmock/gmock.h>

#include "platform/services/CertificateMgmtSvcIfc.h"

class MockCertificateMgmtSvcIfc : public CertificateMgmtSvcIfc
{
public:
    virtual ~MockCertificateMgmtSvcIfc() = default;

    MOCK_METHOD(std::string, trustedAuthoritiesFor, (std::string const& address), (override));
};
static_assert(!std::is_abstract_v<MockCertificateMgmtSvcIfc>);
