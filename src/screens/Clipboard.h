#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// What is to be pasted, as QML reads it. Main thread.
class Clipboard : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    Q_INVOKABLE static QString text();
    /// What was marked last, where the desktop pastes that with the middle button; else empty.
    Q_INVOKABLE static QString selection();
};

} // namespace talvenor
