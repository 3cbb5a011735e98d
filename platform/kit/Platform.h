/// @file
/// A complete platform, for a port to begin with.
///
/// The library resolves what platform/ declares from the program that loads it, and is not loaded while one function is
/// missing. A program that links the kit has all of them. Each answers "not there" in the way that its contract gives
/// for a failure, and says so once in the log. The porter replaces them one by one:
///
/// - **A function or accessor**: define it in the program (`CSfi* CSfi::GetInstance() { ... }`). The kit's definition
///   is weak and gives way; nothing in the kit is edited.
/// - **A class behind an accessor**: derive from its default (`class CallControl : public kit::DefaultCSfi`), override
///   what works already, and return the object from the accessor. Its header includes what an override needs. What is
///   not overridden goes on saying what it should do. Once all of it is there, derive from the interface of platform/.
/// - **Semaphore, Serializer, SIPConfigManager and RecordingConfigManager**: define all members in the program. Each is
///   one object file, which the linker takes from the kit's archive only if the program has none. To define some of
///   the members is an error of the linker.
///
/// This works because the kit is a static library whose sources are compiled apart. Link it as one (not with
/// `--whole-archive`), and export the program's symbols (`-rdynamic`, or ENABLE_EXPORTS in CMake).
///
/// What works here already, because the library cannot run without it: Semaphore, Serializer, the log, the lock and the
/// timers of DefaultCSfi, ClientUtils, and Utility::isLineStateBusy. What may be null is said in Check.h.
#pragma once

namespace kit {

/// Puts the whole platform into the program: its one reference makes the linker take what the program does not define.
/// Library calls it; a program that loads the library by other means calls it itself. Does nothing.
void completePlatform();

}  // namespace kit
