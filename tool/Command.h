// The sub-commands: each takes the words after its name and returns an exit status, or throws a Failure.
#ifndef TOOL_COMMAND_H
#define TOOL_COMMAND_H

#include <string>
#include <vector>

int RunComposite(const std::vector<std::string>& arguments);
int RunTransform(const std::vector<std::string>& arguments);
int RunResize(const std::vector<std::string>& arguments);
int RunHalve(const std::vector<std::string>& arguments);
int RunBoxMean(const std::vector<std::string>& arguments);
int RunBlur(const std::vector<std::string>& arguments);
int RunConvolve(const std::vector<std::string>& arguments);
int RunCrossfade(const std::vector<std::string>& arguments);
int RunMask(const std::vector<std::string>& arguments);
int RunText(const std::vector<std::string>& arguments);
int RunOutline(const std::vector<std::string>& arguments);
int RunGuessAlpha(const std::vector<std::string>& arguments);
int RunModes(const std::vector<std::string>& arguments);
int RunSlots(const std::vector<std::string>& arguments);
int RunInfo(const std::vector<std::string>& arguments);

#endif
