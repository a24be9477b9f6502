#include "speech/TranscriptionService.h"

#include "platform/Platform.h"
#include "platform/linux/speech/LinuxSpeech.h"
#include "settings/AppSettings.h"
#include "speech/TranscriptionError.h"
#include "speech_support/SpokenAudio.h"
#include "speech_support/WordErrors.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <mutex>

using namespace talvenor;
using test::await;

namespace {

/// Lets the real recogniser work and keeps what it reports.
class ListeningRecognizer : public SpeechRecognizer
{
public:
    struct Notes
    {
        std::mutex lock;
        int partialCount = 0;       ///< guarded by lock
        QList<SpeechSegment> words; ///< guarded by lock; of the final result
    };

    ListeningRecognizer(std::unique_ptr<SpeechRecognizer> recognizer, std::shared_ptr<Notes> notes)
        : m_recognizer(std::move(recognizer)), m_notes(std::move(notes))
    {
    }

    [[nodiscard]] bool isAvailable() const override { return m_recognizer->isAvailable(); }
    [[nodiscard]] bool supportsOnDeviceRecognition() const override
    {
        return m_recognizer->supportsOnDeviceRecognition();
    }
    SpeechTaskState recognitionTask(const SpeechRequest &request, ResultHandler handler) override
    {
        return m_recognizer->recognitionTask(
            request, [notes = m_notes, handler](const SpeechResult *result, const SpeechError *error) {
                if (result != nullptr) {
                    const std::lock_guard guard(notes->lock);
                    if (result->isFinal)
                        notes->words = result->segments;
                    else
                        ++notes->partialCount;
                }
                handler(result, error);
            });
    }

private:
    std::unique_ptr<SpeechRecognizer> m_recognizer;
    std::shared_ptr<Notes> m_notes;
};

} // namespace

/// A spoken meeting, from its audio file to the lines of its transcript, by the real recogniser.
class MeetingTranscriptionTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    test::SpokenMeeting m_meeting;
    std::shared_ptr<ListeningRecognizer::Notes> m_notes = std::make_shared<ListeningRecognizer::Notes>();
    QList<TranscriptSegment> m_lines;
    qint64 m_longestStallMs = 0;

    [[nodiscard]] QString path(const char *name) const
    {
        return m_folder.filePath(QString::fromLatin1(name));
    }

    [[nodiscard]] QStringList recognizedWords() const
    {
        QStringList words;
        for (const SpeechSegment &word : m_notes->words)
            words.append(word.substring);
        return words;
    }

