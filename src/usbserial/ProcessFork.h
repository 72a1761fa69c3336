// A fork() of the process, whose child has libusb's memory but none of its threads: it begins as a process that has
// called nothing yet. Used by BridgeLibrary and the enumeration.
#pragma once

#include <mutex>

namespace corvane {

/// Held over our calls of libusb that take locks of the whole process, by which fork() waits for their end: the child
/// takes these locks again when it opens devices of its own. What libusb's own thread takes as something is plugged is
/// out of reach.
std::mutex& ForkMutex();

/// From now on calls `begin` in every child of a fork(), before anything else of this library runs there.
void AtForkInChild(void (*begin)());

}  // namespace corvane
