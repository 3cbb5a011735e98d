/// @file
/// How the kit says that a part of the platform is not there yet.
#pragma once

namespace kit {

/// One class of the platform, or its free functions. Each operation of it that is not there is logged once, at its
/// first use, with what a porter should implement. Thread: any.
class Missing
{
public:
    /// Both texts outlive the object.
    /// @param owner name of the class; null for free functions
    /// @param header the header with the contract
    constexpr Missing(char const* owner, char const* header)
        : owner_(owner)
        , header_(header)
    {}

    /// Logs that an operation is not there, unless that has been said before.
    /// @param operation its name, without the class
    /// @param task what it should do, as a request to the porter
    void report(char const* operation, char const* task) const;

private:
    char const* owner_;
    char const* header_;
};

}  // namespace kit
