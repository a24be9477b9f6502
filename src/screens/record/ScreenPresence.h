#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>

class QQuickItem;

namespace talvenor {

/// Whether an item can be seen: it is visible, and so is its window, which is neither minimised nor kept off
/// the screen by the desktop. What moves for ever asks here before it does. Main thread.
class ScreenPresence : public QObject
{
    Q_OBJECT

public:
    /// `item` outlives this object.
    explicit ScreenPresence(QQuickItem &item);

    [[nodiscard]] bool isOnScreen() const { return m_isOnScreen; }

    [[nodiscard]] bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void changed();

private:
    void followWindow(QQuickWindow *window);
    void update();

    QQuickItem &m_item;
    QPointer<QQuickWindow> m_window;
    bool m_isOnScreen = false;
};

} // namespace talvenor
