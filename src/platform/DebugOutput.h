// Where the transaction layer's trace lines go. Nothing else of the library writes to the host program's streams.
#pragma once

/// Writes the text and a line end to standard output. A reader that closed the other end of a pipe costs the line, but
/// never raises SIGPIPE in the host program; write errors are ignored. A null text writes nothing. Any thread.
void OutputDebugString(const char* text);
