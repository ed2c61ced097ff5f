// Which file extensions are of which plug-in type.
#include "RK/host/DSK.h"

#include "refhost/ExtensionMap.h"
#include "refhost/Internal.h"

namespace {

struct Mapping {
    std::string extension;
    uint32_t type;
};
std::vector<Mapping> g_mappings;

}  // namespace

RK_Long DSK_AddExtensionMap(const char* extension, uint32_t type) {
    if (!extension || extension[0] != '.') return 3;
    if (const RK_Long code = RefHost::FailingCall("DSK_AddExtensionMap")) return code;
    if (RefHost::HasExtensionOf(extension, type)) return 0;
    try {
        g_mappings.push_back({extension, type});
        return 0;
    } catch (const std::exception&) {
        return 4;
    }
}

namespace RefHost {

bool HasExtensionOf(const std::string& extension, uint32_t type) {
    for (const Mapping& mapping : g_mappings)
        if (mapping.type == type && mapping.extension == extension) return true;
    return false;
}

}  // namespace RefHost

RK_Long DSK_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("DSK", version); }
