#include "RK/host/TRC.h"

#include <mutex>

#include "refhost/Internal.h"

namespace {

std::mutex g_lock;
std::vector<std::string> g_lines;

}  // namespace

// A line that finds no memory is lost.
void TRC_Log(int32_t level, const char* package, const char* topic, const char* text) {
    const std::lock_guard<std::mutex> guard(g_lock);
    try {
        g_lines.push_back(std::to_string(level) + " " + package + " " + topic + ": " + text);
    } catch (const std::exception&) {
    }
}

namespace RefHost {

std::vector<std::string> TakeLog() {
    const std::lock_guard<std::mutex> guard(g_lock);
    std::vector<std::string> taken;
    taken.swap(g_lines);
    return taken;
}

}  // namespace RefHost
