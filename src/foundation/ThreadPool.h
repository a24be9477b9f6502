#pragma once

#include <QThreadPool>

#include <functional>

namespace talvenor {

/// Runs `work`, which must not throw, on a thread of the pool. Any thread.
///
/// The same as QThreadPool::start, and shown to the thread sanitizer: what was written before this call can
/// be read by the work.
void startOnPool(QThreadPool &pool, std::function<void()> work);

} // namespace talvenor
