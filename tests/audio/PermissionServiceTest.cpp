#include "audio/PermissionService.h"
#include "support/Await.h"
#include "support/FakeAudio.h"
#include "support/LogCapture.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <stdexcept>
#include <thread>

using namespace talvenor;
using test::await;

namespace talvenor {

/// The report on microphone, speech recognition and screen capture.
class PermissionServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_audio.emplace(); }
    void cleanup() { m_audio.reset(); }

    void thereIsOneInstanceWithNoAnswers()
    {
        QCOMPARE(&PermissionService::shared(), &PermissionService::shared());
        const PermissionService &service = PermissionService::shared();
        QVERIFY(!service.microphoneGranted() && !service.speechGranted() && !service.screenCaptureGranted() &&
                !service.allPermissionsChecked());
    }

    void whatIsAuthorizedIsGrantedWithoutAsking()
    {
        PermissionService service;
        QSignalSpy microphone(&service, &PermissionService::microphoneGrantedChanged);
        QSignalSpy speech(&service, &PermissionService::speechGrantedChanged);
        QSignalSpy checked(&service, &PermissionService::allPermissionsCheckedChanged);
        await(service.requestAllPermissions());
        QVERIFY(service.microphoneGranted() && service.speechGranted() && service.allPermissionsChecked());
        QVERIFY(!m_audio->authorization->microphoneAnswer);
        QVERIFY(!m_audio->authorization->speechAnswer);
        QVERIFY(!service.screenCaptureGranted()); // not part of this
        QCOMPARE(m_audio->journal->calls(), QStringList());
        await(service.requestAllPermissions());
        QCOMPARE(microphone.count(), 1);
        QCOMPARE(speech.count(), 1);
        QCOMPARE(checked.count(), 1);
    }

    void oneRefusalDoesNotEndTheSequence_data()
    {
        QTest::addColumn<AuthorizationStatus>("status");
        QTest::newRow("denied") << AuthorizationStatus::denied;
        QTest::newRow("restricted") << AuthorizationStatus::restricted;
    }
    void oneRefusalDoesNotEndTheSequence()
    {
        QFETCH(AuthorizationStatus, status);
        PermissionService service;
        m_audio->authorization->microphone = status;
        await(service.requestAllPermissions());
        QVERIFY(!service.microphoneGranted());
        QVERIFY(service.speechGranted());
        QVERIFY(service.allPermissionsChecked());
        QVERIFY(!m_audio->authorization->microphoneAnswer);
    }

    void refusalOfBothIsAnAnswerToo()
    {
        PermissionService service;
        m_audio->authorization->microphone = AuthorizationStatus::denied;
        m_audio->authorization->speech = AuthorizationStatus::restricted;
        await(service.requestAllPermissions());
        QVERIFY(!service.microphoneGranted() && !service.speechGranted());
        QVERIFY(service.allPermissionsChecked());
        QVERIFY(!m_audio->authorization->microphoneAnswer && !m_audio->authorization->speechAnswer);
    }

    void aLaterRefusalTakesAGrantBack()
    {
        PermissionService service;
        await(service.requestAllPermissions());
        m_audio->authorization->microphone = AuthorizationStatus::denied;
        m_audio->authorization->speech = AuthorizationStatus::denied;
        await(service.requestAllPermissions());
        QVERIFY(!service.microphoneGranted() && !service.speechGranted());
        QVERIFY(service.allPermissionsChecked());
    }

    void theQuestionsComeOneAfterTheOther_data()
    {
        QTest::addColumn<bool>("granted");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void theQuestionsComeOneAfterTheOther()
    {
        QFETCH(bool, granted);
        PermissionService service;
        m_audio->authorization->microphone = AuthorizationStatus::notDetermined;
        m_audio->authorization->speech = AuthorizationStatus::notDetermined;
        auto &microphoneAnswer = m_audio->authorization->microphoneAnswer;
        auto &speechAnswer = m_audio->authorization->speechAnswer;
        service.requestAllPermissions();
        QVERIFY(microphoneAnswer);
        QVERIFY(!speechAnswer);
        // Answers come on any thread.
        std::thread([&] { microphoneAnswer(granted); }).join();
        QVERIFY(test::waitUntil([&] { return bool(speechAnswer); }));
        QCOMPARE(service.microphoneGranted(), granted);
        QVERIFY(!service.allPermissionsChecked());
        bool onTheMainThread = false;
        connect(
            &service, &PermissionService::speechGrantedChanged, this,
            [&] { onTheMainThread = QThread::currentThread() == thread(); }, Qt::DirectConnection);
        std::thread([&] {
            speechAnswer(granted ? AuthorizationStatus::authorized : AuthorizationStatus::denied);
        }).join();
        QVERIFY(test::waitUntil([&] { return service.allPermissionsChecked(); }));
        QVERIFY(test::waitUntil([&] { return service.speechGranted() == granted; }));
        QCOMPARE(onTheMainThread, granted);
    }

    void anythingButAuthorizedIsNoToSpeech()
    {
        PermissionService service;
        await(service.requestAllPermissions());
        m_audio->authorization->speech = AuthorizationStatus::notDetermined;
        for (const AuthorizationStatus status :
             {AuthorizationStatus::notDetermined, AuthorizationStatus::restricted,
              AuthorizationStatus::denied}) {
            service.requestAllPermissions();
            m_audio->authorization->speechAnswer(AuthorizationStatus::authorized);
            QVERIFY(test::waitUntil([&] { return service.speechGranted(); }));
            service.requestAllPermissions();
            m_audio->authorization->speechAnswer(status);
            QVERIFY(test::waitUntil([&] { return !service.speechGranted(); }));
        }
    }

    void onlyTheFirstAnswerResumes()
    {
        PermissionService service;
        m_audio->authorization->microphone = AuthorizationStatus::notDetermined;
        service.requestAllPermissions();
        m_audio->authorization->microphoneAnswer(true);
        m_audio->authorization->microphoneAnswer(false);
        QVERIFY(test::waitUntil([&] { return service.allPermissionsChecked(); }));
        QVERIFY(service.microphoneGranted());
    }

    void screenCaptureIsGrantedWhenTheQuerySucceeds()
    {
        PermissionService service;
        QSignalSpy changed(&service, &PermissionService::screenCaptureGrantedChanged);
        m_audio->displays.clear(); // the content does not matter
        await(service.checkScreenCapture());
        QVERIFY(service.screenCaptureGranted());
        await(service.checkScreenCapture());
        QCOMPARE(changed.count(), 1);
        QVERIFY(!service.allPermissionsChecked());
    }

    void aFailingQueryOfAnyKindIsNoGrant()
    {
        PermissionService service;
        const test::LogCapture log;
        for (const std::exception_ptr &error :
             {test::platformFailure(QStringLiteral("no server")),
              std::make_exception_ptr(std::runtime_error("something else")), std::make_exception_ptr(7)}) {
            m_audio->contentError = nullptr;
            await(service.checkScreenCapture());
            QVERIFY(service.screenCaptureGranted());
            m_audio->contentError = error;
            await(service.checkScreenCapture());
            QVERIFY(!service.screenCaptureGranted());
        }
        QCOMPARE(log.lines(), QStringList());
    }

    void theStartOfTheProgramDoesNotWaitForTheChecks()
    {
        PermissionService service;
        m_audio->authorization->microphone = AuthorizationStatus::notDetermined;
        const OneShot<void> gate;
        m_audio->contentGate = gate;
        service.requestAllPermissions(); // both come back though nobody has answered
        service.checkScreenCapture();
        QVERIFY(!service.allPermissionsChecked());
        QVERIFY(!service.screenCaptureGranted());
        m_audio->authorization->microphoneAnswer(true);
        gate.resume();
        QVERIFY(test::waitUntil(
            [&] { return service.allPermissionsChecked() && service.screenCaptureGranted(); }));
    }

private:
    std::optional<test::FakeAudio> m_audio;
};

} // namespace talvenor

using talvenor::PermissionServiceTest;
QTEST_GUILESS_MAIN(PermissionServiceTest)
#include "PermissionServiceTest.moc"
