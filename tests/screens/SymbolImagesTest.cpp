#include "screens/paint/SymbolImages.h"
#include "screens/paint/Symbol.h"
#include "screens/paint/SymbolFit.h"
#include "support/LogCapture.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

using namespace talvenor;

namespace {

constexpr int fontSizes[] = {8, 12, 16, 24, 96};

SymbolLook lookOf(const QString &name, int fontSize, Symbol::Weight weight = Symbol::Regular)
{
    SymbolLook look;
    look.name = name;
    look.box = SymbolImages::boxForFontSize(fontSize);
    look.strokeWeight = Symbol::strokeWeight(weight);
    look.startColor = Qt::black;
    return look;
}

QImage imageOf(const SymbolLook &look)
{
    return SymbolImages::shared().image(look);
}

/// The sum of all opacities, in whole pixels.
double inkOf(const QImage &image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    return sum;
}

/// The smallest rectangle around every pixel that the eye can make out.
QRect boundsOf(const QImage &image)
{
    QRect bounds;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 24)
                bounds |= QRect(x, y, 1, 1);
    return bounds;
}

QPointF centreOfMass(const QImage &image)
{
    double sum = 0;
    QPointF moment;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double alpha = qAlpha(image.pixel(x, y));
            sum += alpha;
            moment += alpha * QPointF(x + 0.5, y + 0.5);
        }
    }
    return moment / sum;
}

} // namespace

