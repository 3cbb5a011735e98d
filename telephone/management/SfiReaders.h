// Stands behind the free sfiGet... readers (sfi/SfiConfiguration.h): while it lives they read its settings and
// configuration, else they answer as for a telephone without either. The composition root owns the one object and
// makes it before the service is initialised.
#pragma once

#include "telephone/configuration/Configuration.h"
#include "telephone/management/Settings.h"

namespace telephone {

class SfiReaders
{
public:
    // `configuration` with the addresses of the exchange filled in where the telephone uses its own.
    SfiReaders(Settings const& settings, Configuration configuration);
    ~SfiReaders();
    SfiReaders(SfiReaders const&) = delete;
    SfiReaders& operator=(SfiReaders const&) = delete;

    Settings const& settings() const { return settings_; }
    Configuration const& configuration() const { return configuration_; }
    // The line that is the telephone's own: the primary one, else the first.
    LineConfiguration const* ownLine() const;

private:
    Settings const& settings_;
    Configuration const configuration_;
};

}  // namespace telephone
