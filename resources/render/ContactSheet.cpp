#include "ContactSheet.h"

#include "screens/paint/Symbol.h"
#include "screens/paint/SymbolImages.h"

#include <QFont>
#include <QPainter>

#include <array>

namespace talvenor::render {

namespace {

constexpr std::array fontSizes = {9, 12, 14, 16, 24, 48};
constexpr int columns = 4;
constexpr int cellHeight = 70;
constexpr int nameWidth = 150;
constexpr int cellWidth = 520;

class Sheet
{
public:
    Sheet(int rows, bool isDark)
        : m_picture(columns * cellWidth, rows * cellHeight, QImage::Format_RGB32), m_isDark(isDark)
    {
        m_picture.fill(isDark ? QColor(0x1e, 0x1e, 0x20) : QColor(0xf5, 0xf5, 0xf7));
    }

    QImage take() { return std::move(m_picture); }

    /// One drawing: at each size as an ordinary screen shows it, the smaller ones also magnified twice as a
    /// screen of twice the resolution does.
    void addSymbol(int cell, const QString &name)
    {
        double x = left(cell) + write(cell, name);
        for (const int size : fontSizes)
            x += place(cell, x, {name, size, 1, 1, ink(), {}, false}) + 10;
        for (const int size : {9, 12, 16})
            x += place(cell, x, {name, size, 2, 1, ink(), {}, false}) + 10;
    }

    void addWeights(int cell, const QString &name)
    {
        double x = left(cell) + write(cell, name);
        for (const auto weight :
             {Symbol::Light, Symbol::Regular, Symbol::Medium, Symbol::Semibold, Symbol::Bold}) {
            for (const int size : {12, 24})
                x += place(cell, x, {name, size, 1, Symbol::strokeWeight(weight), ink(), {}, false}) + 6;
        }
    }

    void addColors(int cell, const QString &name, int layers)
    {
        const QColor purple(107, 92, 232);
        const QColor blue(10, 133, 227);
        double x = left(cell) + write(cell, name);
        x += place(cell, x, {name, 48, 1, 1, purple, blue, true}) + 10;
        x += place(cell, x, {name, 48, 1, 1, purple, blue, false}) + 10;
        for (int layer = 1; layer <= layers; ++layer)
            x += place(cell, x, {name, 20, 1, 1, QColor(255, 59, 48), {}, false, layer}) + 6;
    }

private:
    [[nodiscard]] QColor ink() const { return m_isDark ? Qt::white : Qt::black; }
    [[nodiscard]] static int left(int cell) { return cell % columns * cellWidth + 12; }
    [[nodiscard]] static int middle(int cell) { return cell / columns * cellHeight + cellHeight / 2; }

    int write(int cell, const QString &name)
    {
        QPainter painter(&m_picture);
        QFont font(QStringLiteral("Inter"));
        font.setPixelSize(12);
        painter.setFont(font);
        painter.setPen(ink());
        painter.drawText(QRect(left(cell), middle(cell) - 30, nameWidth, 60),
                         Qt::AlignVCenter | Qt::TextWrapAnywhere, name);
        return nameWidth + 8;
    }

    /// The look's box is given as a font size. Returns the width taken, in pixels of the sheet.
    int place(int cell, double x, SymbolLook look)
    {
        look.box = SymbolImages::boxForFontSize(look.box);
        QImage image = SymbolImages::shared().image(look);
        image.setDevicePixelRatio(1);
        QPainter painter(&m_picture);
        painter.drawImage(QPointF(x, middle(cell) - image.height() / 2), image);
        return image.width();
    }

    QImage m_picture;
    bool m_isDark;
};

} // namespace

QImage contactSheet(bool isDark)
{
    const QStringList names = SymbolImages::names();
    const QStringList weighted = {QStringLiteral("waveform.slash"), QStringLiteral("xmark"),
                                  QStringLiteral("plus"),           QStringLiteral("person.2"),
                                  QStringLiteral("text.bubble"),    QStringLiteral("checkmark.circle.fill"),
                                  QStringLiteral("gearshape"),      QStringLiteral("sparkles")};
    const QStringList colored = {QStringLiteral("speaker.wave.3.fill"), QStringLiteral("waveform"),
                                 QStringLiteral("key.fill"), QStringLiteral("folder.circle.fill")};
    const auto rows = [](qsizetype count) { return static_cast<int>((count + columns - 1) / columns); };
    const int symbolRows = rows(names.size());
    const int weightRows = rows(weighted.size());
    Sheet sheet(symbolRows + weightRows + rows(colored.size()), isDark);
    for (int at = 0; at < names.size(); ++at)
        sheet.addSymbol(at, names[at]);
    for (int at = 0; at < weighted.size(); ++at)
        sheet.addWeights(symbolRows * columns + at, weighted[at]);
    for (int at = 0; at < colored.size(); ++at)
        sheet.addColors((symbolRows + weightRows) * columns + at, colored[at],
                        SymbolImages::shared().layerCount(colored[at]));
    return sheet.take();
}

} // namespace talvenor::render
