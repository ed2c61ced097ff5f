// CLI11 with the tool's manners: one line per error, exit status 2.
#ifndef TOOL_COMMAND_LINE_H
#define TOOL_COMMAND_LINE_H

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <string>
#include <vector>

// Parses; false when help was asked for and printed. Throws a Failure of status 2.
bool Parse(CLI::App& app, const std::vector<std::string>& arguments);

#endif
