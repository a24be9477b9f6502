#include "AppIconPictures.h"
#include "ContactSheet.h"
#include "foundation/LocalizedError.h"

#include <QDir>
#include <QGuiApplication>

#include <cstdio>

using namespace talvenor;

namespace {

void writeContactSheets(const QString &folder)
{
    for (const bool isDark : {false, true}) {
        const QString path =
            folder + (isDark ? QStringLiteral("/symbols-dark.png") : QStringLiteral("/symbols-light.png"));
        if (!QDir().mkpath(folder) || !render::contactSheet(isDark).save(path, "PNG", 0))
            throw PlatformError(QStringLiteral("image"), 0, path + QStringLiteral(" could not be written"));
    }
}

} // namespace

/// Makes the pictures that are kept beside their drawings: render-pictures icons RESOURCES | symbols FOLDER
int main(int count, char **values)
{
    const QGuiApplication application(count, values);
    const QStringList arguments = QGuiApplication::arguments();
    try {
        if (arguments.value(1) == QStringLiteral("icons") && arguments.size() == 3) {
            render::writeAppIconPictures(arguments[2]);
        } else if (arguments.value(1) == QStringLiteral("symbols") && arguments.size() == 3) {
            writeContactSheets(arguments[2]);
        } else {
            std::fputs("usage: render-pictures icons RESOURCES | symbols FOLDER\n", stderr);
            return 2;
        }
    } catch (const PlatformError &error) {
        std::fprintf(stderr, "%s\n", qPrintable(error.errorDescription()));
        return 1;
    }
    return 0;
}
