#include "recorderfakes/ScriptedSpeech.h"

namespace talvenor::test {

class ScriptedSpeech::Recognizer : public SpeechRecognizer
{
public:
    explicit Recognizer(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    bool isAvailable() const override { return true; }
    bool supportsOnDeviceRecognition() const override { return true; }
    SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) override
    {
        const std::lock_guard guard(m_state->lock);
        m_state->paths.append(request.path);
        m_state->handlers.append(std::move(handler));
        return SpeechTaskState::running;
    }

private:
    std::shared_ptr<State> m_state;
};

std::unique_ptr<SpeechRecognizer> ScriptedSpeech::createRecognizer(const QString &locale)
{
    const std::lock_guard guard(m_state->lock);
    m_state->locales.append(locale);
    return std::make_unique<Recognizer>(m_state);
}

qsizetype ScriptedSpeech::started() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->handlers.size();
}

QStringList ScriptedSpeech::paths() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->paths;
}

QStringList ScriptedSpeech::locales() const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->locales;
}

SpeechRecognizer::ResultHandler ScriptedSpeech::handler(qsizetype index) const
{
    const std::lock_guard guard(m_state->lock);
    return m_state->handlers.at(index);
}

void ScriptedSpeech::finish(qsizetype index, const QStringList &words)
{
    SpeechResult result;
    result.isFinal = true;
    double seconds = 0;
    for (const QString &word : words) {
        result.segments.append({word, seconds});
        seconds += 0.5;
    }
    handler(index)(&result, nullptr);
}

void ScriptedSpeech::fail(qsizetype index, int code, const QString &description)
{
    const SpeechError error{code, description};
    handler(index)(nullptr, &error);
}

} // namespace talvenor::test
