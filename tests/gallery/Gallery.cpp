#include "RenderedScene.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace talvenor;

namespace {

/// Shows a page of the gallery; returns the program's exit code.
int showGallery(const QStringList &arguments)
{
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral(
        "Shows the controls of the screens in all their states. With --scale 2 before the others, at "
        "that scale of the display."));
    options.addHelpOption();
    options.addOptions({{QStringLiteral("page"), QStringLiteral("Controls, Popups or Paint."),
                         QStringLiteral("name"), QStringLiteral("Controls")},
                        {QStringLiteral("scheme"), QStringLiteral("light or dark."), QStringLiteral("scheme"),
                         QStringLiteral("light")},
                        {QStringLiteral("language"), QStringLiteral("de or en."), QStringLiteral("language"),
                         QStringLiteral("en")},
                        {QStringLiteral("grab"), QStringLiteral("Writes a picture there and ends."),
                         QStringLiteral("file")}});
    options.process(arguments);

    QFile page(QStringLiteral(":/gallery/%1.qml").arg(options.value(QStringLiteral("page"))));
    const auto language = appLanguageFromString(options.value(QStringLiteral("language")));
    if (!page.open(QIODevice::ReadOnly) || !language)
        options.showHelp(1);
    test::RenderedScene scene(page.readAll(), {1180, 820});
    scene.setScheme(options.value(QStringLiteral("scheme")) == u"dark" ? ColorScheme::dark
                                                                       : ColorScheme::light);
    test::RenderedScene::setLanguage(*language);
    if (!options.isSet(QStringLiteral("grab"))) {
        scene.window().setTitle(QStringLiteral("Gallery"));
        return QApplication::exec();
    }
    QTest::qWait(1000); // fades and menus have come to rest
    return scene.grab().save(options.value(QStringLiteral("grab"))) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    return test::runScreenTest(argc, argv,
                               [](int, char **) { return showGallery(QApplication::arguments()); });
}
