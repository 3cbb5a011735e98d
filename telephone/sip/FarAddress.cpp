#include "telephone/sip/FarAddress.h"

namespace telephone::sip {

void FarAddress::describe(sa const& address)
{
    if (sa_cmp(&described_, &address, SA_ALL)) {
        return;
    }
    *this = {};
    described_ = address;
}

bool FarAddress::accept(sa const& from, std::uint16_t sequence)
{
    if (sa_cmp(&from, &described_, SA_ALL)) {
        settled_ = true;
        learned_.reset();
        return true;
    }
    if (!settled_ && !learned_) {
        prove(from, sequence);
    }
    return learned_ && sa_cmp(&from, &*learned_, SA_ALL);
}

void FarAddress::prove(sa const& from, std::uint16_t sequence)
{
    bool const continues = sequence == candidateNext_ && sa_cmp(&from, &candidate_, SA_ALL);
    candidate_ = from;
    candidateNext_ = static_cast<std::uint16_t>(sequence + 1);
    candidateCount_ = continues ? candidateCount_ + 1 : 1;
    if (candidateCount_ >= kProof) {
        learned_ = from;
    }
}

sa const& FarAddress::destination() const
{
    bool const elsewhere = learned_ && !sa_cmp(&*learned_, &described_, SA_ADDR);
    return elsewhere ? *learned_ : described_;
}

}  // namespace telephone::sip
