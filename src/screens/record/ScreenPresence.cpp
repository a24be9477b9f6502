#include "screens/record/ScreenPresence.h"

#include <QEvent>
#include <QQuickItem>

namespace talvenor {

ScreenPresence::ScreenPresence(QQuickItem &item) : m_item(item)
{
    connect(&item, &QQuickItem::visibleChanged, this, &ScreenPresence::update);
    connect(&item, &QQuickItem::windowChanged, this, &ScreenPresence::followWindow);
    followWindow(item.window());
}

void ScreenPresence::followWindow(QQuickWindow *window)
{
    if (m_window) {
        m_window->disconnect(this);
        m_window->removeEventFilter(this);
    }
    m_window = window;
    if (window) {
        connect(window, &QWindow::visibilityChanged, this, &ScreenPresence::update);
        window->installEventFilter(this);
    }
    update();
}

bool ScreenPresence::eventFilter(QObject *watched, QEvent *event)
{
    // The window learns of its exposure only by this event, and tells nobody.
    if (event->type() == QEvent::Expose)
        QMetaObject::invokeMethod(this, &ScreenPresence::update, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}

void ScreenPresence::update()
{
    const bool isOnScreen = m_item.isVisible() && m_window && m_window->isExposed() &&
                            m_window->visibility() != QWindow::Hidden &&
                            m_window->visibility() != QWindow::Minimized;
    if (isOnScreen == m_isOnScreen)
        return;
    m_isOnScreen = isOnScreen;
    Q_EMIT changed();
}

} // namespace talvenor
