#include "service/APIError.h"
#include "settings/AppSettings.h"

#include <QTest>

using namespace talvenor;

/// The error's texts, which are chosen when they are read.
class APIErrorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void payloadsStayAsTheyCame()
    {
        const QString text = QStringLiteral("Diese E-Mail ist vergeben.");
        for (const AppLanguage language : {AppLanguage::german, AppLanguage::english}) {
            AppSettings::shared().setAppLanguage(language);
            QCOMPARE(APIError::network(text).errorDescription(), text);
            QCOMPARE(APIError::forbidden(text).errorDescription(), text);
            QCOMPARE(APIError::badRequest(text).errorDescription(), text);
            QCOMPARE(APIError::serverError(text).errorDescription(), text);
        }
    }

    void ownSentencesFollowTheLanguageOfTheMoment()
    {
        const APIError unauthorized = APIError::unauthorized();
        const APIError decodingError = APIError::decodingError();
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        QCOMPARE(unauthorized.errorDescription(), QStringLiteral("Session expired. Please log in again."));
        QCOMPARE(decodingError.errorDescription(), QStringLiteral("Failed to process data."));
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(unauthorized.errorDescription(),
                 QStringLiteral("Sitzung abgelaufen. Bitte erneut anmelden."));
        QCOMPARE(decodingError.errorDescription(), QStringLiteral("Daten konnten nicht verarbeitet werden."));
        QCOMPARE(localizedDescription(std::make_exception_ptr(unauthorized)),
                 QStringLiteral("Sitzung abgelaufen. Bitte erneut anmelden."));
    }

    void casesAreToldApart()
    {
        QCOMPARE(APIError::network({}).errorCase(), APIError::Case::network);
        QCOMPARE(APIError::forbidden({}).errorCase(), APIError::Case::forbidden);
        QCOMPARE(APIError::badRequest({}).errorCase(), APIError::Case::badRequest);
        QCOMPARE(APIError::serverError({}).errorCase(), APIError::Case::serverError);
        QCOMPARE(APIError::unauthorized().errorCase(), APIError::Case::unauthorized);
        QCOMPARE(APIError::decodingError().errorCase(), APIError::Case::decodingError);
    }
};

QTEST_GUILESS_MAIN(APIErrorTest)
#include "APIErrorTest.moc"
