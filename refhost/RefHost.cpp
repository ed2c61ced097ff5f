// Switches of the reference host that no single package owns: calls that fail, and the packages' versions.
#include <cstring>
#include <mutex>

#include "refhost/Internal.h"

namespace {

struct Failing {
    std::string operation;
    RK_Long code;
};
std::mutex g_lock;
std::vector<Failing> g_failing;

struct Package {
    const char* name;
    RK_Long version;
    int32_t checks;
};
Package g_packages[] = {{"KIT", 61, 0}, {"TXT", 3, 0}, {"RAS", 31, 0}, {"GEO", 18, 0},
                        {"DSK", 39, 0}, {"SEQ", 9, 0}, {"RVFX", 8, 0}, {"MOD", 11, 0}};

Package* packageOf(const char* name) {
    for (Package& package : g_packages)
        if (std::strcmp(package.name, name) == 0) return &package;
    return nullptr;
}

}  // namespace

namespace RefHost {

void FailCall(const std::string& operation, RK_Long code) {
    const std::lock_guard<std::mutex> guard(g_lock);
    g_failing.push_back({operation, code});
}

RK_Long FailingCall(const char* operation) noexcept {
    const std::lock_guard<std::mutex> guard(g_lock);
    for (size_t i = 0; i < g_failing.size(); ++i) {
        if (g_failing[i].operation != operation) continue;
        const RK_Long code = g_failing[i].code;
        g_failing.erase(g_failing.begin() + static_cast<std::ptrdiff_t>(i));
        return code;
    }
    return 0;
}

void SetPackageVersion(const std::string& package, RK_Long version) {
    if (Package* found = packageOf(package.c_str())) found->version = version;
}

int32_t PackageChecks(const std::string& package) {
    const Package* found = packageOf(package.c_str());
    return found ? found->checks : 0;
}

RK_Long CheckPackage(const char* package, RK_Long version) noexcept {
    Package* found = packageOf(package);
    if (!found) return 7;
    ++found->checks;
    return found->version == version ? 0 : 7;
}

}  // namespace RefHost
