#include "foundation/LocalizedError.h"
#include "service/AdminStats.h"
#include "service/AdminUserList.h"
#include "service/AnyDecodable.h"
#include "service/AppVersion.h"
#include "service/AuthResponse.h"
#include "service/BuildNumber.h"
#include "service/CaptureResponse.h"
#include "service/JsonDecoding.h"
#include "service/RequestBody.h"
#include "service/SubscriptionOrder.h"
#include "service/SummarizeResponse.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <functional>
#include <limits>

using namespace talvenor;

namespace {

QJsonValue json(const char *text)
{
    return parseJson(text);
}

constexpr const char *kProfile =
    R"({"id":7,"email":"a@b.de","name":"Ä","role":"user","subscription_tier":"basic",
    "subscription_expires_at":"2026-01-31T10:00:00Z","recordings_count":2,"recordings_limit":25,
    "can_record":true,"unknown":[{}]})";
constexpr const char *kAdminUser = R"({"id":7,"email":"a@b.de","name":"Ä","role":"admin",
    "subscription_tier":"premium","subscription_expires_at":"2026-01-31T10:00:00Z","recordings_count":2,
    "created_at":"2025-01-31T10:00:00Z","recordings_limit":1})";

/// A record, how its parts decode, and what each part has to be.
struct Shape
{
    const char *json;
    std::function<void(const QJsonValue &)> decode;
    const char *required;
    const char *optional;
};

template<typename Record>
Shape shape(const char *text, const char *required, const char *optional = "")
{
    return {text, [](const QJsonValue &value) { (void)Record::fromJson(value); }, required, optional};
}

QList<QPair<const char *, Shape>> allShapes()
{
    return {
        {"UserProfile", shape<UserProfile>(kProfile, "id email name role subscription_tier recordings_count",
                                           "subscription_expires_at recordings_limit can_record")},
        {"AdminUser", shape<AdminUser>(kAdminUser, "id email name role subscription_tier recordings_count",
                                       "subscription_expires_at created_at")},
        {"AuthResponse",
         shape<AuthResponse>(R"({"token":"t","user":{"id":7,"email":"a@b.de","name":"","role":"user",
            "subscription_tier":"free","recordings_count":0}})",
                             "token user")},
        {"SubscriptionOrder",
         shape<SubscriptionOrder>(R"({"order_id":"1","approval_url":"https://x"})", "order_id approval_url")},
        {"CaptureResponse",
         shape<CaptureResponse>(R"({"success":true,"subscription_tier":"basic","expires_at":"x"})", "success",
                                "subscription_tier expires_at")},
        {"AdminStats",
         shape<AdminStats>(R"({"total_users":1,"premium_users":2,"total_recordings":3,"new_users_7d":4})",
                           "total_users premium_users total_recordings new_users_7d")},
        {"AdminUserList", shape<AdminUserList>(R"({"users":[]})", "users")},
        {"SummarizeResponse", shape<SummarizeResponse>(R"({"summary":"x"})", "summary")},
        {"AppVersion",
         shape<AppVersion>(R"({"version":"1","build_number":2,"download_url":"x","release_notes":"y"})",
                           "version build_number", "download_url release_notes")},
    };
}

bool decodes(const Shape &shape, const QJsonValue &value)
{
    try {
        shape.decode(value);
        return true;
    } catch (const DecodingFailure &) {
        return false;
    }
}

UserProfile profile(const QString &tier)
{
    UserProfile user;
    user.subscription_tier = tier;
    return user;
}

} // namespace

