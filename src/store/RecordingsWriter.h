#pragma once

#include "foundation/Task.h"
#include "store/Recording.h"
#include "store/RecordingsEncoder.h"

#include <QList>
#include <QString>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace talvenor {

/// Writes lists of recordings on a thread of its own, each of them, in the order in which they were given.
///
/// Any thread may call. The calls take a lock that is never held during encoding or writing.
class RecordingsWriter
{
public:
    RecordingsWriter();
    /// Writes what is waiting, then ends the thread.
    ~RecordingsWriter();
    RecordingsWriter(const RecordingsWriter &) = delete;
    RecordingsWriter &operator=(const RecordingsWriter &) = delete;

    /// Asks for `list`, as it is now, to be written to the file at `path`. A failure is printed as
    /// "Failed to save recordings: " and the reason.
    void write(QString path, QList<Recording> list);

    /// Ends when all that was asked for until now is written or has failed; needs the caller's event loop.
    [[nodiscard]] Task<> allWritten();

    /// As `allWritten`, but blocks.
    void waitUntilWritten();

private:
    struct Job
    {
        QString path;
        QList<Recording> list;
    };
    struct Waiter
    {
        std::uint64_t awaited; ///< the number of finished jobs that it waits for
        OneShot<void> answer;
    };

    void run();
    void save(const Job &job);

    std::mutex m_lock; ///< guards everything up to m_ending
    std::condition_variable m_somethingToDo;
    std::condition_variable m_somethingDone;
    std::deque<Job> m_jobs;
    std::vector<Waiter> m_waiters;
    std::uint64_t m_askedCount = 0;
    std::uint64_t m_doneCount = 0;
    bool m_ending = false;

    RecordingsEncoder m_encoder; ///< used by the thread alone
    std::thread m_thread;        ///< last: it starts when all the rest is there
};

} // namespace talvenor
