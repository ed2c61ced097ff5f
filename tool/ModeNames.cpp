#include "ModeNames.h"

#include <algorithm>
#include <cctype>

#include "Failure.h"

std::string Dashed(const std::string& name) {
    std::string out;
    for (const char c : name) {
        const bool upper = std::isupper(static_cast<unsigned char>(c)) != 0;
        if (upper && !out.empty()) out += '-';
        out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return out;
}

const std::vector<Mode>& Modes() {
    static const std::vector<Mode> modes = [] {
        std::vector<Mode> list;
        for (int32_t number = RK_Xfer_Replace; number <= RK_Xfer_DarkerColour; ++number) {
            RK_ModeInfo info = {};
            if (RK_GetModeInfo(number, &info) != RK_kOK || info.mode_class == RK_kModeRefused) continue;
            list.push_back({number, Dashed(info.name), info});
        }
        return list;
    }();
    return modes;
}

namespace {

// What two spellings of one name have in common.
std::string Plain(const std::string& name) {
    std::string out;
    for (const char c : name) {
        if (c != '-' && c != '_' && c != ' ')
            out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    const size_t american = out.find("color");
    if (american != std::string::npos) out.insert(american + 4, "u");
    return out;
}

// Edits that make one word of the other; two letters swapped are one edit.
size_t Distance(const std::string& a, const std::string& b) {
    std::vector<size_t> before_last, last(b.size() + 1), now(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) last[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        now[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) now[j] = std::min(now[j], before_last[j - 2] + 1);
        }
        before_last = last;
        last = now;
    }
    return last[b.size()];
}

}  // namespace

std::vector<std::string> Nearest(const std::string& word, const std::vector<std::string>& known) {
    const std::string wanted = Plain(word);
    std::vector<std::pair<size_t, std::string>> ranked;
    for (const std::string& name : known) {
        const std::string plain = Plain(name);
        size_t distance = Distance(wanted, plain);
        // A part of a name is near, however much is left out.
        if (wanted.size() >= 3 && plain.find(wanted) != std::string::npos)
            distance = std::min<size_t>(distance, 2);
        const size_t far = std::max<size_t>(2, wanted.size() / 3);
        if (distance <= far) ranked.emplace_back(distance, name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    if (ranked.size() > 3) ranked.resize(3);
    std::vector<std::string> names;
    for (const auto& [distance, name] : ranked) names.push_back(name);
    return names;
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& known) {
    const std::vector<std::string> names = Nearest(word, known);
    if (names.empty()) return "";
    std::string text = "; did you mean ";
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
        text += names[i];
    }
    return text + "?";
}

const Mode& ModeOfName(const std::string& name) {
    const std::string wanted = Plain(name);
    std::vector<std::string> known;
    for (const Mode& mode : Modes()) {
        if (Plain(mode.name) == wanted) return mode;
        known.push_back(mode.name);
    }
    const std::string near = DidYouMean(name, known);
    Misuse("unknown mode '" + OneLine(name) + "'" + (near.empty() ? "; rk modes lists them" : near));
}

const char* ClassName(RK_ModeClass mode_class) {
    switch (mode_class) {
        case RK_kModePlain: return "plain";
        case RK_kModeGuard: return "guard";
        case RK_kModeOverFirst: return "over first";
        case RK_kModeWrapBlack: return "wrap black";
        case RK_kModeWrapWhite: return "wrap white";
        case RK_kModeWrapGrey: return "wrap grey";
        case RK_kModeRefused: break;
    }
    return "refused";
}
