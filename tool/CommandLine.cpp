#include "CommandLine.h"

#include "Failure.h"
#include "OutputFile.h"

bool Parse(CLI::App& app, const std::vector<std::string>& arguments) {
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
        return true;
    } catch (const CLI::CallForHelp&) {
        Print(app.help());
        return false;
    } catch (const CLI::ParseError& error) {
        Misuse(OneLine(error.what()) + " (" + app.get_name() + " --help tells more)");
    }
}
