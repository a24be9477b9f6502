#include "support/LogCapture.h"

#include <atomic>

namespace talvenor::test {

namespace {

std::atomic<LogCapture *> current{nullptr};

QString levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("debug");
    case QtInfoMsg:
        return QStringLiteral("default");
    case QtWarningMsg:
        return QStringLiteral("warning");
    case QtCriticalMsg:
    case QtFatalMsg:
        return QStringLiteral("error");
    }
    return QString();
}

} // namespace

LogCapture::LogCapture()
{
    current = this;
    m_previous = qInstallMessageHandler(&LogCapture::handle);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    current = nullptr;
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    LogCapture *self = current;
    if (self == nullptr)
        return;
    {
        const std::lock_guard guard(self->m_lock);
        self->m_entries.append({QString::fromUtf8(context.category), levelName(type), message});
    }
    if (self->m_previous != nullptr)
        self->m_previous(type, context, message);
}

QStringList LogCapture::lines() const
{
    const std::lock_guard guard(m_lock);
    QStringList all;
    for (const Entry &entry : m_entries)
        all.append(entry.category + u' ' + entry.level + QStringLiteral(": ") + entry.text);
    return all;
}

QStringList LogCapture::texts(const QString &category) const
{
    const std::lock_guard guard(m_lock);
    QStringList all;
    for (const Entry &entry : m_entries) {
        if (entry.category == category)
            all.append(entry.text);
    }
    return all;
}

bool LogCapture::contains(const QString &category, const QString &level, const QString &text) const
{
    const std::lock_guard guard(m_lock);
    for (const Entry &entry : m_entries) {
        if (entry.category == category && entry.level == level && entry.text == text)
            return true;
    }
    return false;
}

void LogCapture::clear()
{
    const std::lock_guard guard(m_lock);
    m_entries.clear();
}

} // namespace talvenor::test
