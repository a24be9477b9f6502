#include "screens/Appearance.h"

#include "platform/Platform.h"

#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

namespace talvenor {

namespace {

bool isSchemeDark()
{
    const auto &preference = Platform::shared().colorScheme;
    const std::optional<ColorScheme> preferred = preference ? preference->preferred() : std::nullopt;
    if (preferred)
        return *preferred == ColorScheme::dark;
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
}

} // namespace

Appearance::Appearance(QObject *parent) : QObject(parent), m_isDark(isSchemeDark())
{
    if (const auto &preference = Platform::shared().colorScheme)
        preference->setListener([this] { update(); });
    QCoreApplication::instance()->installEventFilter(this);
}

Appearance::~Appearance()
{
    if (const auto &preference = Platform::shared().colorScheme)
        preference->setListener({});
}

QString Appearance::monospacedFamily() const
{
    const QStringList installed = QFontDatabase::families();
    for (const QString &family : {QStringLiteral("JetBrains Mono"), QStringLiteral("Noto Sans Mono"),
                                  QStringLiteral("Cascadia Mono")}) {
        if (installed.contains(family))
            return family;
    }
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

bool Appearance::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange)
        update();
    return QObject::eventFilter(watched, event);
}

void Appearance::update()
{
    const bool isDark = isSchemeDark();
    if (isDark == m_isDark)
        return;
    m_isDark = isDark;
    Q_EMIT isDarkChanged();
}

} // namespace talvenor
