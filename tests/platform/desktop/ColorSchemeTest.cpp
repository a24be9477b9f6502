#include "platform/linux/desktop/PortalColorScheme.h"

#include "FakeSettingsPortal.h"

#include "support/Await.h"

#include <QTest>

namespace talvenor {

using test::FakeSettingsPortal;
using test::waitUntil;

/// The colour scheme as a portal tells it.
class ColorSchemeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePreferenceIsRead_data()
    {
        QTest::addColumn<uint>("value");
        QTest::addColumn<std::optional<ColorScheme>>("expected");
        QTest::newRow("dark") << 1U << std::optional(ColorScheme::dark);
        QTest::newRow("light") << 2U << std::optional(ColorScheme::light);
    }

    void thePreferenceIsRead()
    {
        QFETCH(uint, value);
        QFETCH(std::optional<ColorScheme>, expected);
        FakeSettingsPortal portal;
        portal.value = QVariant(value);
        PortalColorScheme scheme;
        int changes = 0;
        scheme.setListener([&changes] { ++changes; });
        QVERIFY(!scheme.preferred());
        QVERIFY(waitUntil([&] { return changes > 0; }));
        QCOMPARE(scheme.preferred(), expected);
        QCOMPARE(changes, 1);
    }

    void whatIsNoPreferenceIsNone_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("none") << QVariant(0U);
        QTest::newRow("unknown") << QVariant(7U);
        QTest::newRow("a text") << QVariant(QStringLiteral("dark"));
        QTest::newRow("signed") << QVariant(1);
        QTest::newRow("the key is unknown") << QVariant();
    }

    void whatIsNoPreferenceIsNone()
    {
        QFETCH(QVariant, value);
        FakeSettingsPortal portal;
        portal.value = value;
        PortalColorScheme scheme;
        bool hasChanged = false;
        scheme.setListener([&hasChanged] { hasChanged = true; });
        QVERIFY(waitUntil([&] { return portal.reads() > 0; }));
        // A notice comes after the answer: once it is here, so was the answer.
        portal.change(FakeSettingsPortal::appearance(), FakeSettingsPortal::colorScheme(), QVariant(2U));
        QVERIFY(waitUntil([&] { return hasChanged; }));
        QCOMPARE(scheme.preferred(), std::optional(ColorScheme::light));
        hasChanged = false;
        portal.change(FakeSettingsPortal::appearance(), FakeSettingsPortal::colorScheme(), QVariant(0U));
        QVERIFY(waitUntil([&] { return hasChanged; }));
        QVERIFY(!scheme.preferred());
    }

    void changesAreFollowed()
    {
        FakeSettingsPortal portal;
        portal.value = QVariant(2U);
        PortalColorScheme scheme;
        int changes = 0;
        scheme.setListener([&changes] { ++changes; });
        QVERIFY(waitUntil([&] { return changes == 1; }));
        // Neither another setting nor the same value again is a change.
        portal.change(FakeSettingsPortal::appearance(), QStringLiteral("accent-color"), QVariant(1U));
        portal.change(QStringLiteral("org.example"), FakeSettingsPortal::colorScheme(), QVariant(1U));
        portal.change(FakeSettingsPortal::appearance(), FakeSettingsPortal::colorScheme(), QVariant(2U));
        portal.change(FakeSettingsPortal::appearance(), FakeSettingsPortal::colorScheme(), QVariant(1U));
        QVERIFY(waitUntil([&] { return changes > 1; }));
        QCOMPARE(changes, 2);
        QCOMPARE(scheme.preferred(), std::optional(ColorScheme::dark));
    }

    void aPortalThatComesLaterIsAskedThen()
    {
        PortalColorScheme scheme;
        bool hasChanged = false;
        scheme.setListener([&hasChanged] { hasChanged = true; });
        QTest::qWait(50); // the question that nobody answers is over, or is not: both must work
        QVERIFY(!scheme.preferred());
        FakeSettingsPortal portal;
        portal.value = QVariant(1U);
        QVERIFY(waitUntil([&] { return hasChanged; }));
        QCOMPARE(scheme.preferred(), std::optional(ColorScheme::dark));
    }

    void aPortalThatGoesLeavesWhatItSaid()
    {
        PortalColorScheme scheme;
        bool hasChanged = false;
        scheme.setListener([&hasChanged] { hasChanged = true; });
        {
            FakeSettingsPortal portal;
            portal.value = QVariant(1U);
            QVERIFY(waitUntil([&] { return hasChanged; }));
        }
        hasChanged = false;
        FakeSettingsPortal another;
        another.value = QVariant(2U);
        QCOMPARE(scheme.preferred(), std::optional(ColorScheme::dark));
        QVERIFY(waitUntil([&] { return hasChanged; }));
        QCOMPARE(scheme.preferred(), std::optional(ColorScheme::light));
    }
};

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::ColorSchemeTest)
#include "ColorSchemeTest.moc"
