#pragma once

#include "platform/SpeechRecognizer.h"
#include "platform/linux/speech/ChildProcess.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace talvenor {

/// The numbers that our recognisers give their failures.
enum SpeechErrorCode { engineFailed = 1, audioNotReadable = 2, modelNotLoaded = 3, noSpeechDetected = 1110 };

/// One recognition under way: what its work reports to, and by what it can be stopped.
///
/// Used by the recognition's own thread; only `stop` and `isStopped` are for any thread.
class RecognitionRun
{
public:
    RecognitionRun(SpeechRecognizer::ResultHandler handler, bool shouldReportPartialResults);

    /// Adds a word to those so far and reports them, at most once a second: each report is the complete list,
    /// and one for every word of a long meeting would cost more than the recognition.
    void addWord(const SpeechSegment &word);
    /// The words so far.
    [[nodiscard]] const QList<SpeechSegment> &words() const { return m_words; }
    /// Ends the run with words; without any it is the no-speech error.
    void reportFinal(const QList<SpeechSegment> &words);
    /// Ends the run with an error, after the words so far if some have been held back.
    void reportError(const SpeechError &error);

    /// Runs `program` to its end as ChildProcess does. A run that is stopped kills it.
    ChildProcess::Ending runProgram(const QString &program, const QStringList &arguments,
                                    const ChildProcess::LineHandler &onLine);

    /// Ends the program that is running; nothing is reported from now on.
    void stop();
    [[nodiscard]] bool isStopped() const;

private:
    void report(const SpeechResult *result, const SpeechError *error) const;
    void reportWords();

    const SpeechRecognizer::ResultHandler m_handler;
    const bool m_shouldReportPartialResults;
    QList<SpeechSegment> m_words;
    qsizetype m_reportedCount = 0; ///< number of words in the latest report
    std::chrono::steady_clock::time_point m_nextReport = std::chrono::steady_clock::now();

    mutable std::mutex m_lock;
    bool m_isStopped = false;          ///< guarded by m_lock
    ChildProcess *m_program = nullptr; ///< guarded by m_lock; lives in runProgram
};

/// All recognitions under way, each on a thread of its own. Destroying it stops them and waits for their
/// threads, so it must not happen inside a result handler. Any thread.
class RecognitionRuns
{
public:
    /// What a recognition does; a PlatformError that leaves it becomes the run's error.
    using Work = std::function<void(RecognitionRun &run)>;

    RecognitionRuns();
    ~RecognitionRuns();
    RecognitionRuns(const RecognitionRuns &) = delete;
    RecognitionRuns &operator=(const RecognitionRuns &) = delete;

    /// Starts a recognition.
    void start(SpeechRecognizer::ResultHandler handler, bool shouldReportPartialResults, Work work);

private:
    struct Entry;

    std::mutex m_lock;
    std::vector<std::unique_ptr<Entry>> m_entries; ///< guarded by m_lock
};

} // namespace talvenor
