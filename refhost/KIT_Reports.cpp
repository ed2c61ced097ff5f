// Reports: kept in order, printed unless a program turns that off, held back inside brackets.
#include <cstdio>
#include <cstring>
#include <mutex>
#include <new>

#include "refhost/Internal.h"

char KITp_G_buffer[KIT_kBufferBytes];
char KITp_G_err_buf[KIT_kBufferBytes];

namespace {

using RefHost::Report;
using RefHost::ReportKind;

// A program that never takes its reports does not grow without end: the oldest half goes.
constexpr size_t kMostKept = 16384;

// An open bracket; the list leads from the innermost outwards.
struct Bracket {
    Bracket* outer;
    std::vector<Report> held;
};

// Made on first use, so that a static object of another source may report.
struct State {
    std::mutex lock;
    std::vector<Report> kept;
    Bracket* innermost = nullptr;
    bool print = true;
};
State& state() {
    static State s;
    return s;
}

void letOut(State& s, Report&& report) {
    if (s.print) std::fprintf(stderr, "RK: %s\n", report.text.c_str());
    if (s.kept.size() >= kMostKept) s.kept.erase(s.kept.begin(), s.kept.begin() + kMostKept / 2);
    s.kept.push_back(std::move(report));
}

// To the bracket, or out when there is none. A report that finds no memory to be kept in is lost.
void pass(State& s, Bracket* bracket, Report&& report) noexcept {
    try {
        if (bracket)
            bracket->held.push_back(std::move(report));
        else
            letOut(s, std::move(report));
    } catch (const std::exception&) {
    }
}

}  // namespace

namespace RefHost {

void Record(ReportKind kind, uint32_t location, int32_t severity, const char* text) noexcept {
    State& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    try {
        pass(s, s.innermost, Report{kind, location, severity, text ? text : ""});
    } catch (const std::exception&) {
        std::fprintf(stderr, "RK: %s\n", text ? text : "");
    }
}

std::vector<Report> TakeReports() {
    State& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    std::vector<Report> taken;
    taken.swap(s.kept);
    return taken;
}

void PrintReports(bool on) {
    State& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    s.print = on;
}

}  // namespace RefHost

void KIT_ReportFailedVerification(uint32_t location, int32_t line, int32_t, const char* text) {
    RefHost::Record(ReportKind::Verification, location, line, text);
}

void KITp_ReportErrString(uint32_t location, int32_t severity, const char* text) {
    RefHost::Record(ReportKind::Error, location, severity, text);
}

void KITp_ReportError(uint32_t location, int32_t severity) {
    KITp_G_buffer[KIT_kBufferBytes - 1] = '\0';
    RefHost::Record(ReportKind::BufferedError, location, severity, KITp_G_buffer);
}

RK_Long KIT_TranslateAndReportException(const std::exception& error) {
    RefHost::Record(ReportKind::Exception, 0, 8, error.what());
    return dynamic_cast<const std::bad_alloc*>(&error) ? 4 : 3;
}

RK_Long KIT_DeferredReportingStart(int32_t, KIT_DeferredReporting* cookie) {
    if (!cookie) return 3;
    cookie->held = nullptr;
    void* place = RefHost::AllocateBlock(sizeof(Bracket));
    if (!place) return 4;
    State& s = state();
    const std::lock_guard<std::mutex> guard(s.lock);
    s.innermost = new (place) Bracket{s.innermost, {}};
    cookie->held = s.innermost;
    return 0;
}

// A bracket that ends before an inner one leaves the inner one open and hands its reports to its own outer
// one.
RK_Long KIT_DeferredReportingEnd(int32_t, int32_t, KIT_DeferredReporting* cookie) {
    if (!cookie || !cookie->held) return 3;
    State& s = state();
    Bracket* bracket = static_cast<Bracket*>(cookie->held);
    {
        const std::lock_guard<std::mutex> guard(s.lock);
        Bracket** link = &s.innermost;
        while (*link && *link != bracket) link = &(*link)->outer;
        if (!*link) return 3;
        *link = bracket->outer;
        cookie->held = nullptr;
        for (Report& report : bracket->held) pass(s, bracket->outer, std::move(report));
    }
    bracket->~Bracket();
    RefHost::FreeBlock(bracket);
    return 0;
}