private Q_SLOTS:
    void initTestCase()
    {
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        installLinuxSpeech(Platform::shared());
        Platform::shared().createSpeechRecognizer =
            [create = Platform::shared().createSpeechRecognizer,
             notes = m_notes](const QString &locale) -> std::unique_ptr<SpeechRecognizer> {
            auto recognizer = create(locale);
            return recognizer ? std::make_unique<ListeningRecognizer>(std::move(recognizer), notes) : nullptr;
        };

        m_meeting = test::speakMeeting();
        test::writeM4a(path("meeting.m4a"), m_meeting.samples);
        QVERIFY(m_meeting.samples.size() > std::size_t(200 * test::kSampleRate));

        // The main thread beats all the while; the longest time between two beats is its longest stall.
        QElapsedTimer sinceBeat;
        QTimer beat;
        connect(&beat, &QTimer::timeout, this,
                [&] { m_longestStallMs = std::max(m_longestStallMs, sinceBeat.restart()); });
        sinceBeat.start();
        beat.start(5);

        TranscriptionService service;
        m_lines = await(service.transcribe(path("meeting.m4a"), TranscriptionLanguage::english));
        qInfo("longest time between two beats of the main thread: %lld ms",
              static_cast<long long>(m_longestStallMs));
    }

    void cleanupTestCase() { Platform::shared().createSpeechRecognizer = nullptr; }

    void wordsAreUnderstood()
    {
        const QStringList reference = m_meeting.words();
        const test::WordAlignment alignment = test::alignWords(reference, recognizedWords());
        const double rate = double(alignment.errors) / double(reference.size());
        qInfo("%d of %lld words wrong: %.1f%%", alignment.errors, static_cast<long long>(reference.size()),
              100 * rate);
        // Five to ten percent is what the model achieves with these voices.
        QVERIFY(reference.size() > 600);
        QVERIFY(rate < 0.08);
    }

    void turnsBeginWhenTheyWereSpoken()
    {
        const test::WordAlignment alignment = test::alignWords(m_meeting.words(), recognizedWords());
        QHash<qsizetype, qsizetype> recognized;
        for (const auto &[reference, hypothesis] : alignment.matches)
            recognized.insert(reference, hypothesis);
        qsizetype position = 0;
        int compared = 0;
        double worst = 0;
        for (const auto &turn : m_meeting.turns) {
            if (recognized.contains(position)) {
                ++compared;
                worst = std::max(
                    worst, std::abs(m_notes->words[recognized.value(position)].timestamp - turn.startsAt));
            }
            position += turn.words.size();
        }
        qInfo("first words of %d turns compared, the worst is off by %.0f ms", compared, 1000 * worst);
        QVERIFY(compared > m_meeting.turns.size() * 3 / 4);
        QVERIFY(worst < 0.3);
    }

    void linesAreTheWordsInGroups()
    {
        // The recogniser gives no punctuation, so every line but the last has fifteen words.
        const QStringList words = recognizedWords();
        QCOMPARE(m_lines.size(), (words.size() + 14) / 15);
        for (qsizetype index = 0; index < m_lines.size(); ++index) {
            QCOMPARE(m_lines[index].text, words.mid(15 * index, 15).join(u' '));
            QCOMPARE(m_lines[index].timestamp, m_notes->words[15 * index].timestamp);
            QVERIFY(!m_lines[index].speaker.has_value());
        }
    }

    void partialResultsCameOnTheWay() { QVERIFY(m_notes->partialCount >= 3); }

    void silenceGivesTheOneSentence()
    {
        test::writeM4a(path("silence.m4a"), test::silence(5));
        TranscriptionService service;
        const auto lines = await(service.transcribe(path("silence.m4a"), TranscriptionLanguage::english));
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0].text,
                 QStringLiteral("(No speech detected - try a longer recording with clear speech)"));
    }

    void aMissingFileFailsWithTheReason()
    {
        TranscriptionService service;
        const test::LogCapture log;
        try {
            static_cast<void>(await(service.transcribe(path("gone.m4a"), TranscriptionLanguage::english)));
            QFAIL("nothing was thrown");
        } catch (const TranscriptionError &error) {
            QVERIFY(error.errorDescription().startsWith(
                QStringLiteral("Transcription failed: The audio file cannot be opened: No such file")));
        }
        const QStringList texts = log.texts(QStringLiteral("com.talvenor.app.Transcription"));
        QVERIFY(texts.contains(QStringLiteral("Audio file NOT FOUND: ") + path("gone.m4a")));
        QVERIFY(
            texts.last().startsWith(QStringLiteral("Recognition error: The audio file cannot be opened")));
        QVERIFY(texts.last().endsWith(QStringLiteral(" code=2")));
    }

    void germanNeedsAModelThatIsNotThere()
    {
        TranscriptionService service;
        const test::LogCapture log;
        try {
            static_cast<void>(await(service.transcribe(path("meeting.m4a"), TranscriptionLanguage::german)));
            QFAIL("nothing was thrown");
        } catch (const TranscriptionError &error) {
            QVERIFY(error.kind() == TranscriptionError::Case::recognizerUnavailable);
        }
        QVERIFY(!log.texts(QStringLiteral("com.talvenor.app.Platform"))
                     .filter(QStringLiteral("No speech recogniser for de-DE: no usable ggml-*.bin in "))
                     .isEmpty());
    }
};

QTEST_GUILESS_MAIN(MeetingTranscriptionTest)
#include "MeetingTranscriptionTest.moc"
