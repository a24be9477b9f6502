#pragma once

#include "foundation/Task.h"

#include <QEventLoop>
#include <QTest>

namespace talvenor::test {

namespace detail {

// QCoro::waitFor of version 0.8 never returns when the task throws; this one tells.
template<typename T, typename Outcome>
Task<> settle(Task<T> task, Outcome *outcome, QEventLoop *loop)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            outcome->emplace(std::in_place_index<0>);
        } else {
            outcome->emplace(std::in_place_index<0>, co_await task);
        }
    } catch (...) {
        outcome->emplace(std::in_place_index<1>, std::current_exception());
    }
    loop->quit();
}

} // namespace detail

/// Runs the event loop until `task` has ended and gives its result, or throws what it threw.
template<typename T>
T await(Task<T> task)
{
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
    std::optional<std::variant<Value, std::exception_ptr>> outcome;
    QEventLoop loop;
    detail::settle(std::move(task), &outcome, &loop);
    while (!outcome)
        loop.exec();
    if (outcome->index() == 1)
        std::rethrow_exception(std::get<1>(*outcome));
    if constexpr (!std::is_void_v<T>)
        return std::get<0>(std::move(*outcome));
}

/// Runs the event loop until `condition` holds; false if it does not within `timeoutMs` milliseconds, which
/// is a bound against hanging and never a wait in itself.
template<typename Condition>
bool waitUntil(Condition condition, int timeoutMs = 10'000)
{
    return QTest::qWaitFor(condition, timeoutMs);
}

} // namespace talvenor::test
