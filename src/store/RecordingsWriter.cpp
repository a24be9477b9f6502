#include "store/RecordingsWriter.h"

#include "foundation/LocalizedError.h"
#include "platform/AtomicFile.h"
#include "platform/PrintedLine.h"

namespace talvenor {

RecordingsWriter::RecordingsWriter() : m_thread([this] { run(); })
{
}

RecordingsWriter::~RecordingsWriter()
{
    {
        const std::lock_guard guard(m_lock);
        m_ending = true;
    }
    m_somethingToDo.notify_one();
    m_thread.join();
}

void RecordingsWriter::write(QString path, QList<Recording> list)
{
    {
        const std::lock_guard guard(m_lock);
        m_jobs.push_back({std::move(path), std::move(list)});
        ++m_askedCount;
    }
    m_somethingToDo.notify_one();
}

Task<> RecordingsWriter::allWritten()
{
    OneShot<void> answer;
    {
        const std::lock_guard guard(m_lock);
        if (m_doneCount == m_askedCount)
            co_return;
        m_waiters.push_back({m_askedCount, answer});
    }
    co_await answer;
}

void RecordingsWriter::waitUntilWritten()
{
    std::unique_lock guard(m_lock);
    m_somethingDone.wait(guard, [this, awaited = m_askedCount] { return m_doneCount >= awaited; });
}

void RecordingsWriter::run()
{
    std::unique_lock guard(m_lock);
    while (true) {
        m_somethingToDo.wait(guard, [this] { return m_ending || !m_jobs.empty(); });
        if (m_jobs.empty())
            return;
        {
            const Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            guard.unlock();
            save(job);
            // The list, if nobody else holds it any more, goes before the lock is taken again.
        }
        guard.lock();
        ++m_doneCount;
        m_somethingDone.notify_all();
        std::erase_if(m_waiters, [this](const Waiter &waiter) {
            return waiter.awaited <= m_doneCount && waiter.answer.resume();
        });
    }
}

void RecordingsWriter::save(const Job &job)
{
    try {
        writeFileAtomically(job.path, m_encoder.encode(job.list));
    } catch (...) {
        printLine(QStringLiteral("Failed to save recordings: ") +
                  localizedDescription(std::current_exception()));
    }
}

} // namespace talvenor
