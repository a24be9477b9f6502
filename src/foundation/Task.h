#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

namespace talvenor {

/// An operation that may wait and may fail: a coroutine that is awaited with `co_await` and throws.
///
/// It begins when it is called and runs on the caller's thread, which every wait hands back to the event
/// loop. Parameters of coroutines are taken by value: a reference would outlive what it names.
template<typename T = void>
using Task = QCoro::Task<T>;

/// The threads for work that may block: network, disk, processes. Results come back by `co_await`.
///
/// Larger than the number of cores, because what runs there mostly waits, and one hung server must not
/// hold up the opening of an audio file.
[[nodiscard]] QThreadPool &generalPool();

/// Runs `work` on the general pool, whose threads it must not fail on. Any thread.
void startOnGeneralPool(std::function<void()> work);

/// Starts a task on the thread of `context`, from that thread's event loop: it begins after the calling
/// function has returned, never inside it. It is dropped if `context` is gone by then. Any thread.
///
/// Failures must be handled inside: an exception that leaves `operation` is a programming error.
void startTask(QObject *context, std::function<Task<>()> operation);

/// A promise that accepts the first answer and ignores all later ones.
///
/// Copies share the one promise. `resume` and `fail` may be called on any thread, any number of times. One
/// coroutine may await it; it goes on from the event loop of the thread on which it began to wait. If no
/// answer ever comes, it waits for ever.
template<typename T>
class OneShot
{
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

public:
    /// Delivers a value; true if it was the first answer.
    template<typename... Args>
    bool resume(Args &&...args) const
    {
        return m_state->settle(Outcome(std::in_place_index<0>, std::forward<Args>(args)...));
    }

    /// Delivers a failure, which the awaiting coroutine will throw; true if it was the first answer.
    bool fail(std::exception_ptr error) const
    {
        return m_state->settle(Outcome(std::in_place_index<1>, std::move(error)));
    }

    /// True once an answer is there.
    [[nodiscard]] bool isSettled() const
    {
        const std::lock_guard guard(m_state->lock);
        return m_state->outcome.has_value();
    }

    auto operator co_await() const { return Awaiter{m_state}; }

private:
    using Outcome = std::variant<Value, std::exception_ptr>;

    struct State
    {
        bool settle(Outcome answer)
        {
            const std::lock_guard guard(lock);
            if (outcome)
                return false;
            outcome = std::move(answer);
            // The lock also keeps the waiter's context alive until the call is posted.
            if (waiter)
                QMetaObject::invokeMethod(
                    context.get(), [handle = waiter] { handle.resume(); }, Qt::QueuedConnection);
            return true;
        }

        std::mutex lock;
        std::optional<Outcome> outcome;
        std::coroutine_handle<> waiter;
        std::unique_ptr<QObject> context; ///< lives on the waiting thread, which destroys it
    };

    struct Awaiter
    {
        std::shared_ptr<State> state;

        [[nodiscard]] bool await_ready() const
        {
            const std::lock_guard guard(state->lock);
            return state->outcome.has_value();
        }

        bool await_suspend(std::coroutine_handle<> handle) const
        {
            const std::lock_guard guard(state->lock);
            if (state->outcome)
                return false;
            state->context = std::make_unique<QObject>();
            state->waiter = handle;
            return true;
        }

        T await_resume() const
        {
            std::unique_ptr<QObject> context;
            std::unique_lock guard(state->lock);
            context = std::move(state->context);
            Outcome outcome = std::move(*state->outcome);
            // What stays behind only says that the promise is settled.
            state->outcome.emplace(std::in_place_index<1>, std::exception_ptr());
            guard.unlock();
            if (context)
                context.release()->deleteLater(); // we may be inside an event of this very object
            if (outcome.index() == 1)
                std::rethrow_exception(std::get<1>(outcome));
            if constexpr (!std::is_void_v<T>)
                return std::get<0>(std::move(outcome));
        }
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// Runs `work` on the general pool and waits for its result or its exception without blocking the calling
/// thread, which needs an event loop.
///
/// Name the lambda and move it in: `auto work = [...] {...}; co_await onGeneralPool(std::move(work));`. GCC
/// before 13 destroys twice what a temporary lambda has captured, or a temporary aggregate holds, when it
/// stands inside a `co_await` expression. tests/foundation/coroutine_temporaries_test.py looks for such
/// places.
template<typename Work>
Task<std::invoke_result_t<Work>> onGeneralPool(Work work)
{
    using Result = std::invoke_result_t<Work>;
    OneShot<Result> answer;
    auto shared = std::make_shared<Work>(std::move(work));
    startOnGeneralPool([answer, shared]() mutable {
        std::exception_ptr error;
        try {
            if constexpr (std::is_void_v<Result>) {
                (*shared)();
                shared.reset(); // captured objects end before the waiter goes on
                answer.resume();
            } else {
                Result result = (*shared)();
                shared.reset();
                answer.resume(std::move(result));
            }
        } catch (...) {
            error = std::current_exception();
        }
        shared.reset();
        // Out of the handler, so that this thread has let go of the exception when the waiter gets it.
        if (error)
            answer.fail(std::move(error));
    });
    shared.reset();
    co_return co_await answer;
}

} // namespace talvenor
