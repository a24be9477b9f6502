#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// What the desktop gives the screens for their looks, as QML reads it: the colour scheme and the faces. Main
/// thread.
///
/// The scheme is the one that the desktop prefers, else that of the palette: dark where its windows are dark.
/// Both are followed while the program runs.
class Appearance : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY isDarkChanged)
    Q_PROPERTY(QString monospacedFamily READ monospacedFamily CONSTANT)

public:
    explicit Appearance(QObject *parent = nullptr);
    ~Appearance() override;
    Q_DISABLE_COPY_MOVE(Appearance)

    [[nodiscard]] bool isDark() const { return m_isDark; }
    /// A face whose characters are all equally wide, with light weights where one such is installed.
    [[nodiscard]] QString monospacedFamily() const;

    [[nodiscard]] bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void isDarkChanged();

private:
    void update();

    bool m_isDark = false;
};

} // namespace talvenor
