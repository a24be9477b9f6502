#pragma once

namespace talvenor::Easing {

/// Curves of motion: how far a change has come after a fraction of its time. Both go from 0 to 1; outside of
/// that the ends hold. They are the Bezier curves that style sheets of the web call ease-out and ease-in-out,
/// (0, 0)-(0.58, 1) and (0.42, 0)-(0.58, 1). Any thread.
[[nodiscard]] double out(double fraction);
[[nodiscard]] double inOut(double fraction);

} // namespace talvenor::Easing
