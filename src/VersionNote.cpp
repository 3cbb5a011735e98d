// The version as an ELF note, so that a program tells it from the file and no symbol is exported for it: section
// ".note.communications_service", type SHT_NOTE, allocated. Name "CommunicationsService", note type 1, and as
// descriptor the version's text with its NUL. Linkers keep notes when they collect unused sections, strip keeps what is
// allocated.
#include "CommunicationsServiceVersion.h"

// In assembler, because a compiler would make a section of data.
__asm__(".pushsection .note.communications_service, \"a\", %note\n"
        ".balign 4\n"
        ".long 2f - 1f\n"
        ".long 4f - 3f\n"
        ".long 1\n"
        "1: .asciz \"CommunicationsService\"\n"
        "2: .balign 4\n"
        "3: .asciz \"" COMMUNICATIONS_SERVICE_VERSION "\"\n"
        "4: .balign 4\n"
        ".popsection\n");
