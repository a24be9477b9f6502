// The least that a program with a Qt Quick window can be, to hold the start of ours against.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData("import QtQuick\n"
                    "Window { visible: true; width: 1100; height: 720; color: \"#f5f5f7\" }\n");
    return QGuiApplication::exec();
}
