// Transfer on the stack's event package support. In a dialog its notifications travel in that dialog.
#pragma once

#include "telephone/sip/ServerTransaction.h"
#include "telephone/sip/Transfer.h"

namespace telephone::sip {

class TransferImpl final : public Transfer
{
public:
    // Answers a malformed request with 400 and returns null. dialog: null outside a dialog.
    static std::unique_ptr<TransferImpl> read(std::shared_ptr<Element> element, sip_msg const& refer,
                                              sip_dialog* dialog, std::string const& contactUser);
    TransferImpl(std::shared_ptr<Element> element, sip_msg const& refer, sip_dialog* dialog, std::string contactUser,
                 Uri const& referTo);
    ~TransferImpl() override;

    std::string target() const override { return target_; }
    std::optional<Replaces> replaces() const override { return replaces_; }
    std::string referredBy() const override { return referredBy_; }
    NameAddr from() const override { return nameAddrOf(transaction_.request().from); }
    NameAddr to() const override { return nameAddrOf(transaction_.request().to); }
    Outcome<> accept() override;
    void reject(int status, std::string const& reason) override;
    void notify(int status, std::string const& reason) override;

private:
    std::shared_ptr<Element> element_;
    ServerTransaction transaction_;
    Ref<sip_dialog> dialog_;
    Ref<sipnot> notifier_;
    std::string contactUser_;
    std::string target_;
    std::optional<Replaces> replaces_;
    std::string referredBy_;
    bool active_ = false;  // accepted, and no final status yet
};

}  // namespace telephone::sip
