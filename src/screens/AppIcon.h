#pragma once

#include <QObject>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// Where QML finds the application's icon. A program without one starts all the same and shows a symbol in
/// its place. Main thread.
class AppIcon : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Empty if the program has no icon.
    Q_PROPERTY(QUrl source READ source CONSTANT)

public:
    using QObject::QObject;

    [[nodiscard]] QUrl source() const;
};

} // namespace talvenor
