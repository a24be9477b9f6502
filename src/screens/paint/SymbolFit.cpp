#include "screens/paint/SymbolFit.h"

#include <QList>
#include <QStringView>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <cmath>
#include <optional>

namespace talvenor {

namespace {

constexpr QLatin1String strokeWidth("stroke-width");
constexpr double middle = 12;
/// Shorter strokes, on the grid, are details that move with what is around them.
constexpr double shortestLine = 2;
constexpr double smallestRadius = 2.5;

/// A line's place across its direction, on the grid.
struct Stem
{
    double place = 0;
    double width = 0; ///< 0 for the edge of a filled form
};

/// Where lines across one direction stand, and where they are moved.
class Axis
{
public:
    void add(double place, double width) { m_stems.append({place, width}); }

    /// Chooses the places on a picture of that scale. Call it once, after all lines have been added.
    void fit(double scale)
    {
        std::sort(m_stems.begin(), m_stems.end(),
                  [](const Stem &a, const Stem &b) { return a.place < b.place; });
        const auto isSame = [](const Stem &a, const Stem &b) { return b.place - a.place < 0.05; };
        m_stems.erase(std::unique(m_stems.begin(), m_stems.end(), isSame), m_stems.end());
        QList<Stem> before;
        QList<Stem> after;
        double centre = middle * scale;
        bool hasMiddle = false;
        for (const Stem &stem : std::as_const(m_stems)) {
            if (std::abs(stem.place - middle) < 0.2) {
                const double phase = phaseOf(stem, scale);
                centre = std::ceil(stem.place * scale - phase - 0.5) + phase;
                m_moves.append({stem.place, centre / scale});
                hasMiddle = true;
            } else if (stem.place < middle) {
                before.prepend({middle - stem.place, stem.width});
            } else {
                after.append({stem.place - middle, stem.width});
            }
        }
        fitSide(before, scale, centre, hasMiddle, -1);
        fitSide(after, scale, centre, hasMiddle, 1);
        std::sort(m_moves.begin(), m_moves.end(),
                  [](const Move &a, const Move &b) { return a.from < b.from; });
    }

    [[nodiscard]] double moved(double place) const
    {
        if (m_moves.isEmpty())
            return place;
        const auto next = std::find_if(m_moves.begin(), m_moves.end(),
                                       [&](const Move &move) { return move.from >= place; });
        if (next == m_moves.begin())
            return place + next->to - next->from;
        const Move &last = *std::prev(next);
        if (next == m_moves.end())
            return place + last.to - last.from;
        const double share = (place - last.from) / (next->from - last.from);
        return last.to + share * (next->to - last.to);
    }

private:
    struct Move
    {
        double from;
        double to;
    };

    /// Half a pixel for lines that fill an odd number of pixels: their middle lies within one. Otherwise
    /// none.
    static double phaseOf(const Stem &stem, double scale)
    {
        return std::lround(stem.width * scale) % 2 == 0 ? 0 : 0.5;
    }

    /// Lines on one side of the middle, by their growing distances from it, in the direction of that sign.
    void fitSide(const QList<Stem> &stems, double scale, double centre, bool hasMiddle, int sign)
    {
        double lastDistance = 0;
        double lastFitted = 0;
        double lastGap = 0;
        double lastFittedGap = 0;
        bool isFirst = true;
        for (const Stem &stem : stems) {
            const double distance = stem.place * scale;
            const double whole = phaseOf(stem, scale) - (centre - std::floor(centre));
            const double remainder = whole - std::floor(whole);
            double fitted = std::floor(distance - remainder + 0.5) + remainder;
            double gap = distance - lastDistance;
            if (isFirst && !hasMiddle) {
                gap = 2 * distance; // to the line's mirror image
            } else if (lastGap > 0 && std::abs(gap - lastGap) < 0.08 * gap) {
                fitted = lastFitted + lastFittedGap;
            } else if (gap < 0.7) {
                fitted = lastFitted + gap;
            } else if (fitted <= lastFitted) {
                fitted = lastFitted + 1;
            }
            const double room = sign < 0 ? centre : 2 * middle * scale - centre;
            if (fitted + stem.width * scale / 2 > room + 0.2 && fitted - 1 > lastFitted)
                fitted -= 1;
            lastFittedGap = isFirst && !hasMiddle ? 2 * fitted : fitted - lastFitted;
            lastGap = gap;
            lastDistance = distance;
            lastFitted = fitted;
            isFirst = false;
            m_moves.append({middle + sign * stem.place, (centre + sign * fitted) / scale});
        }
    }

