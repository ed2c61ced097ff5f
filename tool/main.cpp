// rk: the pixel library from the command line.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <new>

#include "Command.h"
#include "Failure.h"
#include "ModeNames.h"
#include "OutputFile.h"
#include "Progress.h"

namespace {

struct Command {
    const char* name;
    const char* summary;
    int (*run)(const std::vector<std::string>& arguments);
};

constexpr Command kCommands[] = {
    {"composite", "lay one picture on another, under any transfer mode", RunComposite},
    {"transform", "turn, scale and move a picture, still or with motion blur", RunTransform},
    {"resize", "make a picture larger or smaller", RunResize},
    {"halve", "make a picture half as large", RunHalve},
    {"boxmean", "give each pixel the mean of the box around it", RunBoxMean},
    {"blur", "blur a picture with a box or a Gaussian", RunBlur},
    {"convolve", "filter a picture with a kernel: sharpen, find edges, blur, your own", RunConvolve},
    {"crossfade", "mix two pictures of one size", RunCrossfade},
    {"mask", "make masks, change and combine them, cut pictures out", RunMask},
    {"text", "write on a picture", RunText},
    {"outline", "draw the outline of a picture as dots, moved about as you like", RunOutline},
    {"guess-alpha", "tell how a picture's alpha is to be read", RunGuessAlpha},
    {"modes", "list the transfer modes, or draw all of them on two pictures", RunModes},
    {"slots", "tell what the library's function table holds on this machine", RunSlots},
    {"info", "tell what picture files hold", RunInfo},
};

std::string Help() {
    std::string text =
        "rk: the pixel library from the command line\n\nUsage: rk COMMAND [OPTIONS]\n\nCommands:\n";
    for (const Command& command : kCommands)
        text += fmt::format("  {:<11} {}\n", command.name, command.summary);
    text +=
        "\nrk COMMAND --help tells a command's options, with examples. rk --version tells the version.\n"
        "Pictures are PNG, JPEG, TIFF and OpenEXR files.\n\n"
        "Example:\n"
        "  rk composite samples/coffee.png samples/galaxies.jpg -o out.png --mode screen\n\n"
        "Exit status: 0 good, 1 failed, 2 misuse.\n";
    return text;
}

int Run(const std::vector<std::string>& words) {
    if (words.empty()) Misuse("a command is missing; rk --help lists them");
    const std::string& word = words[0];
    if (word == "--help" || word == "-h" || word == "help") {
        Print(Help());
        return kExitGood;
    }
    if (word == "--version") {
        Print("rk " RK_TOOL_VERSION "\n");
        return kExitGood;
    }
    std::vector<std::string> known;
    for (const Command& command : kCommands) {
        if (word == command.name) return command.run({words.begin() + 1, words.end()});
        known.push_back(command.name);
    }
    const std::string near = DidYouMean(word, known);
    Misuse("unknown command '" + OneLine(word) + "'" + (near.empty() ? "; rk --help lists them" : near));
}

// A closed standard stream would give its number to a picture file. Reading or writing it fails instead.
void HoldStandardStreams() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) >= 0) continue;
        const int held = open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        if (held >= 0 && held != fd) close(held);
    }
}

int Tell(const std::string& line, int status) {
    fmt::print(stderr, "rk: {}\n", line);
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    HoldStandardStreams();
    signal(SIGPIPE, SIG_IGN);  // a closed pipe is an error like any other
    CatchSignals();
    try {
        return Run({argv + 1, argv + argc});
    } catch (const Stopped&) {
        Tell("stopped: nothing was written", kExitFailed);
        // Ends as the signal would have ended it, so that a calling shell knows.
        const int number = SignalCaught();
        signal(number, SIG_DFL);
        raise(number);
        return kExitFailed;
    } catch (const Failure& failure) {
        return Tell(failure.what(), failure.status);
    } catch (const std::bad_alloc&) {
        return Tell("not enough memory", kExitFailed);
    } catch (const std::exception& error) {
        return Tell(OneLine(error.what()), kExitFailed);
    }
}