/// The records of the wire: what is taken, what is refused, what is reckoned from them.
class WireRecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFieldIsTakenAsTold_data()
    {
        QTest::addColumn<int>("index");
        const auto shapes = allShapes();
        for (int i = 0; i < shapes.size(); ++i)
            QTest::newRow(shapes.at(i).first) << i;
    }

    void everyFieldIsTakenAsTold()
    {
        QFETCH(int, index);
        const Shape record = allShapes().at(index).second;
        const QJsonObject whole = json(record.json).toObject();
        QVERIFY(decodes(record, whole));
        const QList<QJsonValue> anything{QJsonValue(1),    QJsonValue(1.5),
                                         QJsonValue(true), QJsonValue(QStringLiteral("x")),
                                         QJsonArray(),     QJsonObject()};
        const auto check = [&](const char *names, bool isRequired) {
            const QStringList list = QString::fromLatin1(names).split(QLatin1Char(' '), Qt::SkipEmptyParts);
            for (const QString &name : list) {
                QVERIFY2(whole.contains(name), qPrintable(name));
                QJsonObject changed = whole;
                changed.remove(name);
                QVERIFY2(decodes(record, changed) != isRequired, qPrintable(name));
                changed.insert(name, QJsonValue::Null);
                QVERIFY2(decodes(record, changed) != isRequired, qPrintable(name));
                for (const QJsonValue &value : anything) {
                    changed.insert(name, value);
                    // An integer is a number too, but one with a fraction is no integer.
                    const bool sameType = whole.value(name).type() == value.type() &&
                                          value != QJsonValue(1.5) && !value.isObject();
                    QVERIFY2(decodes(record, changed) == sameType, qPrintable(name));
                }
                // Keys are matched as written.
                changed = whole;
                changed.remove(name);
                changed.insert(name.toUpper(), whole.value(name));
                QVERIFY2(decodes(record, changed) != isRequired, qPrintable(name));
            }
        };
        check(record.required, true);
        check(record.optional, false);
        for (const char *const other : {"[]", "[{}]"})
            QVERIFY(!decodes(record, json(other)));
        QVERIFY(!decodes(record, QJsonValue()));
    }

    void aProfileHasItsValues()
    {
        const UserProfile user = UserProfile::fromJson(json(kProfile));
        QCOMPARE(user.id, 7);
        QCOMPARE(user.email, QStringLiteral("a@b.de"));
        QCOMPARE(user.name, QStringLiteral("Ä"));
        QCOMPARE(user.role, QStringLiteral("user"));
        QCOMPARE(user.subscription_tier, QStringLiteral("basic"));
        QCOMPARE(user.subscription_expires_at, QStringLiteral("2026-01-31T10:00:00Z"));
        QCOMPARE(user.recordings_count, 2);
        QCOMPARE(user.recordings_limit, 25);
        QCOMPARE(user.can_record, true);
    }

    void recordsSurviveTheWayThereAndBack()
    {
        const auto user = UserProfile::fromJson(json(kProfile));
        QCOMPARE(UserProfile::fromJson(user.toJson()), user);
        UserProfile bare = user;
        bare.subscription_expires_at.reset();
        bare.recordings_limit.reset();
        bare.can_record.reset();
        QCOMPARE(bare.toJson().size(), 6); // what is absent has no key
        QCOMPARE(UserProfile::fromJson(bare.toJson()), bare);
        const AuthResponse response{QStringLiteral("token"), user};
        QCOMPARE(AuthResponse::fromJson(response.toJson()), response);
        const auto admin = AdminUser::fromJson(json(kAdminUser));
        QCOMPARE(AdminUser::fromJson(admin.toJson()), admin);
        const AdminUserList list{{admin, admin}};
        QCOMPARE(AdminUserList::fromJson(list.toJson()), list);
        const SubscriptionOrder order{QStringLiteral("1"), QStringLiteral("https://x")};
        QCOMPARE(SubscriptionOrder::fromJson(order.toJson()), order);
        const CaptureResponse capture{true, QStringLiteral("basic"), std::nullopt};
        QCOMPARE(capture.toJson().size(), 2);
        QCOMPARE(CaptureResponse::fromJson(capture.toJson()), capture);
        const AdminStats stats{1, 2, 3, std::numeric_limits<qint64>::max()};
        QCOMPARE(AdminStats::fromJson(parseJson(QJsonDocument(stats.toJson()).toJson())), stats);
    }

    void oneIncompleteUserSpoilsTheList()
    {
        QJsonObject list{{QStringLiteral("users"), QJsonArray{json(kAdminUser), QJsonObject()}}};
        QVERIFY_EXCEPTION_THROWN((void)AdminUserList::fromJson(list), DecodingFailure);
    }

    void integersAreExact_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<std::optional<qint64>>("value");
        const auto row = [](const char *number, std::optional<qint64> value) {
            QTest::newRow(number) << QByteArray(number) << value;
        };
        row("0", 0);
        row("-1", -1);
        row("3.0", 3);
        row("1e2", 100);
        row("9007199254740993", 9007199254740993); // no double holds it
        row("9223372036854775807", std::numeric_limits<qint64>::max());
        row("-9223372036854775808", std::numeric_limits<qint64>::min());
        row("9223372036854775808", std::nullopt);
        row("-9223372036854775809e1", std::nullopt);
        row("3.5", std::nullopt);
        row("1e300", std::nullopt);
        row("\"3\"", std::nullopt);
        row("true", std::nullopt);
        row("null", std::nullopt);
        row("[3]", std::nullopt);
    }

    void integersAreExact()
    {
        QFETCH(QByteArray, number);
        QFETCH(std::optional<qint64>, value);
        QCOMPARE(exactInteger(parseJson("[" + number + "]").toArray().at(0)), value);
    }

    void aScalarOfUnknownTypeIsKept()
    {
        const QJsonArray values =
            json(R"([3, 3.5, "x", true, null, [1], {"a":1}, 9223372036854775807])").toArray();
        QCOMPARE(std::get<qint64>(AnyDecodable::fromJson(values.at(0)).value), 3);
        QCOMPARE(std::get<double>(AnyDecodable::fromJson(values.at(1)).value), 3.5);
        QCOMPARE(std::get<QString>(AnyDecodable::fromJson(values.at(2)).value), QStringLiteral("x"));
        QCOMPARE(std::get<bool>(AnyDecodable::fromJson(values.at(3)).value), true);
        for (int i = 4; i < 7; ++i)
            QCOMPARE(std::get<QString>(AnyDecodable::fromJson(values.at(i)).value), QString());
        QCOMPARE(std::get<qint64>(AnyDecodable::fromJson(values.at(7)).value),
                 std::numeric_limits<qint64>::max());
    }

    void plansAndRolesAreComparedExactly_data()
    {
        QTest::addColumn<QString>("tier");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isPaid");
        QTest::newRow("free") << QStringLiteral("free") << QStringLiteral("Free") << false;
        QTest::newRow("basic") << QStringLiteral("basic") << QStringLiteral("Basic") << true;
        QTest::newRow("premium") << QStringLiteral("premium") << QStringLiteral("Premium") << true;
        QTest::newRow("lifetime") << QStringLiteral("lifetime") << QStringLiteral("Lifetime") << true;
        QTest::newRow("capital") << QStringLiteral("Premium") << QStringLiteral("Free") << false;
        QTest::newRow("blank") << QStringLiteral("premium ") << QStringLiteral("Free") << false;
        QTest::newRow("unknown") << QStringLiteral("enterprise") << QStringLiteral("Free") << false;
        QTest::newRow("empty") << QString() << QStringLiteral("Free") << false;
    }

    void plansAndRolesAreComparedExactly()
    {
        QFETCH(QString, tier);
        QFETCH(QString, name);
        QFETCH(bool, isPaid);
        const UserProfile user = profile(tier);
        QCOMPARE(user.isFree(), tier == QStringLiteral("free"));
        QCOMPARE(user.isBasic(), tier == QStringLiteral("basic"));
        QCOMPARE(user.isPremium(), tier == QStringLiteral("premium"));
        QCOMPARE(user.isLifetime(), tier == QStringLiteral("lifetime"));
        QCOMPARE(user.hasPaidPlan(), isPaid);
        QCOMPARE(user.tierDisplayName(), name);
        AdminUser other;
        other.subscription_tier = tier;
        QCOMPARE(other.tierDisplayName(), name);
        for (const auto &[role, isAdmin] :
             {std::pair{"admin", true}, {"Admin", false}, {"user", false}, {"", false}}) {
            UserProfile member;
            member.role = other.role = QString::fromLatin1(role);
            QCOMPARE(member.isAdmin(), isAdmin);
            QCOMPARE(other.isAdmin(), isAdmin);
        }
    }

    void whatRemainsMayBeNegative()
    {
        UserProfile user = profile(QStringLiteral("free"));
        user.recordings_count = 5;
        QCOMPARE(user.recordingsRemaining(), -2); // three, whatever the plan
        user.subscription_tier = QStringLiteral("basic");
        QCOMPARE(user.recordingsRemaining(), -2);
        user.recordings_limit = 25;
        QCOMPARE(user.recordingsRemaining(), 20);
        user.recordings_limit = std::numeric_limits<qint64>::max();
        user.recordings_count = -1;
        QCOMPARE(user.recordingsRemaining(), std::numeric_limits<qint64>::max());
        user.recordings_limit = -2;
        user.recordings_count = std::numeric_limits<qint64>::max();
        QCOMPARE(user.recordingsRemaining(), std::numeric_limits<qint64>::min());
    }

    void theEndOfThePaidPeriodIsAnInstant_data()
    {
        QTest::addColumn<std::optional<QString>>("text");
        QTest::addColumn<std::optional<QDateTime>>("date");
        const QDateTime ten(QDate(2026, 1, 31), QTime(10, 0), Qt::UTC);
        const auto row = [](const char *text, std::optional<QDateTime> date) {
            QTest::newRow(text) << std::optional(QString::fromLatin1(text)) << date;
        };
        QTest::newRow("absent") << std::optional<QString>() << std::optional<QDateTime>();
        row("2026-01-31T10:00:00.000Z", ten);
        row("2026-01-31T10:00:00Z", ten);
        row("2026-01-31T10:00:00.25Z", ten.addMSecs(250));
        row("2026-01-31T10:00:00.123456Z", ten.addMSecs(123));
        row("2026-01-31T11:30:00+01:30", ten);
        row("2026-01-31T05:00:00.000-05:00", ten);
        row("2026-01-31", std::nullopt);
        row("2026-01-31T10:00:00", std::nullopt);
        row("2026-01-31 10:00:00Z", std::nullopt);
        row("2026-02-30T10:00:00Z", std::nullopt);
        row("2026-01-31T25:00:00Z", std::nullopt);
        row("2026-01-31T10:00Z", std::nullopt);
        row(" 2026-01-31T10:00:00Z", std::nullopt);
        row("2026-01-31T10:00:00Z\n", std::nullopt);
        row("", std::nullopt);
        row("tomorrow", std::nullopt);
    }

    void theEndOfThePaidPeriodIsAnInstant()
    {
        QFETCH(std::optional<QString>, text);
        QFETCH(std::optional<QDateTime>, date);
        UserProfile user;
        user.subscription_expires_at = text;
        QCOMPARE(user.expiresDate(), date);
    }

    void screensReadAProfileByItsNames()
    {
        UserProfile user = UserProfile::fromJson(json(kProfile));
        const auto read = [&user](const char *name) {
            const QMetaObject &meta = UserProfile::staticMetaObject;
            return meta.property(meta.indexOfProperty(name)).readOnGadget(&user);
        };
        QCOMPARE(read("name"), QVariant(QStringLiteral("Ä")));
        QCOMPARE(read("id").toLongLong(), 7);
        QCOMPARE(read("tierDisplayName"), QVariant(QStringLiteral("Basic")));
        QCOMPARE(read("recordings_limit").toLongLong(), 25);
        QCOMPARE(read("recordingsRemaining").toLongLong(), 23);
        user.recordings_limit.reset();
        QVERIFY(!read("recordings_limit").isValid());
    }

    void hostileTextsAreRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("blank") << QByteArray("  \n");
        QTest::newRow("html") << QByteArray("<html></html>");
        QTest::newRow("cut short") << QByteArray(R"({"a":)");
        QTest::newRow("more after the end") << QByteArray("{} {}");
        QTest::newRow("scalar") << QByteArray("3");
        QTest::newRow("no UTF-8") << QByteArray("{\"a\":\"\xff\xfe\"}");
        QTest::newRow("zero bytes") << QByteArray(100, '\0');
        QTest::newRow("deeply nested arrays") << QByteArray(1'000'000, '[');
        QTest::newRow("deeply nested, closed") << QByteArray(500'000, '[') + QByteArray(500'000, ']');
        QTest::newRow("deeply nested objects") << QByteArray("{\"a\":").repeated(200'000);
        QTest::newRow("a number too large") << QByteArray("[1e999]");
    }

    void hostileTextsAreRefused()
    {
        QFETCH(QByteArray, text);
        QVERIFY_EXCEPTION_THROWN((void)parseJson(text), DecodingFailure);
    }

    void aNumberThatJsonLacksIsNotSent()
    {
        for (const double number :
             {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
              std::numeric_limits<double>::quiet_NaN()}) {
            try {
                (void)serializedBody({{QStringLiteral("duration"), number}});
                QFAIL("it was serialised");
            } catch (const PlatformError &error) {
                QCOMPARE(error.domain(), QStringLiteral("json"));
                QVERIFY(!error.errorDescription().isEmpty());
            }
        }
        QCOMPARE(serializedBody({}), QByteArray("{}"));
        QCOMPARE(serializedBody({{QStringLiteral("a"), 0.5}}), QByteArray(R"({"a":0.5})"));
    }

    void aBuildNumberIsADecimalInteger()
    {
        QCOMPARE(buildNumberFromText(QStringLiteral("41")), 41);
        QCOMPARE(buildNumberFromText(QStringLiteral("1.0.3")), 1);
        QCOMPARE(buildNumberFromText(QStringLiteral(" 41")), 1);
        QCOMPARE(buildNumberFromText(QStringLiteral("0x29")), 1);
        QCOMPARE(buildNumberFromText(QString()), 1);
        QCOMPARE(buildNumberFromText(std::nullopt), 1);
    }
};

QTEST_GUILESS_MAIN(WireRecordsTest)
#include "WireRecordsTest.moc"
