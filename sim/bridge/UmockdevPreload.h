// The umockdev preload library redirects /sys and the udev events of this process to the test bed; it must be there
// when the process starts. Used by main() of programs that make a VirtualUsbBus.
#pragma once

namespace corvane {

/// Whether the preload is in force.
bool HasUmockdevPreload();

/// Returns when the preload is in force. Otherwise starts the program anew with it (sanitizer runtimes, which insist on
/// being first, in front); does not return then. Ends the process with a message if that does not help.
void EnsureUmockdevPreload(char** argv);

}  // namespace corvane
