#include "platform/linux/network/NetworkErrorText.h"

#include <QLocale>
#include <QSet>
#include <QTest>

using namespace talvenor;

/// The texts by which users learn why a request failed.
class NetworkErrorTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLanguageIsTheSystems()
    {
        setLanguage("en_GB.UTF-8");
        QCOMPARE(networkErrorText(CURLE_COULDNT_CONNECT), QStringLiteral("The server cannot be reached."));
        setLanguage("de_AT.UTF-8");
        QCOMPARE(networkErrorText(CURLE_COULDNT_CONNECT), QStringLiteral("Der Server ist nicht erreichbar."));
        setLanguage("fr_FR.UTF-8");
        QCOMPARE(networkErrorText(CURLE_COULDNT_CONNECT), QStringLiteral("The server cannot be reached."));
        setLanguage("C.UTF-8");
        QCOMPARE(networkErrorText(CURLE_COULDNT_CONNECT), QStringLiteral("The server cannot be reached."));
    }

    void causesThatUsersCanActOnDiffer()
    {
        for (const char *const language : {"en_US.UTF-8", "de_DE.UTF-8"}) {
            setLanguage(language);
            QSet<QString> texts;
            const QList<CURLcode> causes{
                CURLE_COULDNT_RESOLVE_HOST, CURLE_COULDNT_CONNECT,   CURLE_OPERATION_TIMEDOUT,
                CURLE_SSL_CONNECT_ERROR,    CURLE_GOT_NOTHING,       CURLE_PEER_FAILED_VERIFICATION,
                CURLE_FILESIZE_EXCEEDED,    CURLE_FTP_ACCEPT_FAILED, CURLE_ABORTED_BY_CALLBACK,
            };
            for (const CURLcode cause : causes)
                texts.insert(networkErrorText(cause));
            QCOMPARE(texts.size(), causes.size());
            QVERIFY(!texts.contains(QString()));
        }
    }

private:
    static void setLanguage(const char *locale)
    {
        qunsetenv("LANGUAGE");
        qputenv("LC_ALL", locale);
        qputenv("LANG", locale);
    }
};

QTEST_GUILESS_MAIN(NetworkErrorTextTest)
#include "NetworkErrorTextTest.moc"
