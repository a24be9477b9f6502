#include "screens/paint/SymbolImages.h"

#include "platform/UnifiedLog.h"
#include "screens/paint/SymbolFit.h"

#include <QDir>
#include <QFile>
#include <QLinearGradient>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

namespace talvenor {

namespace {

Q_LOGGING_CATEGORY(symbolLog, TALVENOR_LOG_SUBSYSTEM ".Symbols")

constexpr auto folder = ":/talvenor/symbols/";
constexpr double gridSize = 24;
/// The line width that drawings have on their grid unless they say otherwise.
constexpr double regularStroke = 1.75;
/// Device pixels below which a regular line would fade.
constexpr double thinnestLine = 1;
/// Pictures up to this many pixels wide have their lines moved onto pixels; in larger ones it would not show.
constexpr int largestFitted = 48;
constexpr double dimmedOpacity = 0.35;

/// The factor that line widths get: the weight's, or at small sizes whatever keeps lines from fading, still
/// with some difference between the weights.
double strokeFactor(const SymbolLook &look)
{
    const double pixels = regularStroke * look.box * look.devicePixelRatio / gridSize;
    return std::max(look.strokeWeight, thinnestLine * std::sqrt(look.strokeWeight) / pixels);
}

QByteArray withStrokesScaled(const QByteArray &text, double factor)
{
    static constexpr QByteArrayView attribute = "stroke-width=\"";
    QByteArray result;
    result.reserve(text.size() + 64);
    qsizetype from = 0;
    for (qsizetype at = text.indexOf(attribute); at >= 0; at = text.indexOf(attribute, from)) {
        const qsizetype start = at + attribute.size();
        const qsizetype end = text.indexOf('"', start);
        result += QByteArrayView(text).sliced(from, start - from);
        result +=
            QByteArray::number(QByteArrayView(text).sliced(start, end - start).toDouble() * factor, 'f', 3);
        from = end;
    }
    return result += QByteArrayView(text).sliced(from);
}

QByteArray layerAttribute(int layer)
{
    return "id=\"layer" + QByteArray::number(layer) + '"';
}

QByteArray withOneLayerLit(QByteArray text, int layerCount, int lit)
{
    for (int layer = 1; layer <= layerCount; ++layer) {
        if (layer != lit) {
            const QByteArray attribute = layerAttribute(layer);
            text.replace(attribute, attribute + " opacity=\"" + QByteArray::number(dimmedOpacity) + '"');
        }
    }
    return text;
}

/// What is left of the ink once the white parts are cut out of it.
///
/// Painted over ink of coverage a, white of coverage w gives the opacity a + w - a w and the red value w,
/// colours being premultiplied; their difference a (1 - w) is the ink with the white cut out.
QImage inkOf(const QImage &picture)
{
    QImage ink(picture.size(), QImage::Format_Alpha8);
    for (int y = 0; y < picture.height(); ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        uchar *to = ink.scanLine(y);
        for (int x = 0; x < picture.width(); ++x)
            to[x] = static_cast<uchar>(std::max(0, qAlpha(from[x]) - qRed(from[x])));
    }
    return ink;
}

bool hasGradient(const SymbolLook &look)
{
    return look.endColor.isValid();
}

} // namespace

size_t qHash(const SymbolLook &look, size_t seed) noexcept
{
    const auto rgba = [](const QColor &color) { return color.isValid() ? color.rgba() : 0; };
    return qHashMulti(seed, look.name, look.box, look.devicePixelRatio, look.strokeWeight,
                      rgba(look.startColor), rgba(look.endColor), look.isDiagonal, look.litLayer);
}

SymbolImages::SymbolImages(qsizetype capacity)
    : m_masks(std::max<qsizetype>(1, capacity / 2)), m_images(std::max<qsizetype>(1, capacity))
{
}

SymbolImages &SymbolImages::shared()
{
    static SymbolImages images;
    return images;
}

QStringList SymbolImages::names()
{
    QStringList names =
        QDir(QLatin1String(folder)).entryList({QStringLiteral("*.svg")}, QDir::Files, QDir::Name);
    for (QString &name : names)
        name.chop(4);
    return names;
}

int SymbolImages::boxForFontSize(qreal size)
{
    if (!(size > 0)) // not a number either
        return 0;
    return 2 * static_cast<int>(std::lround(std::min<qreal>(size, largestBox) * 1.25 / 2));
}

const SymbolImages::Drawing &SymbolImages::drawing(const QString &name)
{
    const auto known = m_drawings.constFind(name);
    if (known != m_drawings.cend())
        return *known;
    Drawing drawing;
    QFile file(QLatin1String(folder) + name + QLatin1String(".svg"));
    // A name is no path: one with a slash in it names nothing.
    if (!name.contains(u'/') && file.open(QIODevice::ReadOnly)) {
        drawing.text = file.readAll();
        while (drawing.text.contains(layerAttribute(drawing.layerCount + 1)))
            ++drawing.layerCount;
    } else if (!name.isEmpty()) {
        qCWarning(symbolLog, "There is no symbol named \"%ls\"", qUtf16Printable(name));
    }
    return *m_drawings.insert(name, drawing);
}

QImage SymbolImages::mask(SymbolLook look)
{
    look.startColor = look.endColor = QColor();
    look.isDiagonal = false;
    if (const QImage *kept = m_masks.object(look))
        return *kept;
    const Drawing &source = drawing(look.name);
    QByteArray text = withStrokesScaled(source.text, strokeFactor(look));
    if (look.litLayer > 0)
        text = withOneLayerLit(text, source.layerCount, look.litLayer);
    const int side = static_cast<int>(std::ceil(look.box * look.devicePixelRatio));
    if (side <= largestFitted)
        text = fittedToPixels(text, side / gridSize);
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QSvgRenderer renderer(text);
    QPainter painter(&picture);
    renderer.render(&painter, QRectF(0, 0, side, side));
    painter.end();
    QImage ink = inkOf(picture);
    m_masks.insert(look, new QImage(ink), ink.sizeInBytes());
    return ink;
}

QImage SymbolImages::image(const SymbolLook &asked)
{
    SymbolLook look = asked;
    look.box = std::min(look.box, largestBox);
    look.devicePixelRatio = std::clamp<qreal>(look.devicePixelRatio, 0.5, 8);
    if (look.box <= 0 || drawing(look.name).text.isEmpty())
        return {};
    if (const QImage *kept = m_images.object(look))
        return *kept;
    const QImage ink = mask(look);
    QImage picture(ink.size(), QImage::Format_ARGB32_Premultiplied);
    const QRectF area = picture.rect();
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    if (hasGradient(look)) {
        QLinearGradient gradient(area.topLeft(), look.isDiagonal ? area.bottomRight() : area.topRight());
        gradient.setColorAt(0, look.startColor);
        gradient.setColorAt(1, look.endColor);
        painter.fillRect(area, gradient);
    } else {
        painter.fillRect(area, look.startColor);
    }
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.drawImage(0, 0, ink);
    painter.end();
    picture.setDevicePixelRatio(look.devicePixelRatio);
    m_images.insert(look, new QImage(picture), picture.sizeInBytes());
    return picture;
}

int SymbolImages::layerCount(const QString &name)
{
    return drawing(name).layerCount;
}

qsizetype SymbolImages::cachedBytes() const
{
    return m_masks.totalCost() + m_images.totalCost();
}

} // namespace talvenor
