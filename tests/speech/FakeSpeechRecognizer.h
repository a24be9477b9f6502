#pragma once

#include "platform/Platform.h"

#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace talvenor::test {

/// A recogniser that reports what a test has written, on a thread of its own as a real one does.
class FakeSpeechEngine
{
public:
    using Script = std::function<void(const SpeechRecognizer::ResultHandler &handler)>;

    bool exists = true;
    bool isAvailable = true;
    bool isOnDevice = true;
    SpeechTaskState state = SpeechTaskState::running;
    Script script; ///< called on the recogniser's thread

    /// Puts recognisers of this engine into the platform.
    void install()
    {
        Platform::shared().createSpeechRecognizer = [this](const QString &locale) {
            const std::lock_guard guard(m_lock);
            m_locales.append(locale);
            m_makingThread = std::this_thread::get_id();
            return exists ? std::make_unique<Recognizer>(*this) : nullptr;
        };
    }

    ~FakeSpeechEngine()
    {
        Platform::shared().createSpeechRecognizer = nullptr;
        join();
    }

    /// Waits until all scripts have ended.
    void join()
    {
        for (std::thread &thread : m_threads)
            thread.join();
        m_threads.clear();
    }

    [[nodiscard]] QStringList locales() const
    {
        const std::lock_guard guard(m_lock);
        return m_locales;
    }
    [[nodiscard]] std::thread::id makingThread() const
    {
        const std::lock_guard guard(m_lock);
        return m_makingThread;
    }
    [[nodiscard]] QList<SpeechRequest> requests() const
    {
        const std::lock_guard guard(m_lock);
        return m_requests;
    }

private:
    class Recognizer : public SpeechRecognizer
    {
    public:
        explicit Recognizer(FakeSpeechEngine &engine) : m_engine(engine) {}

        [[nodiscard]] bool isAvailable() const override { return m_engine.isAvailable; }
        [[nodiscard]] bool supportsOnDeviceRecognition() const override { return m_engine.isOnDevice; }
        SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) override
        {
            const std::lock_guard guard(m_engine.m_lock);
            m_engine.m_requests.append(request);
            m_engine.m_threads.emplace_back([script = m_engine.script, handler] { script(handler); });
            return m_engine.state;
        }

    private:
        FakeSpeechEngine &m_engine;
    };

    mutable std::mutex m_lock;
    QStringList m_locales;              ///< guarded by m_lock
    std::thread::id m_makingThread;     ///< guarded by m_lock
    QList<SpeechRequest> m_requests;    ///< guarded by m_lock
    std::vector<std::thread> m_threads; ///< grows under m_lock, joined when no call is under way
};

} // namespace talvenor::test
