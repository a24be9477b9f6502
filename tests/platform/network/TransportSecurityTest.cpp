#include "foundation/LocalizedError.h"
#include "platform/linux/network/CurlTransport.h"
#include "support/Await.h"
#include "support/HttpTestServer.h"

#include <curl/curl.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace talvenor;
using test::await;

/// Encrypted connections, against the web server that the openssl command brings.
class TransportSecurityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        makeCertificate(QStringLiteral("good"), QStringLiteral("IP:127.0.0.1"), 2);
        makeCertificate(QStringLiteral("stranger"), QStringLiteral("DNS:elsewhere.invalid"), 2);
    }

    void aServerOfUnknownOriginIsRefused()
    {
        const auto server = startServer(QStringLiteral("good"));
        CurlTransport transport;
        QCOMPARE(failure(transport), int(CURLE_PEER_FAILED_VERIFICATION));
    }

    void aServerThatIsVouchedForIsTakenAndTheNameHasToFit()
    {
        {
            const auto server = startServer(QStringLiteral("good"));
            CurlTransportLimits limits;
            limits.certificateFile = path(QStringLiteral("good.crt"));
            CurlTransport transport(limits);
            QCOMPARE(failure(transport), 0);
        }
        {
            const auto server = startServer(QStringLiteral("stranger"));
            CurlTransportLimits limits;
            limits.certificateFile = path(QStringLiteral("stranger.crt"));
            CurlTransport transport(limits);
            QCOMPARE(failure(transport), int(CURLE_PEER_FAILED_VERIFICATION));
        }
    }

    void aServerWithoutEncryptionIsNoSecureOne()
    {
        test::HttpTestServer plain;
        m_port = plain.port();
        CurlTransport transport;
        QVERIFY(failure(transport, std::chrono::milliseconds(500)) > 0);
        QVERIFY(plain.requests().isEmpty());
    }

private:
    [[nodiscard]] QString path(const QString &file) const { return m_folder.filePath(file); }

    void makeCertificate(const QString &name, const QString &subject, int days)
    {
        const int code = QProcess::execute(
            QStringLiteral("openssl"),
            {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
             QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"),
             QStringLiteral("-nodes"), QStringLiteral("-keyout"), path(name + QStringLiteral(".key")),
             QStringLiteral("-out"), path(name + QStringLiteral(".crt")), QStringLiteral("-days"),
             QString::number(days), QStringLiteral("-subj"), QStringLiteral("/CN=") + name,
             QStringLiteral("-addext"), QStringLiteral("subjectAltName=") + subject});
        QCOMPARE(code, 0);
    }

    std::unique_ptr<QProcess> startServer(const QString &name)
    {
        auto server = std::make_unique<QProcess>();
        server->setProcessChannelMode(QProcess::MergedChannels);
        server->start(QStringLiteral("openssl"),
                      {QStringLiteral("s_server"), QStringLiteral("-www"), QStringLiteral("-accept"),
                       QStringLiteral("127.0.0.1:0"), QStringLiteral("-cert"),
                       path(name + QStringLiteral(".crt")), QStringLiteral("-key"),
                       path(name + QStringLiteral(".key"))});
        // It says "ACCEPT 127.0.0.1:" and the port that the system has chosen.
        QByteArray output;
        m_port = 0;
        const bool isUp = test::waitUntil([&] {
            output += server->readAll();
            const auto start = output.indexOf("ACCEPT 127.0.0.1:");
            const auto end = output.indexOf('\n', start);
            if (start >= 0 && end > start)
                m_port = output.mid(start + 17, end - start - 17).trimmed().toInt();
            return m_port != 0;
        });
        if (!isUp)
            qFatal("openssl s_server did not start: %s", output.constData());
        return server;
    }

    /// libcurl's code for the failure of one request, 0 if it was answered with 200.
    [[nodiscard]] int failure(CurlTransport &transport,
                              std::chrono::milliseconds timeout = std::chrono::seconds(10)) const
    {
        HttpRequest request;
        request.method = "GET";
        request.url = QStringLiteral("https://127.0.0.1:%1/").arg(m_port);
        request.timeout = timeout;
        try {
            return await(transport.send(request)).statusCode == 200 ? 0 : -1;
        } catch (const PlatformError &error) {
            return error.code();
        }
    }

    QTemporaryDir m_folder;
    int m_port = 0;
};

QTEST_GUILESS_MAIN(TransportSecurityTest)
#include "TransportSecurityTest.moc"
