// Why a call is made.
#pragma once

namespace telephone {

enum class CallPurpose : int
{
    kOrdinary,
    kConsultation,  // the call that it interrupts is held for it
};

}  // namespace telephone
