// The server transaction of one incoming request: absorbs retransmissions until we answer. Owned by the object that
// represents the request. The destructor takes the lock; everything else is used under it.
#pragma once

#include <memory>
#include <string>

#include "telephone/sip/Element.h"

namespace telephone::sip {

class ServerTransaction
{
public:
    // cancelled: called with `argument` when a CANCEL arrives before the final response.
    ServerTransaction(std::shared_ptr<Element> element, sip_msg const& request, sip_cancel_h* cancelled = nullptr,
                      void* argument = nullptr);
    ~ServerTransaction();

    sip_msg const& request() const { return *request_.get(); }
    // Until the final response or handOver().
    bool isOpen() const { return !answered_; }
    // Sends a response, 100 to 699. Once the request is answered, it only logs.
    void answer(int status, std::string const& reason, Headers const& headers = {}, Content const& content = {});
    // Leaves the answer to one of the stack's own functions, or to nobody.
    void handOver();

private:
    std::shared_ptr<Element> element_;
    Ref<sip_msg> request_;
    sip_strans* transaction_ = nullptr;
    bool answered_ = false;
};

}  // namespace telephone::sip
