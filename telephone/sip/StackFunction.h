// The stack's own functions, behind those of the same name that replace them here.
#pragma once

#include <dlfcn.h>

namespace telephone::sip {

// The next definition of the name after this program's.
template <typename Function>
Function* stackFunction(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace telephone::sip
