#include "foundation/Task.h"
#include "foundation/LocalizedError.h"
#include "support/Await.h"

#include <QTest>
#include <QThread>

#include <memory>
#include <stdexcept>

using namespace talvenor;
using test::await;

/// The waiting primitives that everything asynchronous is built on.
class TaskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTaskStartsAfterTheCallerHasReturned()
    {
        bool started = false;
        startTask(this, [&started]() -> Task<> {
            started = true;
            co_return;
        });
        QVERIFY(!started);
        QVERIFY(test::waitUntil([&] { return started; }));
    }

    void aTaskIsDroppedWithItsContext()
    {
        bool started = false;
        {
            QObject context;
            startTask(&context, [&started]() -> Task<> {
                started = true;
                co_return;
            });
        }
        QCoreApplication::processEvents();
        QVERIFY(!started);
    }

    void theFirstAnswerCounts()
    {
        const OneShot<int> promise;
        QVERIFY(promise.resume(1));
        QVERIFY(!promise.resume(2));
        QVERIFY(!promise.fail(std::make_exception_ptr(std::runtime_error("late"))));
        QCOMPARE(await([](OneShot<int> answer) -> Task<int> { co_return co_await answer; }(promise)), 1);
    }

    void aFailureIsThrownWhereItIsAwaited()
    {
        const OneShot<int> promise;
        promise.fail(
            std::make_exception_ptr(PlatformError(QStringLiteral("test"), 7, QStringLiteral("broken"))));
        try {
            await([](OneShot<int> answer) -> Task<int> { co_return co_await answer; }(promise));
            QFAIL("nothing was thrown");
        } catch (const PlatformError &error) {
            QCOMPARE(error.code(), 7);
            QCOMPARE(error.errorDescription(), QStringLiteral("broken"));
        }
    }

    void workRunsElsewhereAndTheResultComesBackHere()
    {
        QThread *const here = QThread::currentThread();
        QThread *worker = nullptr;
        QThread *resumed = nullptr;
        const auto result = await([&]() -> Task<std::unique_ptr<int>> {
            auto work = [&worker] {
                worker = QThread::currentThread();
                return std::make_unique<int>(42);
            };
            auto value = co_await onGeneralPool(std::move(work));
            resumed = QThread::currentThread();
            co_return value;
        }());
        QCOMPARE(*result, 42);
        QVERIFY(worker != here);
        QCOMPARE(resumed, here);
    }

    void workThatThrowsThrowsAtTheWaiter()
    {
        bool caught = false;
        await([&]() -> Task<> {
            try {
                co_await onGeneralPool([]() -> int { throw std::runtime_error("no"); });
            } catch (const std::runtime_error &error) {
                caught = QByteArray(error.what()) == "no";
            }
        }());
        QVERIFY(caught);
    }

    void theDescriptionOfAnyErrorCanBeTold()
    {
        QCOMPARE(localizedDescription(std::make_exception_ptr(
                     PlatformError(QStringLiteral("test"), 1, QStringLiteral("für Menschen")))),
                 QStringLiteral("für Menschen"));
        QCOMPARE(localizedDescription(std::make_exception_ptr(std::runtime_error("plain"))),
                 QStringLiteral("plain"));
        QVERIFY(!localizedDescription(std::make_exception_ptr(3)).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TaskTest)
#include "TaskTest.moc"
