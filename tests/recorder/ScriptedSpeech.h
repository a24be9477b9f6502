#pragma once

#include "platform/Authorization.h"
#include "platform/SpeechRecognizer.h"

#include <QList>

#include <memory>
#include <mutex>

namespace talvenor::test {

/// The recognitions that a test has let begin and that wait for its word. Any thread.
class ScriptedSpeech
{
public:
    /// What Platform::createSpeechRecognizer is to be set to.
    [[nodiscard]] std::unique_ptr<SpeechRecognizer> createRecognizer(const QString &locale);

    /// The recognitions begun so far.
    [[nodiscard]] qsizetype started() const;
    [[nodiscard]] QStringList paths() const;
    [[nodiscard]] QStringList locales() const;
    /// Ends the recognition number `index` with these words, half a second apart.
    void finish(qsizetype index, const QStringList &words);
    /// Ends it with an error.
    void fail(qsizetype index, int code, const QString &description);

private:
    class Recognizer;
    struct State
    {
        mutable std::mutex lock;
        QStringList locales;
        QStringList paths;
        QList<SpeechRecognizer::ResultHandler> handlers;
    };
    [[nodiscard]] SpeechRecognizer::ResultHandler handler(qsizetype index) const;

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// Permissions as a test grants them.
class ScriptedAuthorization : public Authorization
{
public:
    AuthorizationStatus microphone = AuthorizationStatus::authorized;
    AuthorizationStatus speech = AuthorizationStatus::authorized;

    AuthorizationStatus microphoneStatus() override { return microphone; }
    void requestMicrophoneAccess(std::function<void(bool)> answer) override
    {
        answer(microphone == AuthorizationStatus::authorized);
    }
    AuthorizationStatus speechStatus() override { return speech; }
    void requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer) override
    {
        answer(speech);
    }
};

} // namespace talvenor::test
