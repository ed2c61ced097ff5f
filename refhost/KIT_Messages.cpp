// Message lookup. This host has no translations: the text shown is the entry's own English message.
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "refhost/Internal.h"

namespace {

const char* englishOf(const char* text) {
    const char* equals = std::strchr(text, '=');
    return equals ? equals + 1 : text;
}

// Escapes become what they stand for.
std::string shown(const char* english) {
    static const char kEscape[] = "#{rsquo}";
    std::string out = english;
    for (size_t at = 0; (at = out.find(kEscape, at)) != std::string::npos; ++at)
        out.replace(at, sizeof kEscape - 1, "'");
    return out;
}

}  // namespace

const char* KIT_ZLookupLStrCache(const KIT_ZRef* zref, int32_t index, int32_t, int32_t) {
    if (!zref || !zref->messages || index < 0 || index >= zref->count) return "";
    const char* text = zref->messages[index].text;
    if (!text) return "";
    const char* english = englishOf(text);
    try {
        static std::mutex lock;
        static std::map<const char*, std::string> cache;  // its texts never move
        const std::lock_guard<std::mutex> guard(lock);
        auto found = cache.find(text);
        if (found == cache.end()) found = cache.emplace(text, shown(english)).first;
        return found->second.c_str();
    } catch (const std::exception&) {
        return english;
    }
}
