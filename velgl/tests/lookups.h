#pragma once

namespace Atelier::Vel::Testing {

/// Whether locks can be counted: not under a sanitizer that replaces them.
bool countsLocks();

/// The mutexes that the calling thread has locked so far, in all libraries but inside of
/// eglGetCurrentContext().
int lockCount();

/// How often the calling thread has asked EGL for its current context so far, in all libraries.
int contextLookUpCount();

} // namespace Atelier::Vel::Testing
