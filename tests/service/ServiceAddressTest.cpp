#include "ServiceTestAccess.h"

#include <QTest>

using namespace talvenor;

/// Where the service is looked for.
class ServiceAddressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theVariableIsTakenVerbatim_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("plain") << QByteArray("http://127.0.0.1:8080");
        QTest::newRow("slash at the end") << QByteArray("http://127.0.0.1:8080/");
        QTest::newRow("blanks") << QByteArray(" http://host /x ");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("beyond ASCII") << QByteArray("http://h\xc3\xb6st");
    }

    void theVariableIsTakenVerbatim()
    {
        QFETCH(QByteArray, value);
        qputenv("TALVENOR_API_URL", value);
        QCOMPARE(ServiceTestAccess::makeAPIService()->baseURL(), QString::fromUtf8(value));
    }

    void withoutTheVariableItIsThePublicHost()
    {
        qunsetenv("TALVENOR_API_URL");
        const auto service = ServiceTestAccess::makeAPIService();
        QCOMPARE(service->baseURL(), QStringLiteral("https://" TALVENOR_SERVICE_HOST "/api"));
        qputenv("TALVENOR_API_URL", "http://later");
        QCOMPARE(service->baseURL(), QStringLiteral("https://" TALVENOR_SERVICE_HOST "/api"));
    }

    void theSharedOneKeepsWhatItFirstFound()
    {
        qputenv("TALVENOR_API_URL", "http://first");
        QCOMPARE(APIService::shared().baseURL(), QStringLiteral("http://first"));
        qputenv("TALVENOR_API_URL", "http://second");
        QCOMPARE(APIService::shared().baseURL(), QStringLiteral("http://first"));
        QCOMPARE(&APIService::shared(), &APIService::shared());
    }
};

QTEST_GUILESS_MAIN(ServiceAddressTest)
#include "ServiceAddressTest.moc"
