// A millisecond counter for the age of the controller layer's cached replies. It follows the wall clock; durations that
// must not jump when the clock is set are measured with platform/TimeSource.h.
#pragma once

/// Makes the current wall-clock second the origin of GetTickCount. Runs once when the library is loaded.
void InitialiseTickCount();

/// Milliseconds since the origin, wrapping at 32 bits. The origin keeps whole seconds only, so the first reading lies
/// anywhere between 0 and 999. Any thread.
unsigned int GetTickCount();
