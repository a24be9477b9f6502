#include "speech/SummarizationService.h"

#include "platform/Platform.h"
#include "service/APIError.h"
#include "settings/AppSettings.h"
#include "speech/SummarizationError.h"
#include "support/Await.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

#include <mutex>

using namespace talvenor;
using test::await;

namespace {

/// Answers each request with the same response or failure, and keeps what was sent.
class FakeTransport : public HttpTransport
{
public:
    HttpResponse response{200, R"({"summary":"## Summary\nAll is well."})"};
    std::exception_ptr failure;
    QList<HttpRequest> requests;

    [[nodiscard]] bool isValidUrl(const QString &) const override { return true; }
    Task<HttpResponse> send(HttpRequest request) override
    {
        requests.append(request);
        // The answer comes from the event loop, as every answer of a network does.
        const OneShot<void> later;
        QMetaObject::invokeMethod(
            qApp, [later] { later.resume(); }, Qt::QueuedConnection);
        co_await later;
        if (failure)
            std::rethrow_exception(failure);
        co_return response;
    }
};

/// Holds one secret in memory.
class FakeSecretStore : public SecretStore
{
public:
    void save(const QString &, const QString &, const QByteArray &data) override { m_data = data; }
    std::optional<QByteArray> load(const QString &, const QString &) override { return m_data; }
    void remove(const QString &, const QString &) override { m_data.reset(); }

private:
    std::optional<QByteArray> m_data = QByteArray("token");
};

} // namespace

/// The thin layer between a transcript and the hosted service.
class SummarizationServiceTest : public QObject
{
    Q_OBJECT

    std::shared_ptr<FakeTransport> m_transport;

    [[nodiscard]] QJsonObject sent() const
    {
        return QJsonDocument::fromJson(m_transport->requests.value(0).body.value_or(QByteArray())).object();
    }

private Q_SLOTS:
    void initTestCase() { qputenv("TALVENOR_API_URL", "http://127.0.0.1:9/api"); }

    void init()
    {
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        m_transport = std::make_shared<FakeTransport>();
        Platform::shared().httpTransport = m_transport;
        Platform::shared().secretStore = std::make_shared<FakeSecretStore>();
    }

    void theAnswerIsGivenBackUnchanged()
    {
        SummarizationService service;
        QCOMPARE(await(service.summarize(QStringLiteral("[00:00] hello"))),
                 QStringLiteral("## Summary\nAll is well."));
        QCOMPARE(m_transport->requests.size(), 1);
        QVERIFY(m_transport->requests[0].url.endsWith(QStringLiteral("/summarize")));
        QCOMPARE(sent().value(QStringLiteral("transcript")).toString(), QStringLiteral("[00:00] hello"));
        QCOMPARE(sent().value(QStringLiteral("language")).toString(), QStringLiteral("en"));
    }

    void anEmptyTranscriptFailsAtOnceAndNothingChanges()
    {
        SummarizationService service;
        const QSignalSpy changes(&service, &SummarizationService::isSummarizingChanged);
        try {
            static_cast<void>(await(service.summarize(QString())));
            QFAIL("nothing was thrown");
        } catch (const SummarizationError &error) {
            QVERIFY(error.kind() == SummarizationError::Case::emptyTranscript);
        }
        QCoreApplication::processEvents();
        QCOMPARE(changes.count(), 0);
        QVERIFY(m_transport->requests.isEmpty());
    }

    void aBlankIsATranscript()
    {
        SummarizationService service;
        static_cast<void>(await(service.summarize(QStringLiteral(" "))));
        QCOMPARE(sent().value(QStringLiteral("transcript")).toString(), QStringLiteral(" "));
    }

    void aLongTranscriptGoesOutWhole()
    {
        const QString transcript(2'000'000, u'x');
        SummarizationService service;
        static_cast<void>(await(service.summarize(transcript)));
        QCOMPARE(m_transport->requests.size(), 1);
        QCOMPARE(sent().value(QStringLiteral("transcript")).toString(), transcript);
    }

    void theLanguageIsThatOfTheApplication()
    {
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        AppSettings::shared().setTranscriptionLanguage(TranscriptionLanguage::english);
        SummarizationService service;
        static_cast<void>(await(service.summarize(QStringLiteral("good morning"))));
        QCOMPARE(sent().value(QStringLiteral("language")).toString(), QStringLiteral("de"));
    }

    void theFlagFollowsTheCall()
    {
        SummarizationService service;
        QList<bool> states;
        connect(&service, &SummarizationService::isSummarizingChanged, this,
                [&] { states.append(service.isSummarizing()); });
        bool wasSummarizing = false;
        await([](SummarizationService *summarization, bool *flag) -> Task<> {
            static_cast<void>(co_await summarization->summarize(QStringLiteral("text")));
            *flag = summarization->isSummarizing();
        }(&service, &wasSummarizing));
        QVERIFY(wasSummarizing); // it is reset by a task that is started, not awaited
        QVERIFY(test::waitUntil([&] { return !service.isSummarizing(); }));
        QCOMPARE(states, QList<bool>({true, false}));
    }

    void aRefusalOfTheServicePassesThroughAndTheFlagIsReset()
    {
        m_transport->response = {403, R"({"error":"No summaries in this plan"})"};
        SummarizationService service;
        const QSignalSpy changes(&service, &SummarizationService::isSummarizingChanged);
        try {
            static_cast<void>(await(service.summarize(QStringLiteral("text"))));
            QFAIL("nothing was thrown");
        } catch (const APIError &error) {
            QCOMPARE(error.errorDescription(), QStringLiteral("No summaries in this plan"));
        }
        QVERIFY(test::waitUntil([&] { return changes.count() == 2; }));
        QVERIFY(!service.isSummarizing());
    }

    void aFailureOfTheNetworkPassesThroughAndTheFlagIsReset()
    {
        m_transport->failure = std::make_exception_ptr(
            PlatformError(QStringLiteral("network"), 7, QStringLiteral("no connection")));
        SummarizationService service;
        try {
            static_cast<void>(await(service.summarize(QStringLiteral("text"))));
            QFAIL("nothing was thrown");
        } catch (const PlatformError &error) {
            QCOMPARE(error.errorDescription(), QStringLiteral("no connection"));
        }
        QVERIFY(test::waitUntil([&] { return !service.isSummarizing(); }));
    }

    void aServiceThatIsGoneStillGivesTheSummary()
    {
        auto service = std::make_unique<SummarizationService>();
        auto task = service->summarize(QStringLiteral("text"));
        service.reset();
        QCOMPARE(await(std::move(task)), QStringLiteral("## Summary\nAll is well."));
    }

    void errorsSpeakTheLanguageThatIsSetWhenTheyAreRead()
    {
        const SummarizationError empty = SummarizationError::emptyTranscript();
        const SummarizationError network = SummarizationError::networkError(QStringLiteral("why"));
        const SummarizationError api = SummarizationError::apiError(QStringLiteral("why"));
        QCOMPARE(empty.errorDescription(), QStringLiteral("No transcript available."));
        QCOMPARE(network.errorDescription(), QStringLiteral("Network error: why"));
        QCOMPARE(api.errorDescription(), QStringLiteral("API: why"));
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(empty.errorDescription(), QStringLiteral("Kein Transkript vorhanden."));
        QCOMPARE(network.errorDescription(), QStringLiteral("Netzwerkfehler: why"));
        QCOMPARE(api.errorDescription(), QStringLiteral("API: why"));
    }
};

QTEST_GUILESS_MAIN(SummarizationServiceTest)
#include "SummarizationServiceTest.moc"
