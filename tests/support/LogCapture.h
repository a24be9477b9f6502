#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <mutex>

namespace talvenor::test {

/// Collects what is logged while it lives, from any thread, and still passes it on. One at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    Q_DISABLE_COPY_MOVE(LogCapture)

    /// Each line as "category level: text", level being "debug", "default", "warning" or "error".
    [[nodiscard]] QStringList lines() const;
    /// The texts of one category, levels left out.
    [[nodiscard]] QStringList texts(const QString &category) const;
    /// True if a line of that category, level and exact text was logged.
    [[nodiscard]] bool contains(const QString &category, const QString &level, const QString &text) const;
    void clear();

private:
    struct Entry
    {
        QString category;
        QString level;
        QString text;
    };
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    mutable std::mutex m_lock;
    QList<Entry> m_entries; ///< guarded by m_lock
    QtMessageHandler m_previous;
};

} // namespace talvenor::test
