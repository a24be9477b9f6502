#pragma once

#include "platform/SpeechRecognizer.h"
#include "support/Await.h"

#include <QStringList>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

namespace talvenor::test {

/// Keeps what a recogniser reports, and whether it keeps to the rules.
class RecognitionLog
{
public:
    /// The handler to give to the recogniser; this object must outlive the recognition.
    SpeechRecognizer::ResultHandler handler()
    {
        return [this](const SpeechResult *result, const SpeechError *error) {
            if (m_isInside.exchange(true) || (result == nullptr) == (error == nullptr) ||
                std::this_thread::get_id() == m_thread)
                m_brokeTheRules = true;
            {
                const std::lock_guard guard(m_lock);
                if (m_final || m_error)
                    m_brokeTheRules = true; // after the end
                if (error != nullptr)
                    m_error = *error;
                else if (result->isFinal)
                    m_final = *result;
                else
                    m_partials.append(*result);
            }
            m_isInside = false;
        };
    }

    /// Waits for the final result or the error.
    bool wait(int milliseconds = 240'000)
    {
        return waitUntil([this] { return final().has_value() || error().has_value(); }, milliseconds);
    }

    [[nodiscard]] bool brokeTheRules() const { return m_brokeTheRules; }
    [[nodiscard]] QList<SpeechResult> partials() const
    {
        const std::lock_guard guard(m_lock);
        return m_partials;
    }
    [[nodiscard]] std::optional<SpeechResult> final() const
    {
        const std::lock_guard guard(m_lock);
        return m_final;
    }
    [[nodiscard]] std::optional<SpeechError> error() const
    {
        const std::lock_guard guard(m_lock);
        return m_error;
    }
    /// The words of the final result.
    [[nodiscard]] QStringList words() const
    {
        const std::lock_guard guard(m_lock);
        QStringList texts;
        if (m_final) {
            for (const SpeechSegment &word : m_final->segments)
                texts.append(word.substring);
        }
        return texts;
    }

private:
    const std::thread::id m_thread = std::this_thread::get_id();
    std::atomic<bool> m_isInside = false;
    std::atomic<bool> m_brokeTheRules = false;
    mutable std::mutex m_lock;
    QList<SpeechResult> m_partials;      ///< guarded by m_lock
    std::optional<SpeechResult> m_final; ///< guarded by m_lock
    std::optional<SpeechError> m_error;  ///< guarded by m_lock
};

/// A request as the transcription service makes it.
[[nodiscard]] inline SpeechRequest recognitionOf(const QString &path)
{
    return {path, true, true, SpeechTaskHint::dictation, true};
}

} // namespace talvenor::test
