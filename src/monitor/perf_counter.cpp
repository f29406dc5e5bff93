// perf_counter.cpp - CVTPerfCounterEx and MulDiv64.
//
// The clock and its frequency are each chosen once per process, in
// function-local statics, by two separate tests that don't look at each
// other. After that a reading costs one guard test, one indirect call and
// the clock read itself.
#include "vetra/perf_counter.h"

#include <cstdint>

#include "platform/clock.h"

namespace {

// The millisecond fallback counts 1000 ticks a second.
constexpr uint64_t kFallbackFrequency = 1000;

} // namespace

void CVTPerfCounterEx::Start() {
    Measure_(m_ullStart);
}

void CVTPerfCounterEx::Stop() {
    Measure_(m_ullStop);
}

uint64_t CVTPerfCounterEx::GetPeriod() const {
    return m_ullStop - m_ullStart;
}

// The conversions cut to whole seconds before they scale, so a millisecond
// or microsecond figure is always a multiple of 1000 or 1000000.
uint64_t CVTPerfCounterEx::GetSeconds() const {
    return GetPeriod() / Frequency_();
}

uint64_t CVTPerfCounterEx::GetMilliSeconds() const {
    return GetPeriod() / Frequency_() * 1000;
}

uint64_t CVTPerfCounterEx::GetMicroSeconds() const {
    return GetPeriod() / Frequency_() * 1000000;
}

uint64_t CVTPerfCounterEx::QueryFrequency_() {
    const uint64_t frequency = vetra::platform::FineFrequency();
    return frequency != 0 ? frequency : kFallbackFrequency;
}

uint64_t CVTPerfCounterEx::Frequency_() {
    static const uint64_t s_freq = QueryFrequency_();
    return s_freq;
}

void CVTPerfCounterEx::Qpc_(uint64_t& out) {
    vetra::platform::FineTicks(out);
}

void CVTPerfCounterEx::Gtc_(uint64_t& out) {
    out = vetra::platform::TickCount32();
}

CVTPerfCounterEx::MeasureFun CVTPerfCounterEx::GetMeasureFun_() {
    uint64_t trial;
    return vetra::platform::FineTicks(trial) ? Qpc_ : Gtc_;
}

void CVTPerfCounterEx::Measure_(uint64_t& out) {
    static const MeasureFun s_fn = GetMeasureFun_();
    s_fn(out);
}

long long MulDiv64(long long a, long long b, long long c) {
    // Only the low 32 bits of each argument count.
    const int64_t number = static_cast<int32_t>(static_cast<uint32_t>(a));
    const int64_t numerator = static_cast<int32_t>(static_cast<uint32_t>(b));
    const int64_t denominator = static_cast<int32_t>(static_cast<uint32_t>(c));
    if (denominator == 0) return -1;
    // |product| <= 2^62 and |remainder| < 2^31: nothing below can overflow.
    const int64_t product = number * numerator;
    int64_t quotient = product / denominator;
    const int64_t remainder = product % denominator;
    const int64_t magnitude = remainder < 0 ? -remainder : remainder;
    const int64_t divisor = denominator < 0 ? -denominator : denominator;
    if (2 * magnitude >= divisor) quotient += (product < 0) == (denominator < 0) ? 1 : -1;
    if (quotient > INT32_MAX || quotient < INT32_MIN) return -1;
    return quotient;
}