    QList<Stem> m_stems;
    QList<Move> m_moves; ///< by their starts
};

/// One command of a path with its numbers; H and V have been given both coordinates as L.
struct Command
{
    char16_t letter = u'M';
    QList<double> numbers;

    [[nodiscard]] bool isDrawn() const { return letter != u'Z'; }
    [[nodiscard]] double endX() const { return numbers[numbers.size() - 2]; }
    [[nodiscard]] double endY() const { return numbers[numbers.size() - 1]; }
};

qsizetype numberCount(char16_t letter)
{
    switch (letter) {
    case u'H':
    case u'V':
        return 1;
    case u'M':
    case u'L':
        return 2;
    case u'C':
        return 6;
    case u'A':
        return 7;
    default:
        return 0;
    }
}

/// Nothing for a path that is not as described.
std::optional<QList<Command>> parsedPath(QStringView text)
{
    QList<Command> commands;
    double x = 0;
    double y = 0;
    qsizetype at = 0;
    char16_t letter = 0;
    const auto skipSpace = [&] {
        while (at < text.size() && (text[at] == u' ' || text[at] == u','))
            ++at;
    };
    for (skipSpace(); at < text.size(); skipSpace()) {
        if (text[at].isLetter())
            letter = text[at++].unicode();
        else if (letter == u'Z')
            return std::nullopt;
        QList<double> numbers;
        for (qsizetype count = numberCount(letter); count > 0; --count) {
            skipSpace();
            const qsizetype start = at;
            while (at < text.size() &&
                   (text[at].isDigit() || text[at] == u'.' || (text[at] == u'-' && at == start)))
                ++at;
            bool isNumber = false;
            numbers.append(text.sliced(start, at - start).toDouble(&isNumber));
            if (!isNumber)
                return std::nullopt;
        }
        if (letter == u'H')
            numbers.append(y);
        else if (letter == u'V')
            numbers.prepend(x);
        else if (numbers.isEmpty() && letter != u'Z')
            return std::nullopt;
        commands.append({letter == u'H' || letter == u'V' ? u'L' : letter, numbers});
        if (commands.last().isDrawn()) {
            x = commands.last().endX();
            y = commands.last().endY();
        }
    }
    return commands;
}

/// The drawing's two axes, gathered from its elements.
struct Grid
{
    Axis x;
    Axis y;
};

double number(const QXmlStreamAttributes &attributes, QLatin1String name)
{
    return attributes.value(name).toDouble();
}

void addPath(Grid &grid, const QList<Command> &commands, double width)
{
    double x = 0;
    double y = 0;
    for (const Command &command : commands) {
        if (!command.isDrawn())
            continue;
        if (command.letter == u'L') {
            if (command.endX() == x && std::abs(command.endY() - y) >= shortestLine)
                grid.x.add(x, width);
            if (command.endY() == y && std::abs(command.endX() - x) >= shortestLine)
                grid.y.add(y, width);
        }
        x = command.endX();
        y = command.endY();
    }
}

QString movedPath(const Grid &grid, QList<Command> commands)
{
    QString text;
    for (Command &command : commands) {
        text += QChar(command.letter);
        // An arc ends in a point; its first five numbers are radii, angle and flags.
        for (qsizetype at = command.letter == u'A' ? 5 : 0; at + 1 < command.numbers.size(); at += 2) {
            command.numbers[at] = grid.x.moved(command.numbers[at]);
            command.numbers[at + 1] = grid.y.moved(command.numbers[at + 1]);
        }
        for (const double value : std::as_const(command.numbers))
            text += QString::number(value, 'g', 7) + u' ';
    }
    return text;
}

struct Span
{
    double start = 0;
    double length = 0;
};

Span movedSpan(const Axis &axis, double start, double length)
{
    const double moved = axis.moved(start);
    return {moved, axis.moved(start + length) - moved};
}

/// What elements inherit from the group around them.
struct Pen
{
    double width = 1;
    bool isDrawn = false;

