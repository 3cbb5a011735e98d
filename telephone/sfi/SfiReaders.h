// The source of the free sfiGet... readers (platform/sfi/SfiConfiguration.h) while it lives; otherwise they answer as
// for a telephone without settings. The composition root owns the one object and makes it before the service is
// initialised.
#pragma once

#include "telephone/configuration/Configuration.h"
#include "telephone/lines/LineTable.h"
#include "telephone/management/Settings.h"

namespace telephone {

class SfiReaders
{
public:
    // configuration: with the addresses of the telephone's own exchange, if it uses that.
    SfiReaders(Settings const& settings, Configuration const& configuration, LineTable const& lines);
    ~SfiReaders();
    SfiReaders(SfiReaders const&) = delete;
    SfiReaders& operator=(SfiReaders const&) = delete;

    Settings const& settings() const { return settings_; }
    Configuration const& configuration() const { return configuration_; }
    LineTable const& lines() const { return lines_; }

private:
    Settings const& settings_;
    Configuration const& configuration_;
    LineTable const& lines_;
};

}  // namespace telephone
