// The command line: subcommands, their words and options, help.
#pragma once

#include "Failure.h"

/// Reads the command line and runs what it asks for. Throws Failure; a mistake in the command line itself is told on
/// the error stream and answered.
ExitCode RunCommandLine(int argc, char** argv);