    [[nodiscard]] Pen with(const QXmlStreamAttributes &attributes) const
    {
        Pen pen = *this;
        if (attributes.hasAttribute(strokeWidth))
            pen.width = number(attributes, strokeWidth);
        if (attributes.hasAttribute(QLatin1String("stroke")))
            pen.isDrawn = attributes.value(QLatin1String("stroke")) != QLatin1String("none");
        return pen;
    }
};

Grid gridOf(const QByteArray &drawing)
{
    Grid grid;
    Pen groupPen;
    for (QXmlStreamReader reader(drawing); !reader.atEnd();) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        const Pen pen = groupPen.with(attributes);
        const double width = pen.isDrawn ? pen.width : 0;
        if (reader.name() == u"g") {
            groupPen = pen;
        } else if (reader.name() == u"path") {
            if (const auto commands = parsedPath(attributes.value(QLatin1String("d"))))
                addPath(grid, *commands, width);
        } else if (reader.name() == u"rect") {
            const double x = number(attributes, QLatin1String("x"));
            const double y = number(attributes, QLatin1String("y"));
            for (const double place : {x, x + number(attributes, QLatin1String("width"))})
                grid.x.add(place, width);
            for (const double place : {y, y + number(attributes, QLatin1String("height"))})
                grid.y.add(place, width);
        } else if (reader.name() == u"circle") {
            const double radius = number(attributes, QLatin1String("r"));
            for (const double side : {-radius, radius}) {
                if (radius >= smallestRadius) {
                    grid.x.add(number(attributes, QLatin1String("cx")) + side, width);
                    grid.y.add(number(attributes, QLatin1String("cy")) + side, width);
                }
            }
        }
    }
    return grid;
}

void set(QXmlStreamAttributes &attributes, QLatin1String name, const QString &value)
{
    attributes.removeIf([&](const QXmlStreamAttribute &attribute) { return attribute.name() == name; });
    attributes.append(name, value);
}

void set(QXmlStreamAttributes &attributes, QLatin1String name, double value)
{
    set(attributes, name, QString::number(value, 'f', 4));
}

/// A width halfway to whole pixels: less of the line smears onto its neighbours, and weights still differ.
double fittedWidth(double width, double scale)
{
    const double pixels = width * scale;
    return (pixels + std::max(1.0, std::round(pixels))) / (2 * scale);
}

/// The element's attributes with its places moved. A circle becomes an ellipse, whose name is returned.
QString moveElement(const Grid &grid, const QString &name, QXmlStreamAttributes &attributes)
{
    if (name == u"path") {
        if (const auto commands = parsedPath(attributes.value(QLatin1String("d"))))
            set(attributes, QLatin1String("d"), movedPath(grid, *commands));
    } else if (name == u"rect") {
        const Span across = movedSpan(grid.x, number(attributes, QLatin1String("x")),
                                      number(attributes, QLatin1String("width")));
        const Span down = movedSpan(grid.y, number(attributes, QLatin1String("y")),
                                    number(attributes, QLatin1String("height")));
        set(attributes, QLatin1String("x"), across.start);
        set(attributes, QLatin1String("width"), across.length);
        set(attributes, QLatin1String("y"), down.start);
        set(attributes, QLatin1String("height"), down.length);
    } else if (name == u"circle") {
        const double radius = number(attributes, QLatin1String("r"));
        const Span across = movedSpan(grid.x, number(attributes, QLatin1String("cx")) - radius, 2 * radius);
        const Span down = movedSpan(grid.y, number(attributes, QLatin1String("cy")) - radius, 2 * radius);
        set(attributes, QLatin1String("cx"), across.start + across.length / 2);
        set(attributes, QLatin1String("cy"), down.start + down.length / 2);
        set(attributes, QLatin1String("rx"), across.length / 2);
        set(attributes, QLatin1String("ry"), down.length / 2);
        return QStringLiteral("ellipse");
    }
    return name;
}

} // namespace

QByteArray fittedToPixels(const QByteArray &drawing, double pixelsPerUnit)
{
    Grid grid = gridOf(drawing);
    grid.x.fit(pixelsPerUnit);
    grid.y.fit(pixelsPerUnit);
    QByteArray result;
    QXmlStreamReader reader(drawing);
    QXmlStreamWriter writer(&result);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            QXmlStreamAttributes attributes = reader.attributes();
            if (attributes.hasAttribute(strokeWidth))
                set(attributes, strokeWidth, fittedWidth(number(attributes, strokeWidth), pixelsPerUnit));
            writer.writeStartElement(moveElement(grid, reader.name().toString(), attributes));
            if (reader.name() == u"svg")
                writer.writeDefaultNamespace(reader.namespaceUri().toString());
            writer.writeAttributes(attributes);
        } else if (reader.isEndElement()) {
            writer.writeEndElement();
        }
    }
    return reader.hasError() ? drawing : result;
}

} // namespace talvenor
