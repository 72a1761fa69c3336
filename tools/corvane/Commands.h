// The subcommands. Each Add function registers one with its options; its callback runs the command and throws Failure.
#pragma once

#include <CLI/CLI.hpp>

#include "Options.h"

void AddListCommand(CLI::App& app, const Options& options);
void AddInfoCommand(CLI::App& app, const Options& options);
void AddGetCommand(CLI::App& app, const Options& options);
void AddSetCommand(CLI::App& app, const Options& options);
void AddCalibrateCommand(CLI::App& app, const Options& options);
