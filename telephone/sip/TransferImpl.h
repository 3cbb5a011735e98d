// A REFER that came in, behind the interface. In a dialog its notices travel in that dialog.
#pragma once

#include "telephone/sip/Transfer.h"
#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class TransferImpl final : public Transfer
{
public:
    // Null when the request cannot be used, which is answered then. dialog: null outside one.
    static std::unique_ptr<TransferImpl> read(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& refer,
                                              sip_dialog* dialog, std::string const& contactUser);
    TransferImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& refer, sip_dialog* dialog,
                 std::string contactUser, Uri const& referTo);
    ~TransferImpl() override;

    std::string target() const override { return target_; }
    std::optional<Replaces> replaces() const override { return replaces_; }
    std::string referredBy() const override { return referredBy_; }
    NameAddr from() const override { return from_; }
    NameAddr to() const override { return to_; }
    bool accept() override;
    bool reject(int status, std::string const& reason) override;
    bool notify(int status, std::string const& reason) override;

private:
    std::shared_ptr<UserAgent::Impl> agent_;
    Ref<sip_msg> refer_;
    Ref<sip_dialog> dialog_;
    Ref<sipnot> notifier_;
    Ref<Credentials> credentials_;
    sip_strans* transaction_ = nullptr;  // until it is answered: takes the retransmissions
    std::string contactUser_;
    std::string target_;
    std::optional<Replaces> replaces_;
    std::string referredBy_;
    NameAddr from_;
    NameAddr to_;
    bool answered_ = false;
    bool ended_ = false;
};

}  // namespace telephone::sip
