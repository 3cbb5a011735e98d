// The functions of the stack that are replaced, listed in StackFunctions.def: whoever calls NAME, the stack itself
// included, gets our_NAME, and stack_NAME is the one replaced. The linker does it (CMakeLists.txt), so that an our_NAME
// that is missing is an error of the link. StackFunctions.cpp decides for each whether ours or the stack's own does the
// work, and nothing else: what ours do has its own file.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "telephone/sip/Stack.h"

extern "C" {
// Exported by the stack without a declaration.
int sip_auth_encode(mbuf* buffer, sip_auth* authentication, char const* method, char const* uri);
int sip_dialog_encode(mbuf* buffer, sip_dialog* dialog, std::uint32_t cseq, char const* method);
int sipsess_reply_2xx(sipsess* session, sip_msg const* request, std::uint16_t status, char const* reason,
                      mbuf* description, char const* format, va_list* arguments);
struct sip_connqent;
int sip_transp_send(sip_connqent** queued, sip* stack, void* connection, sip_transp transport, sa const* to,
                    mbuf* message, void (*done)(int error, void* argument), void* argument);

#define STACK_FUNCTION(name) decltype(name) our_##name, stack_##name;
#include "telephone/sip/StackFunctions.def"
#undef STACK_FUNCTION
}

namespace telephone::sip {

// Throws std::runtime_error, with its name, if a function of the list is not replaced in this program.
void checkStackFunctions();

}  // namespace telephone::sip
