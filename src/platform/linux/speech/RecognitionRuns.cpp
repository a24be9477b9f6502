#include "platform/linux/speech/RecognitionRuns.h"

#include "foundation/LocalizedError.h"

#include <QScopeGuard>

#include <atomic>

namespace talvenor {

namespace {

constexpr std::chrono::seconds kBetweenPartialResults(1);

} // namespace

RecognitionRun::RecognitionRun(SpeechRecognizer::ResultHandler handler, bool shouldReportPartialResults)
    : m_handler(std::move(handler)), m_shouldReportPartialResults(shouldReportPartialResults)
{
}

void RecognitionRun::report(const SpeechResult *result, const SpeechError *error) const
{
    if (!isStopped())
        m_handler(result, error);
}

void RecognitionRun::reportWords()
{
    m_reportedCount = m_words.size();
    const SpeechResult result{m_words, false};
    report(&result, nullptr);
}

void RecognitionRun::addWord(const SpeechSegment &word)
{
    m_words.append(word);
    const auto now = std::chrono::steady_clock::now();
    if (!m_shouldReportPartialResults || now < m_nextReport)
        return;
    m_nextReport = now + kBetweenPartialResults;
    reportWords();
}

void RecognitionRun::reportFinal(const QList<SpeechSegment> &words)
{
    if (words.isEmpty()) {
        reportError({noSpeechDetected, QStringLiteral("No speech detected")});
        return;
    }
    const SpeechResult result{words, true};
    report(&result, nullptr);
}

void RecognitionRun::reportError(const SpeechError &error)
{
    if (m_shouldReportPartialResults && m_reportedCount < m_words.size())
        reportWords();
    report(nullptr, &error);
}

ChildProcess::Ending RecognitionRun::runProgram(const QString &program, const QStringList &arguments,
                                                const ChildProcess::LineHandler &onLine)
{
    ChildProcess process(program, arguments);
    {
        const std::lock_guard guard(m_lock);
        m_program = &process;
        if (m_isStopped)
            process.kill();
    }
    const auto forget = qScopeGuard([this] {
        const std::lock_guard guard(m_lock);
        m_program = nullptr;
    });
    return process.wait(onLine);
}

void RecognitionRun::stop()
{
    const std::lock_guard guard(m_lock);
    m_isStopped = true;
    if (m_program != nullptr)
        m_program->kill();
}

bool RecognitionRun::isStopped() const
{
    const std::lock_guard guard(m_lock);
    return m_isStopped;
}

struct RecognitionRuns::Entry
{
    Entry(SpeechRecognizer::ResultHandler handler, bool shouldReportPartialResults)
        : run(std::move(handler), shouldReportPartialResults)
    {
    }

    RecognitionRun run;
    std::atomic<bool> hasEnded = false;
    std::thread thread;
};

RecognitionRuns::RecognitionRuns() = default;

RecognitionRuns::~RecognitionRuns()
{
    for (const auto &entry : m_entries)
        entry->run.stop();
    for (const auto &entry : m_entries) {
        if (entry->thread.joinable()) // not if its thread could not be made
            entry->thread.join();
    }
}

void RecognitionRuns::start(SpeechRecognizer::ResultHandler handler, bool shouldReportPartialResults,
                            Work work)
{
    const std::lock_guard guard(m_lock);
    // Those that have ended are collected here, since nobody else looks at them.
    std::erase_if(m_entries, [](const std::unique_ptr<Entry> &entry) {
        if (entry->hasEnded)
            entry->thread.join();
        return entry->hasEnded.load();
    });
    Entry &entry =
        *m_entries.emplace_back(std::make_unique<Entry>(std::move(handler), shouldReportPartialResults));
    entry.thread = std::thread([&entry, work = std::move(work)] {
        try {
            work(entry.run);
        } catch (const PlatformError &error) {
            const bool concernsAudio = error.domain() != QStringLiteral("process");
            entry.run.reportError(
                {concernsAudio ? audioNotReadable : engineFailed, error.errorDescription()});
        } catch (...) {
            entry.run.reportError({engineFailed, localizedDescription(std::current_exception())});
        }
        entry.hasEnded = true;
    });
}

} // namespace talvenor
