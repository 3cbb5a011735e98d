// Counts what is taken of the platform's semaphores, which the service uses as locks. Any thread.
#pragma once

namespace telephone {

// Units taken and not given back, of all semaphores together; 0 at rest.
[[nodiscard]] int heldSemaphores();

}  // namespace telephone