/// The drawings, and the pictures made of them.
class SymbolImagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNameThatScreensUseHasADrawing()
    {
        const QStringList drawings = SymbolImages::names();
        // Names stand as "name:" of a Symbol, or as "icon:" or "symbol:" of a control that shows one; and
        // what looks like a symbol's name is meant as one wherever it stands, in a function for instance.
        static const QRegularExpression property(
            QStringLiteral("\\b(?:icon|symbol|symbolName|iconName)\\s*:([^\\n]*)"));
        static const QRegularExpression ownName(
            QStringLiteral("\\bSymbol\\s*\\{[^{}]*?\\bname\\s*:([^\\n]*)"));
        static const QRegularExpression anywhere(QStringLiteral(
            "(\"(?:(?:arrow|chevron|checkmark|person|text|square|waveform|xmark|record|pencil|speaker)"
            "\\.[a-z0-9.]+|[a-z0-9.]+\\.fill)\")"));
        static const QRegularExpression text(QStringLiteral("\"([a-z][a-z0-9]*(?:\\.[a-z0-9]+)*)\""));
        QDirIterator files(QStringLiteral(TALVENOR_SCREENS_SOURCES),
                           {QStringLiteral("*.qml"), QStringLiteral("*.cpp"), QStringLiteral("*.h")},
                           QDir::Files, QDirIterator::Subdirectories);
        int count = 0;
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString source = QString::fromUtf8(file.readAll());
            const bool isQml = file.fileName().endsWith(QStringLiteral(".qml"));
            count += isQml ? 1 : 0;
            const QList<QRegularExpression> patterns =
                isQml ? QList{property, ownName, anywhere} : QList{anywhere};
            for (const QRegularExpression &pattern : patterns) {
                for (auto matches = pattern.globalMatch(source); matches.hasNext();) {
                    const QString value = matches.next().captured(1);
                    for (auto names = text.globalMatch(value); names.hasNext();) {
                        const QString name = names.next().captured(1);
                        QVERIFY2(drawings.contains(name),
                                 qPrintable(file.fileName() + QStringLiteral(": ") + name));
                    }
                }
            }
        }
        QVERIFY(count > 20);
    }

    void everyDrawingShowsAtEverySizeWithinItsBox_data() { eachDrawing(); }
    void everyDrawingShowsAtEverySizeWithinItsBox()
    {
        QFETCH(const QString, name);
        for (const int size : fontSizes) {
            const SymbolLook look = lookOf(name, size);
            const QImage image = imageOf(look);
            QCOMPARE(image.size(), QSize(look.box, look.box));
            QVERIFY2(inkOf(image) > look.box * look.box * 0.03, qPrintable(QString::number(size)));
        }
        // Nothing is cut off at the box, at any weight.
        for (const auto weight : {Symbol::Light, Symbol::Regular, Symbol::Bold}) {
            const QImage image = imageOf(lookOf(name, 96, weight));
            const QRect inside = image.rect().adjusted(1, 1, -1, -1);
            QVERIFY2(inside.contains(boundsOf(image)), qPrintable(QString::number(weight)));
        }
    }

    void everyDrawingStandsInTheMiddleOfItsBox_data() { eachDrawing(); }
    void everyDrawingStandsInTheMiddleOfItsBox()
    {
        QFETCH(const QString, name);
        const QImage image = imageOf(lookOf(name, 96));
        const double box = image.width();
        const QRectF bounds = boundsOf(image);
        const QPointF off = bounds.center() - QPointF(box / 2, box / 2);
        QVERIFY2(std::abs(off.x()) <= box * 0.035 && std::abs(off.y()) <= box * 0.04,
                 qPrintable(QStringLiteral("%1 %2").arg(off.x() / box).arg(off.y() / box)));
        // The eye weighs what it sees: the ink must not lean far to one side either.
        const QPointF lean = centreOfMass(image) - QPointF(box / 2, box / 2);
        QVERIFY2(std::hypot(lean.x(), lean.y()) <= box * 0.11,
                 qPrintable(QStringLiteral("%1 %2").arg(lean.x() / box).arg(lean.y() / box)));
        QVERIFY(std::max(bounds.width(), bounds.height()) >= box * 0.55);
    }

    void outlinesGrowHeavierWithTheWeight_data() { eachDrawing(); }
    void outlinesGrowHeavierWithTheWeight()
    {
        QFETCH(const QString, name);
        if (name.endsWith(QStringLiteral(".fill")))
            return; // filled forms keep their area; the lines cut out of them grow
        const auto ink = [&](int size, Symbol::Weight weight) {
            return inkOf(imageOf(lookOf(name, size, weight)));
        };
        for (const int size : fontSizes) {
            QVERIFY2(ink(size, Symbol::Bold) > ink(size, Symbol::Light), qPrintable(QString::number(size)));
            if (size < 12)
                continue; // too few pixels for five weights
            double before = 0;
            for (const auto weight :
                 {Symbol::Light, Symbol::Regular, Symbol::Medium, Symbol::Semibold, Symbol::Bold}) {
                const double now = ink(size, weight);
                QVERIFY2(now > before, qPrintable(QStringLiteral("%1 at %2").arg(weight).arg(size)));
                before = now;
            }
        }
    }

    void filledFormsAreHeavierThanTheirOutlines()
    {
        int pairs = 0;
        for (const QString &name : SymbolImages::names()) {
            const QString filled = name + QStringLiteral(".fill");
            if (!SymbolImages::names().contains(filled))
                continue;
            ++pairs;
            for (const int size : fontSizes)
                QVERIFY2(inkOf(imageOf(lookOf(filled, size))) > inkOf(imageOf(lookOf(name, size))),
                         qPrintable(name));
        }
        QVERIFY(pairs >= 4);
    }

    void theTintIsExactlyTheColourAskedFor()
    {
        for (const QColor color : {QColor(107, 92, 232), QColor(255, 59, 48), QColor(Qt::white)}) {
            SymbolLook look = lookOf(QStringLiteral("stop.fill"), 24);
            look.startColor = color;
            const QImage image = imageOf(look);
            QCOMPARE(image.pixelColor(image.rect().center()).rgba(), color.rgba());
        }
        SymbolLook look = lookOf(QStringLiteral("stop.fill"), 24);
        look.startColor = QColor(0, 0, 0, 128);
        QCOMPARE(qAlpha(imageOf(look).pixel(15, 15)), 128);
        // Where there is no ink there is no colour.
        QCOMPARE(imageOf(look).pixel(0, 0), 0u);
    }

    void aGradientRunsFromItsStartToItsEnd()
    {
        SymbolLook look = lookOf(QStringLiteral("stop.fill"), 96);
        look.startColor = QColor(255, 0, 0);
        look.endColor = QColor(0, 0, 255);
        const int last = look.box - 1;
        const auto blueAt = [&](const QImage &image, double x, double y) {
            const QColor color = image.pixelColor(qRound(x * last), qRound(y * last));
            return color.alpha() == 255 ? color.blueF() : -1;
        };
        const QImage across = imageOf(look);
        QVERIFY(std::abs(blueAt(across, 0.25, 0.5) - 0.25) < 0.02);
        QVERIFY(std::abs(blueAt(across, 0.75, 0.5) - 0.75) < 0.02);
        QCOMPARE(blueAt(across, 0.5, 0.3), blueAt(across, 0.5, 0.7));
        look.isDiagonal = true;
        const QImage diagonal = imageOf(look);
        QVERIFY(std::abs(blueAt(diagonal, 0.25, 0.25) - 0.25) < 0.02);
        QVERIFY(std::abs(blueAt(diagonal, 0.75, 0.75) - 0.75) < 0.02);
        QVERIFY(blueAt(diagonal, 0.5, 0.7) > blueAt(diagonal, 0.5, 0.3));
    }

    void whiteIsCutOutOfTheInk()
    {
        const QImage image = imageOf(lookOf(QStringLiteral("xmark.circle.fill"), 96));
        QCOMPARE(qAlpha(image.pixel(60, 60)), 0);
        QCOMPARE(qAlpha(image.pixel(60, 20)), 255);
    }

    void levelLinesFillWholePixelsAtSmallSizes()
    {
        for (int size = 9; size <= 24; ++size) {
            const QImage image = imageOf(lookOf(QStringLiteral("text.alignleft"), size));
            QList<int> rows;
            for (int y = 0; y < image.height(); ++y) {
                const auto opacity = [&](int row) { return qAlpha(image.pixel(image.width() / 3, row)); };
                if (opacity(y) > 215 && (y == 0 || opacity(y - 1) <= 215))
                    rows.append(y);
            }
            QVERIFY2(rows.size() == 4, qPrintable(QString::number(size)));
            // What is equally far apart in the drawing stays so.
            QCOMPARE(rows[2] - rows[1], rows[1] - rows[0]);
            QCOMPARE(rows[3] - rows[2], rows[1] - rows[0]);
        }
    }

    void movingLinesOntoPixelsLeavesASymbolWhereItWas_data() { eachDrawing(); }
    void movingLinesOntoPixelsLeavesASymbolWhereItWas()
    {
        QFETCH(const QString, name);
        const double large = SymbolImages::boxForFontSize(96);
        const QPointF expected = centreOfMass(imageOf(lookOf(name, 96))) / large;
        for (const int size : {9, 12, 14, 16}) {
            const SymbolLook look = lookOf(name, size);
            const QPointF off = centreOfMass(imageOf(look)) - expected * look.box;
            QVERIFY2(std::hypot(off.x(), off.y()) < 1,
                     qPrintable(QStringLiteral("%1: %2 %3").arg(size).arg(off.x()).arg(off.y())));
        }
    }

    void whatIsNoDrawingIsLeftAsItIs()
    {
        for (const QByteArray text : {"", "<svg", "no drawing at all", "<svg><g></svg>"})
            QCOMPARE(fittedToPixels(text, 0.5), text);
        const QByteArray odd = "<svg xmlns=\"http://www.w3.org/2000/svg\"><path d=\"M1 2q3 4 5 6\"/></svg>";
        QVERIFY(fittedToPixels(odd, 0.5).contains("M1 2q3 4 5 6"));
    }

    void aSharperScreenGetsMorePixelsInTheSameBox()
    {
        for (const qreal ratio : {1.0, 1.25, 1.5, 2.0, 3.0}) {
            SymbolLook look = lookOf(QStringLiteral("gearshape"), 12);
            look.devicePixelRatio = ratio;
            const QImage image = imageOf(look);
            QCOMPARE(image.width(), static_cast<int>(std::ceil(look.box * ratio)));
            QCOMPARE(image.devicePixelRatio(), ratio);
        }
    }

    void anUnknownNameDrawsNothingAndIsLoggedOnce()
    {
        test::LogCapture log;
        const auto unknown = [](const char *name) { return lookOf(QString::fromLatin1(name), 12); };
        QVERIFY(imageOf(unknown("no.such.symbol")).isNull());
        QVERIFY(imageOf(unknown("no.such.symbol")).isNull());
        QVERIFY(imageOf(unknown("../AppIcon")).isNull());
        QVERIFY(imageOf(unknown("")).isNull());
        QCOMPARE(SymbolImages::shared().layerCount(QStringLiteral("no.such.symbol")), 0);
        QCOMPARE(log.texts(QStringLiteral("com.talvenor.app.Symbols")),
                 QStringList({QStringLiteral("There is no symbol named \"no.such.symbol\""),
                              QStringLiteral("There is no symbol named \"../AppIcon\"")}));
        QVERIFY(log.contains(QStringLiteral("com.talvenor.app.Symbols"), QStringLiteral("warning"),
                             QStringLiteral("There is no symbol named \"no.such.symbol\"")));
    }

    void sizesThatAreNoSizesDrawNothing()
    {
        for (const qreal size : {0.0, -3.0, std::nan("")})
            QCOMPARE(SymbolImages::boxForFontSize(size), 0);
        QVERIFY(imageOf(lookOf(QStringLiteral("plus"), 0)).isNull());
        SymbolLook huge = lookOf(QStringLiteral("plus"), 12);
        huge.box = 1 << 30;
        QCOMPARE(imageOf(huge).width(), SymbolImages::largestBox);
        QVERIFY(SymbolImages::boxForFontSize(1e30) <= 2 * SymbolImages::largestBox);
    }

    void boxesAreEvenAndAQuarterLargerThanTheFont()
    {
        for (int size = 8; size <= 60; ++size) {
            const int box = SymbolImages::boxForFontSize(size);
            QCOMPARE(box % 2, 0);
            QVERIFY(std::abs(box - size * 1.25) <= 1);
        }
    }

    void whatIsKeptStaysWithinItsBound()
    {
        constexpr qsizetype capacity = 64 * 1024;
        SymbolImages images(capacity);
        const QStringList names = SymbolImages::names();
        for (int at = 0; at < 200; ++at) {
            SymbolLook look = lookOf(names[at % names.size()], 24);
            look.startColor = QColor::fromRgb(static_cast<QRgb>(at * 977));
            QVERIFY(!images.image(look).isNull());
            QVERIFY(images.cachedBytes() <= capacity + capacity / 2);
        }
        // What has just been made is made once: the same pixels are handed out again.
        const SymbolLook look = lookOf(names.first(), 24);
        QCOMPARE(images.image(look).cacheKey(), images.image(look).cacheKey());
    }

    void oneLayerIsLitWhileTheOthersAreDimmed()
    {
        const QString name = QStringLiteral("waveform");
        QCOMPARE(SymbolImages::shared().layerCount(name), 5);
        QCOMPARE(SymbolImages::shared().layerCount(QStringLiteral("gearshape")), 0);
        SymbolLook look = lookOf(name, 96);
        for (int lit = 1; lit <= 5; ++lit) {
            look.litLayer = lit;
            const QImage image = imageOf(look);
            // Along the middle line every bar is crossed once, from left to right.
            QList<int> bars;
            for (int x = 0, peak = 0; x < image.width(); ++x) {
                const int alpha = qAlpha(image.pixel(x, image.height() / 2));
                if (alpha < 20 && peak > 0)
                    bars.append(std::exchange(peak, 0));
                peak = std::max(peak, alpha < 20 ? 0 : alpha);
            }
            QCOMPARE(bars.size(), 5);
            for (int bar = 0; bar < 5; ++bar)
                QVERIFY(bar + 1 == lit ? bars[bar] == 255 : bars[bar] > 60 && bars[bar] < 120);
        }
    }

private:
    static void eachDrawing()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name : SymbolImages::names())
            QTest::newRow(qPrintable(name)) << name;
    }
};

QTEST_MAIN(SymbolImagesTest)
#include "SymbolImagesTest.moc"
