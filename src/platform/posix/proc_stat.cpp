// proc_stat.cpp - parsers of /proc/stat's "cpu" line and of a task's stat
// line. They read decimal fields separated by blanks and never look past the
// length given; a figure too large for 64 bits wraps, as it never does in
// practice.
#include "platform/posix/proc_stat.h"

namespace vetra::platform {

namespace {

// Reads text[pos..end) as a cursor over blank-separated fields.
struct FieldReader {
    const char* pos;
    const char* end;

    void SkipBlanks() {
        while (pos < end && (*pos == ' ' || *pos == '\t'))
            ++pos;
    }
    // The next field as an unsigned decimal; false at the end of the line or
    // on a field that doesn't start with a digit.
    bool Number(uint64_t& out) {
        SkipBlanks();
        if (pos == end || *pos < '0' || *pos > '9') return false;
        out = 0;
        while (pos < end && *pos >= '0' && *pos <= '9')
            out = out * 10 + uint64_t(*pos++ - '0');
        return true;
    }
    // Passes over the next field, whatever it holds ("-1" among them).
    bool Skip() {
        SkipBlanks();
        if (pos == end || *pos == '\n') return false;
        while (pos < end && *pos != ' ' && *pos != '\t' && *pos != '\n')
            ++pos;
        return true;
    }
};

} // namespace

bool ParseSystemTicks(const char* text, size_t length, SystemTicks& out) {
    // "cpu" followed by a blank: "cpu0" is the first processor, not the sum.
    if (length < 4 || text[0] != 'c' || text[1] != 'p' || text[2] != 'u' || text[3] != ' ')
        return false;
    FieldReader line{text + 3, text + length};
    enum { user, nice, system, idle, iowait, irq, softirq, count };
    uint64_t field[count] = {};
    int read = 0;
    while (read < count && line.Number(field[read]))
        ++read;
    if (read < 4) return false;
    out.idle = field[idle] + field[iowait];
    out.kernel = field[system] + field[irq] + field[softirq] + out.idle;
    out.user = field[user] + field[nice];
    return true;
}

bool ParseTaskTicks(const char* text, size_t length, TaskTicks& out) {
    const char* close = nullptr;
    for (const char* p = text; p < text + length; ++p)
        if (*p == ')') close = p;
    if (close == nullptr) return false;
    FieldReader line{close + 1, text + length};
    line.SkipBlanks();
    if (line.pos == line.end) return false;
    TaskTicks ticks{};
    ticks.state = *line.pos++;
    // After the state: ppid pgrp session tty_nr tpgid flags minflt cminflt
    // majflt cmajflt, then utime and stime.
    for (int i = 0; i < 10; ++i)
        if (!line.Skip()) return false;
    if (!line.Number(ticks.user) || !line.Number(ticks.kernel)) return false;
    out = ticks;
    return true;
}

} // namespace vetra::platform
