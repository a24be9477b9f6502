#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace talvenor::server {

/// A moment in Coordinated Universal Time, exact to the millisecond, which is how moments are stored.
using TimePoint = std::chrono::sys_time<std::chrono::milliseconds>;

/// Tells the present moment; callable from any thread. Given from outside so that a month can end in a test.
using Clock = std::function<TimePoint()>;

/// The system's clock.
[[nodiscard]] TimePoint systemTime();

/// The internet date-time form with milliseconds, "2026-01-31T10:00:00.000Z".
[[nodiscard]] std::string isoText(TimePoint moment);

/// The first moment of the calendar month that holds `moment`, in the time zone of this process (TZ).
[[nodiscard]] TimePoint startOfMonth(TimePoint moment);

} // namespace talvenor::server
