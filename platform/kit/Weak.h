/// @file
/// Definitions that give way.
#pragma once

/// Marks a definition of the kit that gives way to one of the same function in the program. Platform.h explains it.
#define KIT_WEAK __attribute__((weak))
