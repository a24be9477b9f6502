#include "AppIconPictures.h"

#include "foundation/LocalizedError.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace talvenor::render {

namespace {

constexpr int themeSizes[] = {16, 22, 24, 32, 48, 64, 128, 256, 512};
/// Large enough for every place in the program's windows at twice the resolution.
constexpr int programSize = 256;

QImage rendered(const QString &drawing, int size)
{
    QSvgRenderer renderer(drawing);
    if (!renderer.isValid())
        throw PlatformError(QStringLiteral("svg"), 0, drawing + QStringLiteral(" is no drawing"));
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    renderer.render(&painter, QRectF(0, 0, size, size));
    return picture;
}

void write(const QImage &picture, const QString &path)
{
    if (!QDir().mkpath(QFileInfo(path).path()) || !picture.save(path))
        throw PlatformError(QStringLiteral("image"), 0, path + QStringLiteral(" could not be written"));
}

} // namespace

void writeAppIconPictures(const QString &resources)
{
    const QString drawing = resources + QStringLiteral("/AppIcon.svg");
    write(rendered(drawing, programSize), resources + QStringLiteral("/AppIcon.png"));
    for (const int size : themeSizes) {
        const QString own = resources + QStringLiteral("/AppIcon-%1.svg").arg(size);
        write(rendered(QFile::exists(own) ? own : drawing, size),
              resources + QStringLiteral("/icons/%1x%1/talvenor.png").arg(size));
    }
}

} // namespace talvenor::render
